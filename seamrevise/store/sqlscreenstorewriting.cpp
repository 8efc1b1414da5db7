// How an SqlScreenStore writes; sqlscreenstore.cpp is how it connects and reads.

#include "store/dialect.h"
#include "store/schema.h"
#include "store/sqlscreenstore.h"
#include "store/storedbytes.h"

#include <QDateTime>
#include <QSqlError>
#include <QSqlQuery>
#include <QSysInfo>

#include <algorithm>
#include <utility>

#include <unistd.h>

namespace seamrevise
{

namespace
{

const char *const updateScreen
    = "UPDATE screen SET first_col = ?, first_row = ?, last_col = ?, last_row = ?,"
      " grid_cols = ?, grid_rows = ?, band_cols = ?, band_rows = ?";
const char *const insertScreen
    = "INSERT INTO screen (first_col, first_row, last_col, last_row,"
      " grid_cols, grid_rows, band_cols, band_rows) VALUES (?, ?, ?, ?, ?, ?, ?, ?)";
const char *const insertPartition
    = "INSERT INTO partitions (number, first_col, first_row, last_col, last_row)"
      " VALUES (?, ?, ?, ?, ?)";
const char *const putCoefficients
    = "INSERT INTO coefficients (number, first_col, first_row, last_col, last_row, data)"
      " VALUES (?, ?, ?, ?, ?, ?) ON CONFLICT (number) DO UPDATE SET"
      " first_col = excluded.first_col, first_row = excluded.first_row,"
      " last_col = excluded.last_col, last_row = excluded.last_row, data = excluded.data";
const char *const putLayeredCoefficients
    = "INSERT INTO layered_coefficients"
      " (number, layers, first_col, first_row, last_col, last_row, data)"
      " VALUES (?, ?, ?, ?, ?, ?, ?) ON CONFLICT (number, layers) DO UPDATE SET"
      " first_col = excluded.first_col, first_row = excluded.first_row,"
      " last_col = excluded.last_col, last_row = excluded.last_row, data = excluded.data";
/// Changes no row if another station wrote the latest revision, and nothing is forced.
const char *const claimRevision
    = "INSERT INTO revisions (number, layers, revision, written, station)"
      " VALUES (?, ?, 1, ?, ?) ON CONFLICT (number, layers) DO UPDATE SET"
      " revision = revisions.revision + 1, written = excluded.written,"
      " station = excluded.station WHERE revisions.station = excluded.station OR ?";

QVariantList rectValues(const NQRect &rect)
{
    return {rect.left(), rect.top(), rect.right(), rect.bottom()};
}

QVariantList sizeValues(const ScreenLayout &layout)
{
    return rectValues(layout.screen)
        + QVariantList{layout.grid.width(), layout.grid.height(), layout.band.width(),
                       layout.band.height()};
}

QVariantList placeValues(const ScreenLayout &layout, int number)
{
    const auto place = layout.partitions.find(number);
    return place == layout.partitions.end() ? QVariantList() : rectValues(place->second);
}

bool isSame(const ScreenLayout &first, const ScreenLayout &second)
{
    return sizeValues(first) == sizeValues(second)
        && first.partitions.size() == second.partitions.size()
        && std::all_of(first.partitions.begin(), first.partitions.end(), [&](const auto &entry) {
               return rectValues(entry.second) == placeValues(second, entry.first);
           });
}

} // namespace

QString defaultStation()
{
    const QByteArray user = qgetenv("USER");
    return QString::fromLocal8Bit(user.isEmpty() ? QByteArray::number(getuid()) : user)
        + QLatin1Char('@') + QSysInfo::machineHostName();
}

bool SqlScreenStore::openForWriting(const QString &address, const Writer &writer)
{
    m_writer = writer;
    QStringList present;
    return connect(address, DatabaseAccess::Write) && listTables(present) && checkSchema(present)
        && checkIsCurrent() && readLayout(m_dialect->lockingRows(false));
}

bool SqlScreenStore::create(const QString &address, const ScreenLayout &layout,
                            const Writer &writer)
{
    m_writer = writer;
    QStringList present;
    if (!connect(address, writer.force ? DatabaseAccess::Overwrite : DatabaseAccess::Create)
        || !listTables(present))
        return false;
    if (present.isEmpty())
        return makeWall(layout);
    if (!writer.force)
        return fail(0, Dialect::existsMessage());
    return checkSchema(present) && checkIsCurrent() && readLayout(m_dialect->lockingRows(true))
        && emptyWall() && replaceLayout(layout);
}

bool SqlScreenStore::openOrCreate(const QString &address, const ScreenLayout &layout,
                                  const Writer &writer)
{
    m_writer = writer;
    QStringList present;
    if (!connect(address, DatabaseAccess::WriteOrCreate) || !listTables(present))
        return false;
    if (present.isEmpty())
        return makeWall(layout);
    return checkSchema(present) && checkIsCurrent() && readLayout(m_dialect->lockingRows(true))
        && replaceLayout(layout);
}

bool SqlScreenStore::upgrade(const QString &address)
{
    QStringList present;
    if (!connect(address, DatabaseAccess::Write) || !listTables(present) || !checkSchema(present))
        return false;
    if (m_schemaVersion == currentSchemaVersion)
        return true;
    QString fault = m_dialect->fault();
    if (fault.isEmpty())
        fault = m_dialect->upgrade(createTables(m_schemaVersion + 1, m_dialect->bytesType()),
                                   currentSchemaVersion);
    return fault.isEmpty() || fail(0, fault);
}

bool SqlScreenStore::makeWall(const ScreenLayout &layout)
{
    const QStringList schema
        = m_dialect->schema(createTables(1, m_dialect->bytesType()), currentSchemaVersion);
    for (const QString &statement : schema) {
        if (!run(statement))
            return false;
    }
    m_schemaVersion = currentSchemaVersion;
    return writeScreen(QString::fromLatin1(insertScreen), layout) && writePartitions(layout);
}

bool SqlScreenStore::writeScreen(const QString &sql, const ScreenLayout &layout)
{
    m_layout = layout;
    QSqlQuery query(m_dialect->database());
    return run(query, sql, sizeValues(layout));
}

bool SqlScreenStore::writePartitions(const ScreenLayout &layout)
{
    QSqlQuery query(m_dialect->database());
    for (const auto &entry : layout.partitions) {
        if (!run(query, QString::fromLatin1(insertPartition),
                 QVariantList{entry.first} + rectValues(entry.second), entry.first))
            return false;
    }
    return true;
}

bool SqlScreenStore::replaceLayout(const ScreenLayout &layout)
{
    return isSame(m_layout, layout)
        || (removeMoved(layout) && run(QStringLiteral("DELETE FROM partitions"))
            && writeScreen(QString::fromLatin1(updateScreen), layout) && writePartitions(layout));
}

/// Coefficients of a partition that gets another place, or none, are of no use any more.
bool SqlScreenStore::removeMoved(const ScreenLayout &layout)
{
    std::vector<std::pair<int, int>> stored;
    {
        QSqlQuery query(m_dialect->database());
        if (!run(query,
                 QStringLiteral("SELECT number, 0 FROM coefficients UNION ALL"
                                " SELECT number, layers FROM layered_coefficients ORDER BY 1, 2"),
                 {}))
            return false;
        while (query.next())
            stored.emplace_back(query.value(0).toInt(), query.value(1).toInt());
        if (query.lastError().isValid())
            return fail(0, query.lastError());
    }
    return std::all_of(stored.begin(), stored.end(), [&](const auto &key) {
        const auto [number, layerCount] = key;
        const QVariantList place = placeValues(m_layout, number);
        return (!place.isEmpty() && place == placeValues(layout, number))
            || remove(number, layerCount);
    });
}

bool SqlScreenStore::emptyWall()
{
    return run(QStringLiteral("DELETE FROM coefficients"))
        && run(QStringLiteral("DELETE FROM layered_coefficients"))
        && run(QStringLiteral("DELETE FROM revisions"));
}

bool SqlScreenStore::put(const StoredZone &zone, const std::vector<unsigned short> &values)
{
    return checkSize(zone.number, zone.rect, storedPixelBytes(0),
                     static_cast<qint64>(values.size()) * qint64{sizeof(unsigned short)})
        && claim(zone.number, 0)
        && putZone(QString::fromLatin1(putCoefficients), {zone.number}, zone, storedBytes(values));
}

bool SqlScreenStore::putLayered(const StoredZone &zone, int layerCount,
                                const std::vector<qint32> &values)
{
    return checkSize(zone.number, zone.rect, storedPixelBytes(layerCount),
                     static_cast<qint64>(values.size()) * qint64{sizeof(qint32)})
        && claim(zone.number, layerCount)
        && putZone(QString::fromLatin1(putLayeredCoefficients), {zone.number, layerCount}, zone,
                   storedBytes(values));
}

bool SqlScreenStore::putZone(const QString &sql, const QVariantList &key, const StoredZone &zone,
                             const QByteArray &bytes)
{
    const QSqlError error = m_dialect->writeBytes(sql, key + rectValues(zone.rect), bytes);
    return !error.isValid() || fail(zone.number, error);
}

bool SqlScreenStore::remove(int number, int layerCount)
{
    QSqlQuery query(m_dialect->database());
    if (!claim(number, layerCount))
        return false;
    return layerCount == 0
        ? run(query, QStringLiteral("DELETE FROM coefficients WHERE number = ?"), {number}, number)
        : run(query,
              QStringLiteral("DELETE FROM layered_coefficients WHERE number = ? AND layers = ?"),
              {number, layerCount}, number);
}

/// Notes who writes; one statement, so that of two writers the later sees the earlier.
bool SqlScreenStore::claim(int number, int layerCount)
{
    if (m_writer.station.isEmpty())
        return true;
    const QString now = QDateTime::currentDateTimeUtc().toString(Qt::ISODate);
    QSqlQuery query(m_dialect->database());
    if (!run(query, QString::fromLatin1(claimRevision),
             {number, layerCount, now, m_writer.station, m_writer.force}, number))
        return false;
    return query.numRowsAffected() > 0 || refuse(number, layerCount);
}

bool SqlScreenStore::refuse(int number, int layerCount)
{
    QSqlQuery query(m_dialect->database());
    if (!run(query,
             QStringLiteral("SELECT station, written FROM revisions"
                            " WHERE number = ? AND layers = ?"),
             {number, layerCount}, number)
        || !nextRow(query, number, QStringLiteral("another station has written it just now")))
        return false;
    return fail(number,
                QStringLiteral("station %1 wrote it at %2; --force overwrites it")
                    .arg(query.value(0).toString(), query.value(1).toString()));
}

bool SqlScreenStore::commit()
{
    if (!m_errorText.isEmpty() || !run(QStringLiteral("COMMIT")))
        return false;
    const QString fault = m_dialect->finish();
    return fault.isEmpty() || fail(0, fault);
}

bool SqlScreenStore::checkIsCurrent()
{
    return m_schemaVersion == currentSchemaVersion
        || fail(0,
                QStringLiteral("it has schema version %1; seamrevise upgrade makes it version %2")
                    .arg(m_schemaVersion)
                    .arg(currentSchemaVersion));
}

} // namespace seamrevise
