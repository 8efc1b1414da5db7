#include "store/sqlscreenstore.h"

#include <seamrevision/coefszoneinfo.h>
#include <seamrevision/multilayercoefzoneinfo.h>

#include <QFileInfo>
#include <QSet>
#include <QSqlError>
#include <QSqlQuery>
#include <QtEndian>

#include <atomic>
#include <limits>
#include <memory>

namespace seamrevise
{

namespace
{

/// Part of the file format.
constexpr int schemaVersion = 1;
constexpr qint64 bytesPerSinglePixel = qint64{9} * 2;

const char *const tables[] = {"screen", "partitions", "coefficients", "layered_coefficients"};

const char *const schema[] = {
    "CREATE TABLE screen (first_col INTEGER NOT NULL, first_row INTEGER NOT NULL,"
    " last_col INTEGER NOT NULL, last_row INTEGER NOT NULL,"
    " grid_cols INTEGER NOT NULL, grid_rows INTEGER NOT NULL,"
    " band_cols INTEGER NOT NULL, band_rows INTEGER NOT NULL)",
    "CREATE TABLE partitions (number INTEGER PRIMARY KEY,"
    " first_col INTEGER NOT NULL, first_row INTEGER NOT NULL,"
    " last_col INTEGER NOT NULL, last_row INTEGER NOT NULL)",
    "CREATE TABLE coefficients (number INTEGER PRIMARY KEY,"
    " first_col INTEGER NOT NULL, first_row INTEGER NOT NULL,"
    " last_col INTEGER NOT NULL, last_row INTEGER NOT NULL,"
    " data BLOB NOT NULL)",
    "CREATE TABLE layered_coefficients (number INTEGER NOT NULL, layers INTEGER NOT NULL,"
    " first_col INTEGER NOT NULL, first_row INTEGER NOT NULL,"
    " last_col INTEGER NOT NULL, last_row INTEGER NOT NULL,"
    " data BLOB NOT NULL, PRIMARY KEY (number, layers))",
};

QString newConnectionName()
{
    static std::atomic<unsigned int> count{0};
    return QStringLiteral("screenstore-%1").arg(count++);
}

qint64 bytesPerLayeredPixel(qint64 layerCount)
{
    return layerCount * 3 * qint64{sizeof(qint32)};
}

QVariantList rectValues(const NQRect &rect)
{
    return {rect.left(), rect.top(), rect.right(), rect.bottom()};
}

template <typename Value>
QByteArray littleEndian(const std::vector<Value> &values)
{
    QByteArray bytes(static_cast<int>(values.size() * sizeof(Value)), Qt::Uninitialized);
    qToLittleEndian<Value>(values.data(), static_cast<qsizetype>(values.size()), bytes.data());
    return bytes;
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

SqlScreenStore::~SqlScreenStore()
{
    if (!m_database.isValid())
        return;
    m_database.close();
    m_database = QSqlDatabase(); // the connection must be unused when it is removed
    QSqlDatabase::removeDatabase(m_connectionName);
}

bool SqlScreenStore::connect(const QString &path, const QString &options)
{
    if (m_database.isValid())
        return fail(0, QStringLiteral("this store has already been used"));
    if (!QSqlDatabase::isDriverAvailable(QStringLiteral("QSQLITE")))
        return fail(0, QStringLiteral("Qt has no SQLite driver here; install libqt5sql5-sqlite"));
    m_database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_connectionName);
    m_database.setConnectOptions(options);
    // An absolute path is never one of the names that SQLite reads as something else.
    m_database.setDatabaseName(QFileInfo(path).absoluteFilePath());
    return m_database.open() || fail(0, m_database.lastError());
}

bool SqlScreenStore::open(const QString &path)
{
    m_displayName = path;
    const QFileInfo file(path);
    if (!file.exists())
        return fail(0, QStringLiteral("there is no such file"));
    if (!file.isFile())
        return fail(0, QStringLiteral("this is not a file"));
    return connect(path, QStringLiteral("QSQLITE_OPEN_READONLY")) && checkSchema()
        && checkFileSize(file.size()) && readLayout();
}

bool SqlScreenStore::create(const QString &path, const QString &displayName,
                            const ScreenLayout &layout)
{
    m_displayName = displayName;
    if (!connect(path, QString()))
        return false;
    if (!m_database.transaction())
        return fail(0, m_database.lastError());
    m_layout = layout;

    QSqlQuery query(m_database);
    for (const char *const statement : schema) {
        if (!run(query, QString::fromLatin1(statement), {}))
            return false;
    }
    const QVariantList sizes{layout.grid.width(), layout.grid.height(), layout.band.width(),
                             layout.band.height()};
    if (!run(query, QStringLiteral("PRAGMA user_version = %1").arg(schemaVersion), {})
        || !run(query, QStringLiteral("INSERT INTO screen VALUES (?, ?, ?, ?, ?, ?, ?, ?)"),
                rectValues(layout.screen) + sizes))
        return false;
    for (const auto &entry : layout.partitions) {
        if (!run(query, QStringLiteral("INSERT INTO partitions VALUES (?, ?, ?, ?, ?)"),
                 QVariantList{entry.first} + rectValues(entry.second), entry.first))
            return false;
    }
    return true;
}

bool SqlScreenStore::add(const StoredZone &zone, const std::vector<unsigned short> &values)
{
    return checkSize(zone.number, zone.rect, bytesPerSinglePixel,
                     static_cast<qint64>(values.size()) * qint64{sizeof(unsigned short)})
        && addZone(QStringLiteral("INSERT INTO coefficients VALUES (?, ?, ?, ?, ?, ?)"),
                   {zone.number}, zone, littleEndian(values));
}

bool SqlScreenStore::addLayered(const StoredZone &zone, int layerCount,
                                const std::vector<qint32> &values)
{
    return checkSize(zone.number, zone.rect, bytesPerLayeredPixel(layerCount),
                     static_cast<qint64>(values.size()) * qint64{sizeof(qint32)})
        && addZone(QStringLiteral("INSERT INTO layered_coefficients VALUES (?, ?, ?, ?, ?, ?, ?)"),
                   {zone.number, layerCount}, zone, littleEndian(values));
}

bool SqlScreenStore::addZone(const QString &sql, const QVariantList &key, const StoredZone &zone,
                             const QByteArray &bytes)
{
    QSqlQuery query(m_database);
    return run(query, sql, key + rectValues(zone.rect) + QVariantList{bytes}, zone.number);
}

bool SqlScreenStore::commit()
{
    if (!m_database.commit())
        return fail(0, m_database.lastError());
    m_database.close();
    return true;
}

bool SqlScreenStore::checkSchema()
{
    QSqlQuery query(m_database);
    int version = 0;
    if (!run(query, QStringLiteral("PRAGMA user_version"), {})
        || !nextRow(query, 0, QStringLiteral("it has no schema version"))
        || !readInts(query, 0, 0, 1, &version))
        return false;
    if (version != schemaVersion)
        return fail(0,
                    QStringLiteral("it has schema version %1, this program reads version %2")
                        .arg(version)
                        .arg(schemaVersion));

    if (!run(query, QStringLiteral("SELECT name FROM sqlite_master WHERE type = 'table'"), {}))
        return false;
    QSet<QString> present;
    while (query.next())
        present.insert(query.value(0).toString());
    for (const char *const table : tables) {
        if (!present.contains(QString::fromLatin1(table)))
            return fail(0, QStringLiteral("the table %1 is missing").arg(QLatin1String(table)));
    }
    return true;
}

/// SQLite itself reads a last page that was cut short as if it ended in zeros.
bool SqlScreenStore::checkFileSize(qint64 fileBytes)
{
    QSqlQuery query(m_database);
    int pageBytes = 0;
    if (!run(query, QStringLiteral("PRAGMA page_size"), {})
        || !nextRow(query, 0, QStringLiteral("it has no page size"))
        || !readInts(query, 0, 0, 1, &pageBytes))
        return false;
    return (pageBytes > 0 && fileBytes % pageBytes == 0)
        || fail(0, QStringLiteral("the file was cut short"));
}

bool SqlScreenStore::readLayout()
{
    QSqlQuery query(m_database);
    int sizes[4] = {};
    if (!run(query,
             QStringLiteral("SELECT first_col, first_row, last_col, last_row, grid_cols, grid_rows,"
                            " band_cols, band_rows FROM screen"),
             {})
        || !nextRow(query, 0, QStringLiteral("the table screen is empty"))
        || !readRect(query, 0, 0, m_layout.screen) || !readInts(query, 0, 4, 4, sizes))
        return false;
    m_layout.grid = baseCommon::NQSize(sizes[0], sizes[1]);
    m_layout.band = baseCommon::NQSize(sizes[2], sizes[3]);

    if (!run(query,
             QStringLiteral("SELECT number, first_col, first_row, last_col, last_row"
                            " FROM partitions ORDER BY number"),
             {}))
        return false;
    while (query.next()) {
        int number = 0;
        NQRect rect;
        if (!readInts(query, 0, 0, 1, &number) || !readRect(query, number, 1, rect))
            return false;
        m_layout.partitions[number] = rect;
    }
    return !query.lastError().isValid() || fail(0, query.lastError());
}

bool SqlScreenStore::listZones(std::vector<StoredZone> &zones)
{
    return readZoneList(
        QStringLiteral("SELECT number, first_col, first_row, last_col, last_row,"
                       " (typeof(data) = 'blob') * length(data) FROM coefficients ORDER BY number"),
        {}, bytesPerSinglePixel, zones);
}

bool SqlScreenStore::listLayeredZones(int layerCount, std::vector<StoredZone> &zones)
{
    if (!readZoneList(
            QStringLiteral("SELECT number, first_col, first_row, last_col, last_row,"
                           " (typeof(data) = 'blob') * length(data) FROM layered_coefficients"
                           " WHERE layers = ? ORDER BY number"),
            {layerCount}, bytesPerLayeredPixel(layerCount), zones))
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
    QSqlQuery query(m_database);
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

bool SqlScreenStore::readNumbers(const QString &sql, std::vector<int> &numbers)
{
    QSqlQuery query(m_database);
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
    StoredZone stored{number, NQRect()};
    QByteArray bytes;
    if (!readZone(QStringLiteral("SELECT first_col, first_row, last_col, last_row, data"
                                 " FROM coefficients WHERE number = ?"),
                  {number}, bytesPerSinglePixel, stored, bytes))
        return 1;
    placeZone(stored, zone);
    const std::size_t count = static_cast<std::size_t>(bytes.size()) / sizeof(unsigned short);
    zone.m_arrayData.resize(count);
    qFromLittleEndian<unsigned short>(bytes.constData(), static_cast<qsizetype>(count),
                                      zone.m_arrayData.data());
    return 0;
}

int SqlScreenStore::readMultiLayerAreaCoefficients(const unsigned int &layerSize,
                                                   const unsigned int &number,
                                                   MultiLayerCoefZoneInfo &zone)
{
    const qint64 rowBytes = bytesPerLayeredPixel(layerSize);
    StoredZone stored{static_cast<int>(number), NQRect()};
    QByteArray bytes;
    if (!readZone(QStringLiteral("SELECT first_col, first_row, last_col, last_row, data"
                                 " FROM layered_coefficients WHERE number = ? AND layers = ?"),
                  {number, layerSize}, rowBytes, stored, bytes))
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

bool SqlScreenStore::readZone(const QString &sql, const QVariantList &values, qint64 bytesPerPixel,
                              StoredZone &zone, QByteArray &bytes)
{
    QSqlQuery query(m_database);
    if (!run(query, sql, values, zone.number)
        || !nextRow(query, zone.number,
                    QStringLiteral("it has no stored coefficients of this kind"))
        || !readRect(query, zone.number, 0, zone.rect))
        return false;
    bytes = query.value(4).toByteArray();
    return checkSize(zone.number, zone.rect, bytesPerPixel, bytes.size());
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

bool SqlScreenStore::run(QSqlQuery &query, const QString &sql, const QVariantList &values,
                         int number)
{
    query.setForwardOnly(true);
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
    return fail(number, error.databaseText().isEmpty() ? error.text() : error.databaseText());
}

} // namespace seamrevise
