#include "store/dialect.h"

#include <QSqlDriver>
#include <QSqlQuery>

#include <libpq-fe.h>

#include <utility>
#include <vector>

namespace seamrevise
{

namespace
{

/// For those who wait for a server that does not answer any more; a URL may say otherwise.
const char *const patience = "connect_timeout=30;keepalives_idle=30;keepalives_interval=10;"
                             "keepalives_count=3;tcp_user_timeout=60000;"
                             "fallback_application_name=seamrevise";

QString quoted(QString text, QLatin1Char quote)
{
    return quote + text.replace(quote, QString(2, quote)) + quote;
}

/// A name as libpq's options take it.
QString optionValue(QString text)
{
    text.replace(QLatin1Char('\\'), QLatin1String("\\\\"));
    return QLatin1Char('\'') + text.replace(QLatin1Char('\''), QLatin1String("\\'"))
        + QLatin1Char('\'');
}

/// A statement of Qt's SQL, ? for each value, as libpq takes it.
QByteArray numbered(const QString &sql)
{
    QByteArray text;
    int count = 0;
    for (const QChar character : sql) {
        if (character == QLatin1Char('?'))
            text += '$' + QByteArray::number(++count);
        else
            text += QString(character).toUtf8();
    }
    return text;
}

/// A wall in a PostgreSQL database: a schema of its own with the wall's name.
///
/// Bytes go through libpq's binary format on the driver's own connection, since Qt's driver moves
/// them as text; they are stored uncompressed.
class PostgresDialect : public Dialect
{
public:
    explicit PostgresDialect(DatabaseAddress address)
        : m_address(std::move(address))
    {
    }

    QString connect(const QString &connectionName, DatabaseAccess) override
    {
        if (!QSqlDatabase::isDriverAvailable(QStringLiteral("QPSQL")))
            return QStringLiteral("Qt has no PostgreSQL driver here; install libqt5sql5-psql");
        m_database = QSqlDatabase::addDatabase(QStringLiteral("QPSQL"), connectionName);
        m_database.setUserName(m_address.user);
        m_database.setHostName(m_address.host);
        m_database.setPort(m_address.port);
        m_database.setDatabaseName(m_address.database);
        QString options = QString::fromLatin1(patience);
        for (const auto &parameter : m_address.parameters)
            options += QLatin1Char(';') + parameter.first + QLatin1Char('=')
                + optionValue(parameter.second);
        m_database.setConnectOptions(options);
        if (!m_database.open())
            return message(m_database.lastError());
        QSqlQuery query(m_database);
        for (const QString &setting :
             {QStringLiteral("SET search_path TO ") + schemaName(),
              QStringLiteral("SET lock_timeout TO %1").arg(mostWaitingSeconds * 1000)}) {
            if (!query.exec(setting))
                return message(query.lastError());
        }
        return {};
    }

    QString fault() const override { return {}; }
    QString finish() override
    {
        disconnect();
        return {};
    }

    QString beginReading() const override
    {
        return QStringLiteral("BEGIN ISOLATION LEVEL REPEATABLE READ, READ ONLY");
    }
    QString beginWriting() const override
    {
        return QStringLiteral("BEGIN ISOLATION LEVEL READ COMMITTED, READ WRITE");
    }

    QString tablesQuery() const override
    {
        return QStringLiteral("SELECT tablename FROM pg_tables WHERE schemaname = ")
            + schemaLiteral();
    }
    QString versionQuery() const override
    {
        return QStringLiteral("SELECT version FROM schema_version");
    }
    QStringList schema(const QStringList &tables, int version) const override
    {
        // A schema that somebody has made for the station needs no right to make schemas.
        QSqlQuery query(m_database);
        const bool isThere
            = query.exec(QStringLiteral("SELECT 1 FROM pg_namespace WHERE nspname = ")
                         + schemaLiteral())
            && query.next();
        query.finish();
        const QString uncompressed
            = QStringLiteral("ALTER TABLE %1 ALTER COLUMN data SET STORAGE EXTERNAL");
        return (isThere ? QStringList()
                        : QStringList(QStringLiteral("CREATE SCHEMA ") + schemaName()))
            + tables
            + QStringList{uncompressed.arg(QLatin1String("coefficients")),
                          uncompressed.arg(QLatin1String("layered_coefficients")),
                          QStringLiteral("CREATE TABLE schema_version (version INTEGER NOT NULL)"),
                          QStringLiteral("INSERT INTO schema_version VALUES (%1)").arg(version)};
    }

    QString bytesType() const override { return QStringLiteral("bytea"); }
    QString lengthOf(const QString &column) const override
    {
        return QStringLiteral("octet_length(%1)").arg(column);
    }
    QString lockingRows(bool forChange) const override
    {
        return forChange ? QStringLiteral("FOR UPDATE") : QStringLiteral("FOR SHARE");
    }

    QSqlError readBytes(const QString &sql, const QVariantList &keys, StoredBytes &bytes) override
    {
        const Result result = execute(sql, keys, nullptr);
        if (PQresultStatus(result.get()) != PGRES_TUPLES_OK)
            return error(result);
        if (PQntuples(result.get()) > 0)
            bytes = {PQgetvalue(result.get(), 0, 0), PQgetlength(result.get(), 0, 0), result};
        return {};
    }

    QSqlError writeBytes(const QString &sql, const QVariantList &values,
                         const QByteArray &bytes) override
    {
        const Result result = execute(sql, values, &bytes);
        return PQresultStatus(result.get()) == PGRES_COMMAND_OK ? QSqlError() : error(result);
    }

    QString message(const QSqlError &error) const override
    {
        const QString state = error.nativeErrorCode();
        if (state == QLatin1String("55P03")) // lock_not_available
            return lockedMessage();
        if (state == QLatin1String("40P01")) // deadlock_detected
            return QStringLiteral("another station writes the same partitions; try again");
        if (state == QLatin1String("42P06") || state == QLatin1String("23505"))
            return existsMessage(); // somebody else has just made it
        const QString text = plainText(error);
        return m_database.isOpen() && PQstatus(connection()) != CONNECTION_OK
            ? QStringLiteral("the connection to the server was lost: ") + text
            : text;
    }

private:
    using Result = std::shared_ptr<PGresult>;

    QString schemaName() const { return quoted(m_address.wall, QLatin1Char('"')); }
    QString schemaLiteral() const { return quoted(m_address.wall, QLatin1Char('\'')); }

    PGconn *connection() const
    {
        return *static_cast<PGconn *const *>(m_database.driver()->handle().constData());
    }

    /// Numbers go as text, bytes as they are, and so do those of the result.
    Result execute(const QString &sql, const QVariantList &values, const QByteArray *bytes) const
    {
        std::vector<QByteArray> texts;
        for (const QVariant &value : values)
            texts.push_back(value.toString().toUtf8());
        std::vector<const char *> parameters;
        for (const QByteArray &text : texts)
            parameters.push_back(text.constData());
        std::vector<int> lengths(texts.size(), 0);
        std::vector<int> formats(texts.size(), 0);
        if (bytes) {
            parameters.push_back(bytes->constData());
            lengths.push_back(bytes->size());
            formats.push_back(1);
        }
        return {PQexecParams(connection(), numbered(sql).constData(),
                             static_cast<int>(parameters.size()), nullptr, parameters.data(),
                             lengths.data(), formats.data(), 1),
                PQclear};
    }

    QSqlError error(const Result &result) const
    {
        return QSqlError(QString(), QString::fromUtf8(PQerrorMessage(connection())),
                         QSqlError::StatementError,
                         QString::fromLatin1(PQresultErrorField(result.get(), PG_DIAG_SQLSTATE)));
    }

    /// The first line of what the server or libpq says, without its tag.
    static QString plainText(const QSqlError &error)
    {
        const QString text = error.databaseText().isEmpty() ? error.text() : error.databaseText();
        return text.section(QLatin1Char('\n'), 0, 0)
            .remove(QLatin1String("ERROR:  "))
            .remove(QLatin1String("FATAL:  "))
            .trimmed();
    }

    const DatabaseAddress m_address;
};

} // namespace

std::unique_ptr<Dialect> postgresDialect(const DatabaseAddress &address)
{
    return std::make_unique<PostgresDialect>(address);
}

} // namespace seamrevise
