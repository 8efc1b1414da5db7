#pragma once

#include "programsupport.h"

#include <QFile>

/// PostgreSQL servers for tests, as postgres.sh starts them.

/// Runs a statement on a wall of a server; the first value that it yields.
inline QVariant executeOnServer(const QString &socketDir, const QString &wall, const QString &sql)
{
    QVariant value;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QPSQL"), "test");
        db.setHostName(socketDir);
        db.setUserName("station");
        db.setDatabaseName("postgres");
        EXPECT_TRUE(db.open());
        QSqlQuery query(db);
        EXPECT_TRUE(query.exec(QStringLiteral("SET search_path TO \"%1\"").arg(wall)));
        EXPECT_TRUE(query.exec(sql)) << sql.toStdString();
        if (query.next())
            value = query.value(0);
    }
    QSqlDatabase::removeDatabase("test");
    return value;
}

/// One server, where there is one.
class PostgresServer
{
public:
    /// The one that ctest starts for all tests.
    PostgresServer()
        : m_state(QStringLiteral(POSTGRES_STATE))
    {
    }
    /// One of the test's own, whose state is kept in a directory.
    explicit PostgresServer(const QString &directory)
        : m_state(directory + "/postgres")
        , m_isOwn(true)
    {
        tell("start");
    }
    ~PostgresServer()
    {
        if (m_isOwn)
            tell("stop");
    }
    PostgresServer(const PostgresServer &) = delete;
    PostgresServer &operator=(const PostgresServer &) = delete;

    void tell(const char *command) const
    {
        EXPECT_EQ(QProcess::execute(QStringLiteral(POSTGRES_SCRIPT), {command, m_state}), 0);
    }
    QString socketDir() const
    {
        return QFile::exists(m_state) ? QString::fromUtf8(readFile(m_state)).trimmed()
                                      : QStringLiteral("none: ctest starts it");
    }
    /// Why there is no server; empty if there is one.
    std::string absence() const
    {
        return socketDir().startsWith("none") ? "no PostgreSQL server, " + socketDir().toStdString()
                                              : std::string();
    }
    QString address(const QString &wall, const QString &user = "station") const
    {
        return QStringLiteral("postgresql://%1@/postgres/%2?host=%3").arg(user, wall, socketDir());
    }

private:
    const QString m_state;
    const bool m_isOwn = false;
};
