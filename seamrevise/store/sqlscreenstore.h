#pragma once

#include "store/screenlayout.h"
#include <seamrevision/screendatabasemanager.h>

#include <QByteArray>
#include <QSqlDatabase>
#include <QString>
#include <QVariant>

#include <vector>

class QSqlError;
class QSqlQuery;

namespace seamrevise
{

/// The largest zone that one database value holds, in bytes.
constexpr qint64 largestZoneBytes = 999'000'000;

/// A screen database in one SQLite file.
///
/// Tables, all rectangles as first and last screen column and row:
///     screen                one row: rectangle, grid, band
///     partitions            number, rectangle
///     coefficients          number, zone rectangle, nine 16-bit values a pixel
///     layered_coefficients  number, layer count, zone rectangle, 3 * layer count 32-bit values
///                           a pixel
/// Values are little-endian, pixels row by row. The schema's version is the file's user_version.
///
/// Every operation that fails leaves a message in errorText() that names the file and, where there
/// is one, the partition. One object is one file, used by one thread; a QCoreApplication must
/// exist.
class SqlScreenStore : public ScreenDataBaseManager
{
public:
    SqlScreenStore();
    ~SqlScreenStore() override; ///< what has not been committed is rolled back

    /// Opens a file read-only, checks its version and tables, and reads the layout as it is stored.
    bool open(const QString &path);

    /// Makes a new database in a file that does not exist yet; messages call it displayName. What
    /// is added is in it after commit(), which also closes it; without commit() the file may
    /// remain without content.
    bool create(const QString &path, const QString &displayName, const ScreenLayout &layout);
    bool add(const StoredZone &zone, const std::vector<unsigned short> &values);
    bool addLayered(const StoredZone &zone, int layerCount, const std::vector<qint32> &values);
    bool commit();

    const ScreenLayout &layout() const { return m_layout; }

    /// Lists the stored zones and checks that each has as many bytes as its rectangle needs,
    /// without reading them.
    bool listZones(std::vector<StoredZone> &zones);
    /// The same for layered zones of one layer count; a partition that is stored with other layer
    /// counts only is an error.
    bool listLayeredZones(int layerCount, std::vector<StoredZone> &zones);

    int ReadAllIDAreaCoefIDs(QMap<int, CoefsZoneInfo *> &zones) override; ///< empty zones
    int readAreaCoefficients(int number, CoefsZoneInfo &zone) override;
    int ReadMultiLayerAllCorrectedAreaIDs(std::vector<int> &numbers) override;
    int readMultiLayerAreaCoefficients(const unsigned int &layerSize, const unsigned int &number,
                                       MultiLayerCoefZoneInfo &zone) override;

    /// The latest failure; empty if there was none.
    const QString &errorText() const { return m_errorText; }

private:
    bool connect(const QString &path, const QString &options);
    bool checkSchema();
    bool checkFileSize(qint64 fileBytes);
    bool readLayout();
    bool readNumbers(const QString &sql, std::vector<int> &numbers);
    bool readZoneList(const QString &sql, const QVariantList &values, qint64 bytesPerPixel,
                      std::vector<StoredZone> &zones);
    bool readZone(const QString &sql, const QVariantList &values, qint64 bytesPerPixel,
                  StoredZone &zone, QByteArray &bytes);
    bool addZone(const QString &sql, const QVariantList &key, const StoredZone &zone,
                 const QByteArray &bytes);

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
    QSqlDatabase m_database;
    ScreenLayout m_layout;
};

} // namespace seamrevise
