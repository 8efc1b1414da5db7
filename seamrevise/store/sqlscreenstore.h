#pragma once

#include "store/inventory.h"
#include <seamrevision/screendatabasemanager.h>

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <memory>
#include <vector>

class QSqlError;
class QSqlQuery;

namespace seamrevise
{

class Dialect;
enum class DatabaseAccess;

/// Who writes.
struct Writer
{
    QString station;    ///< remembered with every partition; empty: nothing is remembered
    bool force = false; ///< may overwrite what other stations wrote
};

/// user@host.
QString defaultStation();

/// When and by which station the coefficients of a partition were last put or removed.
struct PartitionRevision
{
    int number = 0;
    int layerCount = 0; ///< 0: of the single-layer coefficients
    int revision = 0;   ///< from 1, counts what was written
    QString written;    ///< in UTC, like 2024-05-17T08:30:00Z
    QString station;
};

/// The screen database of one wall: an SQLite file, or a wall in a PostgreSQL database under a URL
/// as databaseaddress.h describes it.
///
/// Tables, all rectangles as first and last screen column and row:
///     screen                one row: rectangle, grid, band
///     partitions            number, rectangle
///     coefficients          number, zone rectangle, nine 16-bit values a pixel
///     layered_coefficients  number, layer count, zone rectangle, 3 * layer count 32-bit values
///                           a pixel
///     revisions             number, layer count or 0 for single-layer coefficients, revision,
///                           time, station; not in version 1 of the schema
/// Values are little-endian, pixels row by row.
///
/// Every operation that fails leaves a message in errorText() that names the database and, where
/// there is one, the partition; it names no password. One object is one connection, used by one
/// thread; a QCoreApplication must exist.
///
/// All that is read between open() and the object's end is one state of the database. All that is
/// written between one of the other openings and commit() is one transaction: it is there whole
/// after commit(), and not at all if anything failed. Stations that write different partitions of
/// a PostgreSQL database do not wait for each other; an SQLite file has one writer at a time, and
/// the next one waits for it, but no longer than 30 seconds. Writers put partitions in ascending
/// order, so that two who write the same ones wait for each other in turn.
class SqlScreenStore : public ScreenDataBaseManager
{
public:
    SqlScreenStore();
    ~SqlScreenStore() override; ///< what has not been committed is rolled back
    SqlScreenStore(const SqlScreenStore &) = delete;
    SqlScreenStore &operator=(const SqlScreenStore &) = delete;

    /// Opens a wall for reading: checks version and tables, and reads the layout as it is stored.
    bool open(const QString &address);
    /// The same for writing; the wall must have the current schema.
    bool openForWriting(const QString &address, const Writer &writer);
    /// Makes a new wall without coefficients; with writer.force, also in place of an old one.
    bool create(const QString &address, const ScreenLayout &layout, const Writer &writer);
    /// Opens a wall for writing and gives it this layout, or makes it if it is not there.
    bool openOrCreate(const QString &address, const ScreenLayout &layout, const Writer &writer);

    /// Gives a wall of an older version the current schema, whole or not at all; schemaVersion()
    /// is the one that it had. One that is current stays as it is.
    bool upgrade(const QString &address);

    /// Stores the coefficients of a partition in place of those that were there.
    bool put(const StoredZone &zone, const std::vector<unsigned short> &values);
    bool putLayered(const StoredZone &zone, int layerCount, const std::vector<qint32> &values);
    /// Makes a partition uncorrected; a layer count of 0 stands for single-layer coefficients.
    bool remove(int number, int layerCount);
    /// Fails if anything failed since the wall was opened. Closes the database.
    bool commit();

    const ScreenLayout &layout() const { return m_layout; }
    int schemaVersion() const { return m_schemaVersion; }

    /// Lists what is stored, right or wrong; fails only where it cannot be read.
    bool readInventory(StoredInventory &inventory);
    /// Lists the stored zones and checks that each has as many bytes as its rectangle needs,
    /// without reading them.
    bool listZones(std::vector<StoredZone> &zones);
    /// The same for layered zones of one layer count; a partition that is stored with other layer
    /// counts only is an error.
    bool listLayeredZones(int layerCount, std::vector<StoredZone> &zones);
    /// Lists what is known of who wrote what, by number and layer count; nothing in version 1.
    bool listRevisions(std::vector<PartitionRevision> &revisions);

    int ReadAllIDAreaCoefIDs(QMap<int, CoefsZoneInfo *> &zones) override; ///< empty zones
    int readAreaCoefficients(int number, CoefsZoneInfo &zone) override;
    int ReadMultiLayerAllCorrectedAreaIDs(std::vector<int> &numbers) override;
    int readMultiLayerAreaCoefficients(const unsigned int &layerSize, const unsigned int &number,
                                       MultiLayerCoefZoneInfo &zone) override;

    /// The latest failure; empty if there was none.
    const QString &errorText() const { return m_errorText; }

private:
    bool connect(const QString &address, DatabaseAccess access);
    bool listTables(QStringList &present);
    bool checkSchema(const QStringList &present);
    bool checkIsCurrent();
    bool readLayout(const QString &locking = QString());
    bool readPartitions(std::vector<StoredZone> &partitions);
    bool readCoefficientRows(const QString &layersAndTable, StoredInventory &inventory);

    bool makeWall(const ScreenLayout &layout);
    bool writeScreen(const QString &sql, const ScreenLayout &layout);
    bool writePartitions(const ScreenLayout &layout);
    bool replaceLayout(const ScreenLayout &layout);
    bool removeMoved(const ScreenLayout &layout);
    bool emptyWall();
    bool claim(int number, int layerCount);
    bool refuse(int number, int layerCount);
    bool putZone(const QString &sql, const QVariantList &key, const StoredZone &zone,
                 const QByteArray &bytes);

    bool readNumbers(const QString &sql, std::vector<int> &numbers);
    bool readZoneList(const QString &sql, const QVariantList &values, qint64 bytesPerPixel,
                      std::vector<StoredZone> &zones);
    bool findZone(const QString &source, const QVariantList &keys, qint64 bytesPerPixel,
                  StoredZone &zone, qint64 &size);
    bool readBytes(const QString &source, const QVariantList &keys, int number, char *bytes,
                   qint64 size);

    bool run(const QString &sql);
    bool run(QSqlQuery &query, const QString &sql, const QVariantList &values, int number = 0);
    /// Moves to the only row that is expected; missing is the message if there is none.
    bool nextRow(QSqlQuery &query, int number, const QString &missing);
    bool readInts(const QSqlQuery &query, int number, int firstColumn, int count, int *values);
    bool readRect(const QSqlQuery &query, int number, int firstColumn, NQRect &rect);
    bool checkSize(int number, const NQRect &rect, qint64 bytesPerPixel, qint64 bytes);
    bool fail(int number, const QString &message);
    bool fail(int number, const QSqlError &error);

    const QString m_connectionName;
    QString m_displayName;
    QString m_errorText;
    std::unique_ptr<Dialect> m_dialect;
    Writer m_writer;
    int m_schemaVersion = 0;
    ScreenLayout m_layout;
};

} // namespace seamrevise
