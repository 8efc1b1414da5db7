#include "store/dialect.h"

#include <new>

namespace seamrevise
{

Dialect::~Dialect()
{
    disconnect();
}

void Dialect::disconnect()
{
    if (!m_database.isValid())
        return;
    try {
        const QString name = m_database.connectionName();
        m_database.close();
        m_database = QSqlDatabase(); // a connection must be unused when it is removed
        QSqlDatabase::removeDatabase(name);
    } catch (const std::bad_alloc &) { // the connection ends with the process
    }
}

QSqlError Dialect::sizeError()
{
    return QSqlError(QString(), QStringLiteral("it has changed while it was read"),
                     QSqlError::StatementError);
}

QString Dialect::existsMessage()
{
    return QStringLiteral("it exists already; --force overwrites it");
}

QString Dialect::lockedMessage()
{
    return QStringLiteral("somebody else has kept it locked for %1 seconds")
        .arg(mostWaitingSeconds);
}

std::unique_ptr<Dialect> dialectOf(const DatabaseAddress &address)
{
    return address.isUrl ? postgresDialect(address) : sqliteDialect(address.text);
}

} // namespace seamrevise
