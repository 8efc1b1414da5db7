#pragma once

#include "commands/commandline.h"

#include "testsupport.h"

#include <QDir>
#include <QProcess>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QVariant>

#include <gtest/gtest.h>

#include <sstream>

/// What tests of the program share.

/// Runs a statement on a database; the first value that it yields.
inline QVariant execute(const QString &path, const QString &sql)
{
    QVariant value;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), "test");
        db.setDatabaseName(path);
        EXPECT_TRUE(db.open());
        QSqlQuery query(db);
        EXPECT_TRUE(query.exec(sql)) << sql.toStdString();
        if (query.next())
            value = query.value(0);
    }
    QSqlDatabase::removeDatabase("test");
    return value;
}

/// A directory of its own, in which command lines run.
class Seamrevise : public ::testing::Test
{
protected:
    /// "%d" in a text is the directory of the test.
    QString in(QString text) const { return text.replace("%d", m_dir.path()); }
    QStringList files(const char *dir) const { return QDir(in(dir)).entryList(QDir::Files); }
    QByteArray contents(const char *path) const { return readFile(in(path)); }

    /// Runs a command line, and expects a code and a text in what it prints, which is returned.
    std::string expect(int code, const QString &words, const char *says = "") const
    {
        std::ostringstream out;
        std::vector<std::string> arguments;
        for (const QString &word : words.split(' ', Qt::SkipEmptyParts))
            arguments.push_back(in(word).toStdString()); // the directory may have blanks
        EXPECT_EQ(seamrevise::runCommandLine(arguments, false, out, out), code)
            << words.toStdString();
        EXPECT_NE(out.str().find(says), std::string::npos) << words.toStdString() << '\n'
                                                           << out.str();
        return out.str();
    }
    struct Outcome
    {
        int code;
        std::string printed; ///< on both streams
    };
    /// Runs a line of the shell, in which "%p" is the program: for what only a process can show.
    Outcome shell(const QString &script) const
    {
        QProcess process;
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start("sh", {"-c", in(script).replace("%p", SEAMREVISE_PROGRAM)});
        EXPECT_TRUE(process.waitForFinished(120'000)) << script.toStdString();
        return {process.exitCode(), process.readAll().toStdString()};
    }
    void makeWall(const QString &db = "%d/w.db") const
    {
        expect(0, "simulate --size 101x62 --grid 3x2 --band 6x5 --uncorrected 5 --layers 2 " + db);
    }

    const QTemporaryDir m_dir;
};
