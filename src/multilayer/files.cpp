#include "seamrevision/multilayerpartitionmerge.h"

#include "coeffiles/container.h"
#include "coeffiles/valuebytes.h"
#include "multilayer/coefs.h"
#include "records/pixelmath.h"
#include "records/trace.h"
#include "revision/withoutthrowing.h"

#include <QFile>

#include <algorithm>

using namespace seamrevision;

namespace
{

/// A table as it is in a file: each row cut or filled with zeros to valuesPerRow.
std::vector<unsigned char> tableBytes(const CoefTable &table, std::size_t valuesPerRow)
{
    std::vector<unsigned char> bytes(table.size() * valuesPerRow * sizeof(int), 0);
    unsigned char *target = bytes.data();
    for (const std::vector<int> &row : table) {
        writeLittleEndian(row.data(), std::min(row.size(), valuesPerRow), target);
        target += valuesPerRow * sizeof(int);
    }
    return bytes;
}

/// The numbers with which a reader reports its failures.
struct ReadingFileTags
{
    int unknownArea;
    int notExisting;
    int notOpened;
};

/// Reads and decrypts a partition's file; the partition must be known.
bool readPartitionFile(const Trace &trace, const ReadingFileTags &tags, const AreaInfoBase *area,
                       const QString &path, std::vector<unsigned char> &plaintext)
{
    if (!area) {
        trace.critical(tags.unknownArea, "Area's id is error!");
        return false;
    }
    if (!QFile::exists(path)) {
        trace.critical(tags.notExisting, "Coefs file not exists!");
        return false;
    }
    if (!readDecrypted(path, plaintext)) {
        trace.critical(tags.notOpened, "Coefs file open failed!");
        return false;
    }
    return true;
}

/// Whether a table can get so many rows of so many values without asking for memory.
bool haveRoomFor(const CoefTable &table, std::size_t pixelCount, std::size_t valuesPerRow)
{
    return table.size() >= pixelCount
        && std::all_of(table.begin(), table.begin() + static_cast<std::ptrdiff_t>(pixelCount),
                       [&](const auto &row) { return row.capacity() >= valuesPerRow; });
}

/// Replaces the first values of every row by those of a plaintext, which must be long enough.
void fillRows(CoefTable &rows, std::size_t valuesPerRow,
              const std::vector<unsigned char> &plaintext)
{
    const unsigned char *bytes = plaintext.data();
    for (std::vector<int> &row : rows) {
        row.resize(std::max(row.size(), valuesPerRow));
        readLittleEndian(bytes, valuesPerRow, row.data());
        bytes += valuesPerRow * sizeof(int);
    }
}

} // namespace

bool MultiLayerPartitionMerge::saveCombineAreaCoef(QString dir, MultiLayerCoefZoneInfo *zone)
{
    const Trace trace(QStringLiteral("MultiLayerPartitionMerge::saveCombineAreaCoef"));
    return withoutThrowing(trace, 804, [&] {
        trace.debug(786, "enter!");
        if (!zone)
            return false;
        if (!ensureDirectory(dir)) {
            trace.debug(792, "mkpath failed!");
            return false;
        }
        return saveCombineAreaOrgCoef(dir, zone) && saveCombineAreaZipCoef(dir, zone);
    });
}

bool MultiLayerPartitionMerge::saveCombineAreaOrgCoef(QString dir, MultiLayerCoefZoneInfo *zone)
{
    const Trace trace(QStringLiteral("MultiLayerPartitionMerge::saveCombineAreaOrgCoef"));
    return withoutThrowing(trace, 842, [&] {
        if (!zone)
            return false;
        const QString path = filePath(dir, zone->getAreaID(), tableSuffix);
        if (!writeEncrypted(path, tableBytes(zone->m_multiLayerCoefs, valuesPerPixel()))) {
            trace.debug(836, "Save encryptFile failed!");
            return false;
        }
        return true;
    });
}

bool MultiLayerPartitionMerge::saveCombineAreaZipCoef(QString dir, MultiLayerCoefZoneInfo *zone)
{
    const Trace trace(QStringLiteral("MultiLayerPartitionMerge::saveCombineAreaZipCoef"));
    return withoutThrowing(trace, 872, [&] {
        if (!zone)
            return false;
        const QString path = filePath(dir, zone->getAreaID(), packedSuffix);
        if (!writeEncrypted(path, zone->m_zipCoefs)) {
            trace.debug(866, "Save encryptFile failed!");
            return false;
        }
        return true;
    });
}

bool MultiLayerPartitionMerge::readCoef(QString dir, QString areaId, CoefTable &coefTable,
                                        std::vector<unsigned char> &zipBytes)
{
    const Trace trace(QStringLiteral("MultiLayerPartitionMerge::readCoef"));
    return withoutThrowing(trace, 890, [&] {
        trace.debug(880, "start!");
        return readOrgCoef(dir, areaId, coefTable) && readZipCoef(dir, areaId, zipBytes);
    });
}

bool MultiLayerPartitionMerge::readOrgCoef(QString dir, QString areaId, CoefTable &coefTable)
{
    const Trace trace(QStringLiteral("MultiLayerPartitionMerge::readOrgCoef"));
    return withoutThrowing(trace, 938, [&] {
        const AreaInfoBase *area = m_areas.value(areaId);
        std::vector<unsigned char> plaintext;
        if (!readPartitionFile(trace, {898, 908, 914}, area, filePath(dir, areaId, tableSuffix),
                               plaintext))
            return false;
        const std::size_t pixelBytes = valuesPerPixel() * sizeof(int);
        const std::size_t pixelCount = areaPixelCount(*area);
        if (pixelBytes > 0 && plaintext.size() / pixelBytes < pixelCount) {
            trace.critical(926, "Coefs file is too short!");
            return false;
        }
        if (haveRoomFor(coefTable, pixelCount, valuesPerPixel())) {
            coefTable.resize(pixelCount);
            fillRows(coefTable, valuesPerPixel(), plaintext);
            return true;
        }
        // Into a copy: running out of memory half-way must not touch the caller's table.
        CoefTable rows = coefTable;
        rows.resize(pixelCount);
        fillRows(rows, valuesPerPixel(), plaintext);
        coefTable.swap(rows);
        return true;
    });
}

bool MultiLayerPartitionMerge::readZipCoef(QString dir, QString areaId,
                                           std::vector<unsigned char> &zipBytes)
{
    const Trace trace(QStringLiteral("MultiLayerPartitionMerge::readZipCoef"));
    return withoutThrowing(trace, 968, [&] {
        const AreaInfoBase *area = m_areas.value(areaId);
        std::vector<unsigned char> plaintext;
        if (!readPartitionFile(trace, {948, 956, 962}, area, filePath(dir, areaId, packedSuffix),
                               plaintext))
            return false;
        // Its length is not known here: it depends on the packed width of the writer.
        if (plaintext.empty() && areaPixelCount(*area) > 0 && valuesPerPixel() > 0) {
            trace.critical(965, "Coefs file is too short!");
            return false;
        }
        zipBytes.swap(plaintext);
        return true;
    });
}
