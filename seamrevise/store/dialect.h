#pragma once

#include "store/databaseaddress.h"

#include <QByteArray>
#include <QSqlDatabase>
#include <QSqlError>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <memory>

namespace seamrevise
{

/// How long a writer waits for another one.
constexpr int mostWaitingSeconds = 30;

/// What a connection is for.
enum class DatabaseAccess
{
    Read,
    Write,
    WriteOrCreate, ///< to a wall, or make one if there is none
    Create,        ///< make a wall that is not there yet
    Overwrite      ///< make a wall in place of one that may be there
};

/// All that differs between the databases in which walls are kept; the rest is the same SQL for
/// all of them. One object serves one connection.
class Dialect
{
public:
    virtual ~Dialect();

    /// Connects under a name of Qt's. Empty, or what keeps it from that.
    virtual QString connect(const QString &connectionName, DatabaseAccess access) = 0;
    /// What keeps the database, whose schema is right, from being read; empty if nothing.
    virtual QString fault() const = 0;
    /// Ends what a commit leaves to be done, and disconnects. Empty, or what went wrong.
    virtual QString finish() = 0;
    QSqlDatabase &database() { return m_database; }

    /// What begins a transaction in which all that is read is one state.
    virtual QString beginReading() const = 0;
    /// What begins a transaction that writes.
    virtual QString beginWriting() const = 0;

    /// A query for the names of the wall's tables; none if there is no wall.
    virtual QString tablesQuery() const = 0;
    /// A query for the version of the schema.
    virtual QString versionQuery() const = 0;
    /// The statements that make a wall: around those that make its tables, what else it takes.
    virtual QStringList schema(const QStringList &tables, int version) const = 0;

    /// Runs statements on a database of an older version and notes the new one, all or nothing;
    /// other writers are kept out already. Empty, or what went wrong.
    virtual QString upgrade(const QStringList &statements, int version) = 0;

    /// The type of a column of bytes.
    virtual QString bytesType() const = 0;
    /// An expression: the length of a column of bytes, found without reading them.
    virtual QString lengthOf(const QString &column) const = 0;
    /// A clause: what this query reads stays as it is until the transaction ends. Without change,
    /// others may have such a clause at the same time.
    virtual QString lockingRows(bool forChange) const = 0;

    /// Reads the column data of the only row that a source, "TABLE WHERE ...", has. Fails unless it
    /// has size bytes.
    virtual QSqlError readBytes(const QString &source, const QVariantList &keys, char *bytes,
                                qint64 size)
        = 0;
    /// Runs a statement; bytes are its last value.
    virtual QSqlError writeBytes(const QString &sql, const QVariantList &values,
                                 const QByteArray &bytes)
        = 0;

    /// An error as a user is told of it.
    virtual QString message(const QSqlError &error) const = 0;
    static QSqlError sizeError();
    static QString existsMessage();
    static QString lockedMessage();

protected:
    void disconnect();

    QSqlDatabase m_database;
};

/// The dialect of an address.
std::unique_ptr<Dialect> dialectOf(const DatabaseAddress &address);

std::unique_ptr<Dialect> sqliteDialect(const QString &path);
std::unique_ptr<Dialect> postgresDialect(const DatabaseAddress &address);

} // namespace seamrevise
