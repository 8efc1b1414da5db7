#include "store/sqlscreenstore.h"

#include "store/dialect.h"
#include "store/schema.h"
#include <seamrevision/coefszoneinfo.h>
#include <seamrevision/multilayercoefzoneinfo.h>

#include <QSqlError>
#include <QSqlQuery>
#include <QtEndian>

#include <algorithm>
#include <atomic>
#include <limits>
#include <memory>

namespace seamrevise
{

namespace
{

QString newConnectionName()
{
    static std::atomic<unsigned int> count{0};
    return QStringLiteral("screenstore-%1").arg(count++);
}

void placeZone(const StoredZone &stored, ZoneBaseInfo &zone)
{
    zone.setAreaID(QString::number(stored.number));
    zone.setBegPixCol(stored.rect.left());
    zone.setBegPixRow(stored.rect.top());
    zone.setEndPixCol(stored.rect.right());
    zone.setEndPixRow(stored.rect.bottom());
}

} // namespace

SqlScreenStore::SqlScreenStore()
    : m_connectionName(newConnectionName())
{
}

SqlScreenStore::~SqlScreenStore() = default;

bool SqlScreenStore::connect(const QString &address, DatabaseAccess access)
{
    QString fault;
    const DatabaseAddress parsed = parseAddress(address, fault);
    m_displayName = parsed.text;
    if (!fault.isEmpty())
        return fail(0, fault);
    if (m_dialect)
        return fail(0, QStringLiteral("this store has already been used"));
    m_dialect = dialectOf(parsed);
    fault = m_dialect->connect(m_connectionName, access);
    if (!fault.isEmpty())
        return fail(0, fault);
    return run(access == DatabaseAccess::Read ? m_dialect->beginReading()
                                              : m_dialect->beginWriting());
}

bool SqlScreenStore::open(const QString &address)
{
    QStringList present;
    if (!connect(address, DatabaseAccess::Read) || !listTables(present) || !checkSchema(present))
        return false;
    const QString fault = m_dialect->fault();
    return fault.isEmpty() ? readLayout() : fail(0, fault);
}

bool SqlScreenStore::listTables(QStringList &present)
{
    QSqlQuery query(m_dialect->database());
    if (!run(query, m_dialect->tablesQuery(), {}))
        return false;
    while (query.next())
        present.push_back(query.value(0).toString());
    return !query.lastError().isValid() || fail(0, query.lastError());
}

bool SqlScreenStore::checkSchema(const QStringList &present)
{
    if (present.isEmpty())
        return fail(0, QStringLiteral("no wall is stored there"));
    QSqlQuery query(m_dialect->database());
    if (!run(query, m_dialect->versionQuery(), {})
        || !nextRow(query, 0, QStringLiteral("it has no schema version"))
        || !readInts(query, 0, 0, 1, &m_schemaVersion))
        return false;
    if (m_schemaVersion < 1 || m_schemaVersion > currentSchemaVersion)
        return fail(0,
                    QStringLiteral("it has schema version %1, this program reads 1 to %2")
                        .arg(m_schemaVersion)
                        .arg(currentSchemaVersion));
    const QString missing = missingTable(m_schemaVersion, present);
    return missing.isEmpty() || fail(0, QStringLiteral("the table %1 is missing").arg(missing));
}

bool SqlScreenStore::readLayout(const QString &locking)
{
    QSqlQuery query(m_dialect->database());
    int sizes[4] = {};
    if (!run(query,
             QStringLiteral("SELECT first_col, first_row, last_col, last_row, grid_cols, grid_rows,"
                            " band_cols, band_rows FROM screen ")
                 + locking,
             {})
        || !nextRow(query, 0, QStringLiteral("the table screen is empty"))
        || !readRect(query, 0, 0, m_layout.screen) || !readInts(query, 0, 4, 4, sizes))
        return false;
    m_layout.grid = baseCommon::NQSize(sizes[0], sizes[1]);
    m_layout.band = baseCommon::NQSize(sizes[2], sizes[3]);

    std::vector<StoredZone> partitions;
    if (!readPartitions(partitions))
        return false;
    for (const StoredZone &partition : partitions)
        m_layout.partitions[partition.number] = partition.rect;
    return true;
}

bool SqlScreenStore::readPartitions(std::vector<StoredZone> &partitions)
{
    QSqlQuery query(m_dialect->database());
    if (!run(query,
             QStringLiteral("SELECT number, first_col, first_row, last_col, last_row"
                            " FROM partitions ORDER BY number"),
             {}))
        return false;
    while (query.next()) {
        StoredZone partition;
        if (!readInts(query, 0, 0, 1, &partition.number)
            || !readRect(query, partition.number, 1, partition.rect))
            return false;
        partitions.push_back(partition);
    }
    return !query.lastError().isValid() || fail(0, query.lastError());
}

bool SqlScreenStore::readInventory(StoredInventory &inventory)
{
    inventory = StoredInventory();
    QSqlQuery query(m_dialect->database());
    return run(query, QStringLiteral("SELECT count(*) FROM screen"), {})
        && nextRow(query, 0, QStringLiteral("the table screen is empty"))
        && readInts(query, 0, 0, 1, &inventory.screenRows) && readPartitions(inventory.partitions)
        && readCoefficientRows(QStringLiteral("0 FROM coefficients ORDER BY number"), inventory)
        && readCoefficientRows(
               QStringLiteral("layers FROM layered_coefficients ORDER BY layers, number"),
               inventory);
}

/// @param layersAndTable  what is selected last, and from where
bool SqlScreenStore::readCoefficientRows(const QString &layersAndTable, StoredInventory &inventory)
{
    QSqlQuery query(m_dialect->database());
    if (!run(query,
             QStringLiteral("SELECT number, first_col, first_row, last_col, last_row, %1, ")
                     .arg(m_dialect->lengthOf(QStringLiteral("data")))
                 + layersAndTable,
             {}))
        return false;
    while (query.next()) {
        StoredInventory::Coefficients row{};
        if (!readInts(query, 0, 0, 1, &row.number) || !readRect(query, row.number, 1, row.rect)
            || !readInts(query, row.number, 6, 1, &row.layerCount))
            return false;
        row.bytes = query.value(5).toLongLong();
        inventory.coefficients.push_back(row);
    }
    return !query.lastError().isValid() || fail(0, query.lastError());
}

bool SqlScreenStore::listZones(std::vector<StoredZone> &zones)
{
    return readZoneList(QStringLiteral("SELECT number, first_col, first_row, last_col, last_row, %1"
                                       " FROM coefficients ORDER BY number")
                            .arg(m_dialect->lengthOf(QStringLiteral("data"))),
                        {}, storedPixelBytes(0), zones);
}

bool SqlScreenStore::listLayeredZones(int layerCount, std::vector<StoredZone> &zones)
{
    if (!readZoneList(QStringLiteral("SELECT number, first_col, first_row, last_col, last_row, %1"
                                     " FROM layered_coefficients WHERE layers = ? ORDER BY number")
                          .arg(m_dialect->lengthOf(QStringLiteral("data"))),
                      {layerCount}, storedPixelBytes(layerCount), zones))
        return false;
    std::vector<int> numbers;
    if (ReadMultiLayerAllCorrectedAreaIDs(numbers) != 0)
        return false;
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        if (i >= zones.size() || zones[i].number != numbers[i])
            return fail(
                numbers[i],
                QStringLiteral("it has no coefficients with a layer count of %1").arg(layerCount));
    }
    return true;
}

bool SqlScreenStore::readZoneList(const QString &sql, const QVariantList &values,
                                  qint64 bytesPerPixel, std::vector<StoredZone> &zones)
{
    zones.clear();
    QSqlQuery query(m_dialect->database());
    if (!run(query, sql, values))
        return false;
    while (query.next()) {
        StoredZone zone;
        if (!readInts(query, 0, 0, 1, &zone.number) || !readRect(query, zone.number, 1, zone.rect)
            || !checkSize(zone.number, zone.rect, bytesPerPixel, query.value(5).toLongLong()))
            return false;
        zones.push_back(zone);
    }
    return !query.lastError().isValid() || fail(0, query.lastError());
}

bool SqlScreenStore::listRevisions(std::vector<PartitionRevision> &revisions)
{
    revisions.clear();
    if (m_schemaVersion < 2)
        return true;
    QSqlQuery query(m_dialect->database());
    if (!run(query,
             QStringLiteral("SELECT number, layers, revision, written, station FROM revisions"
                            " ORDER BY number, layers"),
             {}))
        return false;
    while (query.next()) {
        int values[3] = {};
        if (!readInts(query, 0, 0, 3, values))
            return false;
        revisions.push_back({values[0], values[1], values[2], query.value(3).toString(),
                             query.value(4).toString()});
    }
    return !query.lastError().isValid() || fail(0, query.lastError());
}

bool SqlScreenStore::readNumbers(const QString &sql, std::vector<int> &numbers)
{
    QSqlQuery query(m_dialect->database());
    if (!run(query, sql, {}))
        return false;
    while (query.next()) {
        int number = 0;
        if (!readInts(query, 0, 0, 1, &number))
            return false;
        numbers.push_back(number);
    }
    return !query.lastError().isValid() || fail(0, query.lastError());
}

int SqlScreenStore::ReadAllIDAreaCoefIDs(QMap<int, CoefsZoneInfo *> &zones)
{
    std::vector<int> numbers;
    if (!readNumbers(QStringLiteral("SELECT number FROM coefficients ORDER BY number"), numbers))
        return 1;
    for (const int number : numbers) {
        auto zone = std::make_unique<CoefsZoneInfo>();
        zones.insert(number, zone.get());
        static_cast<void>(zone.release()); // the map's owner deletes it
    }
    return 0;
}

int SqlScreenStore::ReadMultiLayerAllCorrectedAreaIDs(std::vector<int> &numbers)
{
    const QString sql
        = QStringLiteral("SELECT DISTINCT number FROM layered_coefficients ORDER BY number");
    return readNumbers(sql, numbers) ? 0 : 1;
}

int SqlScreenStore::readAreaCoefficients(int number, CoefsZoneInfo &zone)
{
    const QString source = QStringLiteral("coefficients WHERE number = ?");
    StoredZone stored{number, NQRect()};
    qint64 size = 0;
    if (!findZone(source, {number}, storedPixelBytes(0), stored, size))
        return 1;
    placeZone(stored, zone);
    std::vector<unsigned short> &values = zone.m_arrayData;
    values.resize(static_cast<std::size_t>(size) / sizeof(unsigned short));
    if (!readBytes(source, {number}, number, reinterpret_cast<char *>(values.data()), size))
        return 1;
    qFromLittleEndian<unsigned short>(values.data(), static_cast<qsizetype>(values.size()),
                                      values.data());
    return 0;
}

int SqlScreenStore::readMultiLayerAreaCoefficients(const unsigned int &layerSize,
                                                   const unsigned int &number,
                                                   MultiLayerCoefZoneInfo &zone)
{
    const QString source = QStringLiteral("layered_coefficients WHERE number = ? AND layers = ?");
    const QVariantList keys{number, layerSize};
    const qint64 rowBytes = storedPixelBytes(layerSize);
    StoredZone stored{static_cast<int>(number), NQRect()};
    qint64 size = 0;
    if (!findZone(source, keys, rowBytes, stored, size))
        return 1;
    QByteArray bytes(static_cast<int>(size), Qt::Uninitialized);
    if (!readBytes(source, keys, stored.number, bytes.data(), size))
        return 1;
    placeZone(stored, zone);
    const std::size_t rowValues = std::size_t{layerSize} * 3;
    zone.m_multiLayerCoefs.resize(static_cast<std::size_t>(pixelsOf(stored.rect)));
    const char *row = bytes.constData();
    for (std::vector<int> &values : zone.m_multiLayerCoefs) {
        values.resize(rowValues);
        qFromLittleEndian<qint32>(row, static_cast<qsizetype>(rowValues), values.data());
        row += rowBytes;
    }
    return 0;
}

/// Where a zone lies and how many bytes it has, which are as many as it needs.
bool SqlScreenStore::findZone(const QString &source, const QVariantList &keys, qint64 bytesPerPixel,
                              StoredZone &zone, qint64 &size)
{
    QSqlQuery query(m_dialect->database());
    if (!run(query,
             QStringLiteral("SELECT first_col, first_row, last_col, last_row, %1 FROM ")
                     .arg(m_dialect->lengthOf(QStringLiteral("data")))
                 + source,
             keys, zone.number)
        || !nextRow(query, zone.number,
                    QStringLiteral("it has no stored coefficients of this kind"))
        || !readRect(query, zone.number, 0, zone.rect))
        return false;
    size = query.value(4).toLongLong();
    return checkSize(zone.number, zone.rect, bytesPerPixel, size);
}

bool SqlScreenStore::readBytes(const QString &source, const QVariantList &keys, int number,
                               char *bytes, qint64 size)
{
    const QSqlError error = m_dialect->readBytes(source, keys, bytes, size);
    return !error.isValid() || fail(number, error);
}

bool SqlScreenStore::checkSize(int number, const NQRect &rect, qint64 bytesPerPixel, qint64 bytes)
{
    const qint64 pixels = pixelsOf(rect);
    if (pixels == 0)
        return fail(number, QStringLiteral("its zone has no pixel"));
    if (bytesPerPixel < 1 || pixels > largestZoneBytes / bytesPerPixel)
        return fail(number,
                    QStringLiteral("its zone of %1 pixels is larger than one database value holds")
                        .arg(sizeText(columnsOf(rect), rowsOf(rect))));
    if (bytes != pixels * bytesPerPixel)
        return fail(number,
                    QStringLiteral("its zone of %1 pixels needs %2 bytes, %3 are stored")
                        .arg(sizeText(columnsOf(rect), rowsOf(rect)))
                        .arg(pixels * bytesPerPixel)
                        .arg(bytes));
    return true;
}

bool SqlScreenStore::run(const QString &sql)
{
    QSqlQuery query(m_dialect->database());
    return run(query, sql, {});
}

bool SqlScreenStore::run(QSqlQuery &query, const QString &sql, const QVariantList &values,
                         int number)
{
    query.setForwardOnly(true);
    if (values.isEmpty()) // not every statement can be prepared
        return query.exec(sql) || fail(number, query.lastError());
    if (!query.prepare(sql))
        return fail(number, query.lastError());
    for (const QVariant &value : values)
        query.addBindValue(value);
    return query.exec() || fail(number, query.lastError());
}

bool SqlScreenStore::nextRow(QSqlQuery &query, int number, const QString &missing)
{
    if (query.next())
        return true;
    return query.lastError().isValid() ? fail(number, query.lastError()) : fail(number, missing);
}

bool SqlScreenStore::readInts(const QSqlQuery &query, int number, int firstColumn, int count,
                              int *values)
{
    for (int i = 0; i < count; ++i) {
        bool isNumber = false;
        const qint64 value = query.value(firstColumn + i).toLongLong(&isNumber);
        if (!isNumber || value < std::numeric_limits<int>::min()
            || value > std::numeric_limits<int>::max())
            return fail(number, QStringLiteral("a number in the database is none or too large"));
        values[i] = static_cast<int>(value);
    }
    return true;
}

bool SqlScreenStore::readRect(const QSqlQuery &query, int number, int firstColumn, NQRect &rect)
{
    int edges[4] = {};
    if (!readInts(query, number, firstColumn, 4, edges))
        return false;
    rect = NQRect(edges[0], edges[1], edges[2], edges[3]);
    return true;
}

bool SqlScreenStore::fail(int number, const QString &message)
{
    m_errorText = m_displayName
        + (number == 0 ? QString() : QStringLiteral(", partition %1").arg(number))
        + QStringLiteral(": ") + message;
    return false;
}

bool SqlScreenStore::fail(int number, const QSqlError &error)
{
    return fail(number, m_dialect->message(error));
}

} // namespace seamrevise
