#include "store/dialect.h"

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
    const QString name = m_database.connectionName();
    m_database.close();
    m_database = QSqlDatabase(); // a connection must be unused when it is removed
    QSqlDatabase::removeDatabase(name);
}

std::unique_ptr<Dialect> dialectOf(const DatabaseAddress &address)
{
    return sqliteDialect(address.text);
}

} // namespace seamrevise
