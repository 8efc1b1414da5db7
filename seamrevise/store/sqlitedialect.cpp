#include "store/dialect.h"
#include "store/passingfile.h"

#include <QFile>
#include <QFileInfo>
#include <QSqlQuery>

#include <algorithm>
#include <optional>

namespace seamrevise
{

namespace
{

/// Zones are large: the largest pages that there are halve the time of reading them.
constexpr int pageBytes = 65536;

/// A wall in a file. A new one is made under a passing name beside it and renamed when it is whole.
class SqliteDialect : public Dialect
{
public:
    explicit SqliteDialect(const QString &path)
        // Never one of SQLite's special names, and never a link, which would be replaced.
        : m_path(QFileInfo::exists(path) ? QFileInfo(path).canonicalFilePath()
                                         : QFileInfo(path).absoluteFilePath())
    {
    }
    ~SqliteDialect() override { disconnect(); } // before the passing file is removed
    SqliteDialect(const SqliteDialect &) = delete;
    SqliteDialect &operator=(const SqliteDialect &) = delete;

    QString connect(const QString &connectionName, DatabaseAccess access) override
    {
        m_isReader = access == DatabaseAccess::Read;
        m_mayReplace = access == DatabaseAccess::Overwrite;
        const bool isNew = isMaking(access);
        QString what = isNew ? obstacle() : absence();
        if (!what.isEmpty())
            return what;
        if (!QSqlDatabase::isDriverAvailable(QStringLiteral("QSQLITE")))
            return QStringLiteral("Qt has no SQLite driver here; install libqt5sql5-sqlite");
        m_database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), connectionName);
        m_database.setConnectOptions(
            QStringLiteral("QSQLITE_BUSY_TIMEOUT=%1").arg(mostWaitingSeconds * 1000));
        if (isNew)
            m_passing.emplace(m_path);
        m_database.setDatabaseName(isNew ? m_passing->path() : m_path);
        return m_database.open() ? prepare() : message(m_database.lastError());
    }

    /// SQLite itself reads a last page that was cut short as if it ended in zeros.
    QString fault() const override
    {
        QSqlQuery query(m_database);
        if (!query.exec(QStringLiteral("PRAGMA page_size")) || !query.next())
            return message(query.lastError());
        const int size = query.value(0).toInt();
        return size > 0 && QFileInfo(m_path).size() % size == 0
            ? QString()
            : QStringLiteral("the file was cut short");
    }

    QString finish() override
    {
        disconnect();
        return m_passing ? m_passing->moveToFinalName(m_mayReplace) : QString();
    }

    QString beginReading() const override { return QStringLiteral("BEGIN"); }
    QString beginWriting() const override { return QStringLiteral("BEGIN IMMEDIATE"); }

    QString tablesQuery() const override
    {
        return QStringLiteral("SELECT name FROM sqlite_master WHERE type = 'table'");
    }
    QString versionQuery() const override { return QStringLiteral("PRAGMA user_version"); }
    QStringList schema(const QStringList &tables, int version) const override
    {
        return tables + QStringList(QStringLiteral("PRAGMA user_version = %1").arg(version));
    }

    /// Works on a copy, which also gets the pages of today; the old file stays as it is until the
    /// copy takes its name.
    QString upgrade(const QStringList &statements, int version) override
    {
        m_passing.emplace(m_path);
        m_mayReplace = true;
        const QString copy
            = QStringLiteral("VACUUM INTO '%1'")
                  .arg(QString(m_passing->path()).replace(QLatin1Char('\''), QLatin1String("''")));
        const QString pages = QStringLiteral("PRAGMA page_size = %1").arg(pageBytes);
        QString what = runElsewhere(m_path, {pages, copy});
        if (what.isEmpty())
            what = runElsewhere(m_passing->path(),
                                QStringList(QStringLiteral("BEGIN")) + schema(statements, version)
                                    + QStringList(QStringLiteral("COMMIT")));
        if (!what.isEmpty())
            return what;
        QFile::setPermissions(m_passing->path(), QFile::permissions(m_path));
        return finish();
    }

    QString bytesType() const override { return QStringLiteral("BLOB"); }
    QString lengthOf(const QString &column) const override
    {
        return QStringLiteral("(typeof(%1) = 'blob') * length(%1)").arg(column);
    }
    QString lockingRows(bool) const override { return {}; } // one writer at a time anyway

    QSqlError readBytes(const QString &source, const QVariantList &keys, char *bytes,
                        qint64 size) override
    {
        QSqlQuery query(m_database);
        const QSqlError error = run(query, QStringLiteral("SELECT data FROM ") + source, keys);
        if (error.isValid() || !query.next())
            return error.isValid() ? error : query.lastError();
        const QByteArray value = query.value(0).toByteArray();
        if (value.size() != size)
            return sizeError();
        std::copy_n(value.constData(), size, bytes);
        return {};
    }

    QSqlError writeBytes(const QString &sql, const QVariantList &values,
                         const QByteArray &bytes) override
    {
        QSqlQuery query(m_database);
        return run(query, sql, values + QVariantList{bytes});
    }

    QString message(const QSqlError &error) const override
    {
        constexpr auto busy = "5"; // SQLITE_BUSY
        if (error.nativeErrorCode() == QLatin1String(busy))
            return lockedMessage();
        return error.databaseText().isEmpty() ? error.text() : error.databaseText();
    }

private:
    static QSqlError run(QSqlQuery &query, const QString &sql, const QVariantList &values)
    {
        query.setForwardOnly(true);
        if (!query.prepare(sql))
            return query.lastError();
        for (const QVariant &value : values)
            query.addBindValue(value);
        return query.exec() ? QSqlError() : query.lastError();
    }

    /// Runs statements on another connection. Empty, or what went wrong.
    QString runElsewhere(const QString &path, const QStringList &statements) const
    {
        const QString name = m_database.connectionName() + QStringLiteral("-other");
        QString what;
        {
            QSqlDatabase other = QSqlDatabase::cloneDatabase(m_database, name);
            other.setDatabaseName(path);
            if (!other.open())
                what = message(other.lastError());
            QSqlQuery query(other);
            for (const QString &statement : statements) {
                if (what.isEmpty() && !query.exec(statement))
                    what = message(query.lastError());
            }
        }
        QSqlDatabase::removeDatabase(name);
        return what;
    }

    /// What keeps an existing file from being opened.
    QString absence() const
    {
        const QFileInfo file(m_path);
        if (!file.exists())
            return QStringLiteral("there is no such file");
        return file.isFile() ? QString() : QStringLiteral("this is not a file");
    }

    bool isMaking(DatabaseAccess access) const
    {
        return access == DatabaseAccess::Create || access == DatabaseAccess::Overwrite
            || (access == DatabaseAccess::WriteOrCreate && !QFileInfo::exists(m_path));
    }

    /// What keeps a new file from getting its name.
    QString obstacle() const
    {
        const QFileInfo file(m_path);
        if (file.isDir())
            return QStringLiteral("this is a directory");
        return file.exists() && !m_mayReplace ? existsMessage() : QString();
    }

    /// A reader's connection may write, too: what a writer that was killed has left behind is
    /// undone by whoever comes next.
    QString prepare()
    {
        QSqlQuery query(m_database);
        return query.exec(m_isReader ? QStringLiteral("PRAGMA query_only = ON")
                                     : QStringLiteral("PRAGMA page_size = %1").arg(pageBytes))
            ? QString()
            : message(query.lastError());
    }

    const QString m_path;
    std::optional<PassingFile> m_passing; ///< a new file
    bool m_isReader = false;
    bool m_mayReplace = false; ///< an existing file
};

} // namespace

std::unique_ptr<Dialect> sqliteDialect(const QString &path)
{
    return std::make_unique<SqliteDialect>(path);
}

} // namespace seamrevise
