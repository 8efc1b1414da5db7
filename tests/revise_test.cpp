#include "delivery/filesystem.h"
#include "delivery/manifest.h"

#include "programsupport.h"

#include <QElapsedTimer>

#include <gtest/gtest.h>

#include <csignal>
#include <random>

#include <unistd.h>

using namespace seamrevise;

namespace
{

/// Deliveries of a simulated wall.
class Revise : public Seamrevise
{
protected:
    QStringList entries(const char *dir = "%d") const { return entriesOf(in(dir)); }
    Manifest manifest(const char *dir = "%d/o") const
    {
        Manifest manifest;
        EXPECT_EQ(readManifest(in(dir), manifest), "");
        return manifest;
    }
};

TEST_F(Revise, ADeliverySaysWhatItIsAndHowItDiffersFromTheOneBefore)
{
    makeWall();
    execute(in("%d/w.db"), "INSERT INTO revisions VALUES (2, 0, 4, '2026-01-31T12:00:00Z', 'me')");
    expect(0, "revise %d/w.db -o %d/o --margin 1");
    const Manifest first = manifest();
    EXPECT_EQ(
        first.command,
        QStringList({"revise", in("%d/w.db"), "--output", in("%d/o"), "--files", "--band", "6x5",
                     "--margin", "1", "--weights", "0.2126,0.7152,0.0722", "--keep", "1"}));
    EXPECT_EQ(first.files.size(), 7U);
    EXPECT_EQ(first.partition(2)->station, "me");
    EXPECT_EQ(first.partition(2)->revision, qint64{4});
    EXPECT_FALSE(first.partition(5)->isCorrected);
    expect(0, "verify %d/o %d/w.db --fresh", "differences  0");

    expect(4, "revise %d/w.db -o %d/o", "holds a delivery; --force replaces it");
    expect(0, "revise %d/w.db -o %d/o --force --margin 1", "0 of 6 files differ\nkept         o.");
    const Manifest second = manifest();
    ASSERT_EQ(second.files.size(), first.files.size());
    for (std::size_t i = 0; i < first.files.size(); ++i) // numbers.json among them
        EXPECT_EQ(second.files[i].sha256, first.files[i].sha256)
            << first.files[i].name.toStdString();

    // A pixel of partition 1 that lies in no strip, as the little end of its first value.
    execute(in("%d/w.db"),
            "UPDATE coefficients SET data = CAST(X'0102' || substr(data, 3) AS BLOB)"
            " WHERE number = 1");
    expect(1, "verify %d/o %d/w.db", "partition 1: other coefficients are stored now");
    expect(1, "verify %d/o %d/w.db --fresh",
           "1: 1 values of partition 1 are not those of a new revision, the first at row 0,"
           " column 0");
    const QStringList before = entries();
    expect(0, "revise %d/w.db -o %d/o --force --margin 1 --dry-run --dumps %d/d", "dry run");
    EXPECT_EQ(entries(), before);
    EXPECT_EQ(manifest().files[0].sha256, first.files[0].sha256);
    expect(0, "revise %d/w.db -o %d/o --force --margin 1 --keep 0", "1 of 6 files differ: 1\n");
    EXPECT_EQ(entries(), (QStringList{"o", "w.db"}));
}

TEST_F(Revise, AFreshRevisionIsComparedWithFilesAndTablesOfEveryKind)
{
    makeWall();
    for (const QString options : {"--layers 2", "--table", "--table --layers 2"}) {
        expect(0, "revise %d/w.db --force -o %d/o --margin 1 --band 5x4 " + options);
        expect(0, "verify %d/o %d/w.db --fresh");
    }
    execute(in("%d/w.db"),
            "UPDATE layered_coefficients SET"
            " data = CAST(X'01020000' || substr(data, 5) AS BLOB) WHERE number = 1");
    const std::string printed = expect(1, "verify %d/o %d/w.db --fresh", "packed.bin: 1 values");
    EXPECT_NE(printed.find("coefficients.npy: 1 values of partition 1"), std::string::npos);
    expect(2, "verify %d/o --fresh", "--fresh needs the DATABASE");
    execute(in("%d/w.db"), "DELETE FROM layered_coefficients");
    expect(3, "verify %d/o %d/w.db --fresh");
}

TEST_F(Revise, TheDatabaseIsNeverReplaced)
{
    makeWall();
    const QByteArray wall = contents("%d/w.db");
    const QByteArray db = QFile::encodeName(in("%d/w.db"));
    mkdir(QFile::encodeName(in("%d/o")), 0777);
    mkdir(QFile::encodeName(in("%d/d")), 0777);
    EXPECT_EQ(link(db, QFile::encodeName(in("%d/o/1"))), 0);
    EXPECT_EQ(symlink(db, QFile::encodeName(in("%d/d/normal_area_1_before.txt"))), 0);
    EXPECT_EQ(symlink("w.db", QFile::encodeName(in("%d/l"))), 0);
    EXPECT_EQ(symlink("d", QFile::encodeName(in("%d/e"))), 0);
    const std::pair<const char *, const char *> rows[] = {
        {"revise %d/w.db --force -o %d/o", "/o/1: is the same file as "},
        {"revise %d/l --force -o %d/o", "/o/1: is the same file as "},
        {"revise %d/o/1 --force -o %d/o", "/o/1: is the same file as "},
        {"revise %d/w.db --force -o %d/l", "/w.db: is not a directory"},
        {"revise %d/w.db -o %d/p --dumps %d/e", "before.txt: is the same file as "},
        {"revise %d/w.db -o %d/d/p --dumps %d/e/p/q", "lies in the output directory"},
    };
    for (const auto &[words, says] : rows)
        expect(4, words, says);
    EXPECT_EQ(contents("%d/w.db"), wall);
    EXPECT_EQ(entries("%d/d"), QStringList("normal_area_1_before.txt"));
    EXPECT_EQ(entries(), (QStringList{"d", "e", "l", "o", "w.db"}));
}

/// What becomes of a program that a signal ends at random moments.
class Signalled : public Revise
{
protected:
    Signalled() { signal(SIGINT, SIG_DFL); } // a shell's background jobs are started without it

    /// How long a command takes as a process, in microseconds.
    qint64 timeOf(const QString &words) const
    {
        QElapsedTimer timer;
        timer.start();
        EXPECT_EQ(shell("%p " + words).code, 0) << words.toStdString();
        return timer.nsecsElapsed() / 1000;
    }
    /// Runs a command and sends it a signal within that time; its exit code, or 1000 and the
    /// signal that ended it.
    int end(const QString &words, int signalNumber, qint64 microseconds)
    {
        QProcess process;
        process.setStandardErrorFile(QProcess::nullDevice());
        process.setStandardOutputFile(QProcess::nullDevice());
        process.start(SEAMREVISE_PROGRAM, in(words).split(' '));
        EXPECT_TRUE(process.waitForStarted());
        usleep(static_cast<useconds_t>(m_random() % microseconds));
        kill(static_cast<pid_t>(process.processId()), signalNumber);
        EXPECT_TRUE(process.waitForFinished());
        return process.exitStatus() == QProcess::NormalExit ? process.exitCode()
                                                            : 1000 + signalNumber;
    }

    const int m_rounds = qEnvironmentVariableIsSet("SEAMREVISE_LONG_TESTS") ? 100 : 8;
    std::mt19937 m_random{1};
};

TEST_F(Signalled, RunsThatReplaceASetLeaveAWholeOne)
{
    makeWall();
    expect(0, "revise %d/w.db -o %d/o");
    expect(0, "revise %d/w.db -o %d/o --force --margin 1");
    const std::pair<int, int> ends[]
        = {{SIGKILL, 1000 + SIGKILL}, {SIGTERM, 128 + SIGTERM}, {SIGINT, 128 + SIGINT}};
    for (const QString words :
         {"revise %d/w.db -q -o %d/o --force --margin 2", "restore %d/o -q"}) {
        const qint64 time = timeOf(words);
        int endings = 0;
        for (const auto &[signalNumber, code] : ends) {
            for (int round = 0; round < m_rounds; ++round) {
                const int ended = end(words, signalNumber, time);
                endings += ended == code ? 1 : 0;
                EXPECT_TRUE(ended == 0 || ended == code || ended == 1000 + signalNumber) << ended;
                EXPECT_TRUE(ended != 128 + signalNumber || entries().size() == 3)
                    << entries().join(' ').toStdString();
                expect(0, "verify %d/o -q");
                expect(0, words);
                expect(0, "verify %d/o -q");
                EXPECT_EQ(entries().size(), 3) << entries().join(' ').toStdString();
            }
        }
        EXPECT_GT(endings, 0) << words.toStdString();
    }
}

TEST_F(Signalled, OtherWritersLeaveNothingThatTheNextRunDoesNotClear)
{
    makeWall();
    expect(0, "export %d/w.db -o %d/x");
    const QString simulate = "simulate %d/v.db -q --size 900x900 --grid 3x3 --light %d/light.npy";
    const std::pair<QString, QStringList> rows[] = {
        {simulate, {"light.npy", "v.db"}},
        {"import %d/x/layout.json %d/v.db -q", {"v.db"}},
        {"export %d/w.db -o %d/y -q --format text", {"y"}},
        {"revise %d/w.db -o %d/r/y -q --dumps %d/d", {"d", "r"}},
    };
    const QStringList before = entries();
    for (const auto &[words, makes] : rows) {
        const qint64 time = timeOf(words);
        QStringList after = before + makes;
        after.sort();
        for (const int signalNumber : {SIGTERM, SIGINT, SIGKILL}) {
            for (int round = 0; round < m_rounds; ++round) {
                for (const QString &name : makes)
                    removeTree(in("%d/") + name);
                const int ended = end(words, signalNumber, time);
                // Those that come while the files are put in place wait for that.
                EXPECT_TRUE(ended != 128 + signalNumber || entries() == before
                            || entries() == after)
                    << words.toStdString() << ": " << entries().join(' ').toStdString();
                if (signalNumber == SIGKILL) // also where it came to its end
                    expect(0, words + (words.startsWith("import") ? "" : " --force"));
                EXPECT_TRUE(signalNumber != SIGKILL || entries() == after)
                    << words.toStdString() << ": " << entries().join(' ').toStdString();
            }
        }
        for (const QString &name : makes)
            removeTree(in("%d/") + name);
    }
}

} // namespace
