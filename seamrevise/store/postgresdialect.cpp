#include "store/dialect.h"

#include <QSqlDriver>
#include <QSqlQuery>
#include <QtEndian>

#include <libpq-fe.h>

#include <algorithm>
#include <memory>
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

/// A value as libpq's options take it.
QString optionValue(QString text)
{
    text.replace(QLatin1Char('\\'), QLatin1String("\\\\"));
    return QLatin1Char('\'') + text.replace(QLatin1Char('\''), QLatin1String("\\'"))
        + QLatin1Char('\'');
}

/// A statement of Qt's SQL, ? for each value, as libpq takes it.
QByteArray numbered(const QString &sql)
{
    const QList<QByteArray> parts = sql.toUtf8().split('?');
    QByteArray text = parts[0];
    for (int i = 1; i < parts.size(); ++i)
        text += '$' + QByteArray::number(i) + parts[i];
    return text;
}

/// The values of a statement: numbers as text, and last of all bytes as they are.
class Parameters
{
public:
    Parameters(const QVariantList &numbers, const QByteArray *bytes)
    {
        for (const QVariant &number : numbers)
            m_texts.push_back(number.toString().toLatin1());
        for (const QByteArray &text : m_texts)
            add(text, 0);
        if (bytes)
            add(*bytes, 1);
    }

    int count() const { return static_cast<int>(m_values.size()); }
    const char *const *values() const { return m_values.data(); }
    const int *lengths() const { return m_lengths.data(); }
    const int *formats() const { return m_formats.data(); }

private:
    void add(const QByteArray &value, int format)
    {
        m_values.push_back(value.constData());
        m_lengths.push_back(value.size());
        m_formats.push_back(format);
    }

    std::vector<QByteArray> m_texts;
    std::vector<const char *> m_values;
    std::vector<int> m_lengths;
    std::vector<int> m_formats; ///< 0 is text, 1 is binary
};

/// Bytes are read slice by slice: the server finds the next ones while those before are under way,
/// and neither side needs memory for more. A slice is a number of whole chunks of 1996 bytes, in
/// which the server keeps them.
constexpr int sliceBytes = 64 * 1996;

QString sliceQuery(const QString &source)
{
    return QStringLiteral("SELECT start, substring(data FROM start FOR %2)"
                          " FROM (SELECT data FROM %1) AS zone,"
                          " generate_series(1, octet_length(data), %2) AS start")
        .arg(source)
        .arg(sliceBytes);
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
        m_database.setConnectOptions(connectOptions());
        if (!m_database.open())
            return message(m_database.lastError());
        // By itself, libpq would write what the server remarks to the error output.
        PQsetNoticeProcessor(
            connection(), [](void *, const char *) {}, nullptr);
        QSqlQuery query(m_database);
        return query.exec(QStringLiteral("SET search_path TO ") + schemaName())
                && query.exec(
                    QStringLiteral("SET lock_timeout TO %1").arg(mostWaitingSeconds * 1000))
            ? QString()
            : message(query.lastError());
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
        // The schema is named: one that a user may not use is passed over on the search path.
        return QStringLiteral("SELECT version FROM %1.schema_version").arg(schemaName());
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

    QString upgrade(const QStringList &, int) override
    {
        return QStringLiteral("no server has walls of this version"); // it began with the current
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

    QSqlError readBytes(const QString &source, const QVariantList &keys, char *bytes,
                        qint64 size) override
    {
        const Parameters parameters(keys, nullptr);
        const QByteArray sql = numbered(sliceQuery(source));
        if (PQsendQueryParams(connection(), sql.constData(), parameters.count(), nullptr,
                              parameters.values(), parameters.lengths(), parameters.formats(), 1)
            != 1)
            return error(nullptr);
        PQsetSingleRowMode(connection());
        QSqlError failure;
        qint64 taken = 0;
        while (const Result result{PQgetResult(connection()), PQclear}) {
            if (PQresultStatus(result.get()) == PGRES_SINGLE_TUPLE)
                taken += takeSlice(result.get(), bytes, size);
            else if (PQresultStatus(result.get()) != PGRES_TUPLES_OK)
                failure = error(result.get());
        }
        return failure.isValid() || taken == size ? failure : sizeError();
    }

    QSqlError writeBytes(const QString &sql, const QVariantList &values,
                         const QByteArray &bytes) override
    {
        const Parameters parameters(values, &bytes);
        const Result result(PQexecParams(connection(), numbered(sql).constData(),
                                         parameters.count(), nullptr, parameters.values(),
                                         parameters.lengths(), parameters.formats(), 1),
                            PQclear);
        return PQresultStatus(result.get()) == PGRES_COMMAND_OK ? QSqlError() : error(result.get());
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
    using Result = std::unique_ptr<PGresult, void (*)(PGresult *)>;

    QString connectOptions() const
    {
        QString options = QString::fromLatin1(patience);
        for (const auto &parameter : m_address.parameters)
            options += QLatin1Char(';') + parameter.first + QLatin1Char('=')
                + optionValue(parameter.second);
        return options;
    }

    QString schemaName() const { return quoted(m_address.wall, QLatin1Char('"')); }
    QString schemaLiteral() const { return quoted(m_address.wall, QLatin1Char('\'')); }

    PGconn *connection() const
    {
        return *static_cast<PGconn *const *>(m_database.driver()->handle().constData());
    }

    /// Returns how many bytes it has, or 0 if they lie elsewhere.
    static qint64 takeSlice(const PGresult *row, char *bytes, qint64 size)
    {
        const qint64 start = qFromBigEndian<qint32>(PQgetvalue(row, 0, 0)) - 1;
        const qint64 length = PQgetlength(row, 0, 1);
        if (start < 0 || start + length > size)
            return 0;
        std::copy_n(PQgetvalue(row, 0, 1), length, bytes + start);
        return length;
    }

    QSqlError error(const PGresult *result) const
    {
        return QSqlError(QString(), QString::fromUtf8(PQerrorMessage(connection())),
                         QSqlError::StatementError,
                         QString::fromLatin1(PQresultErrorField(result, PG_DIAG_SQLSTATE)));
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
