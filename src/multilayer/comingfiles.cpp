#include "multilayer/comingfiles.h"

#include "coeffiles/container.h"
#include "coeffiles/rowreader.h"
#include "coeffiles/valuebytes.h"
#include "multilayer/coefs.h"
#include "multilayer/packing.h"
#include "records/pixelmath.h"
#include "revision/pixelwindow.h"

#include <algorithm>
#include <utility>

namespace seamrevision
{

namespace
{

/// The pixels of a zone in a partition, as the rows of a file.
class OwnPixels
{
public:
    OwnPixels(const MultiLayerCoefZoneInfo &zone, const AreaInfoBase &area)
        : m_zone(zone)
        , m_window(windowInside(zone, area))
        , m_firstRow(zone.getBegPixRow() + m_window.firstRow - area.getAreaStartRow())
        , m_firstCol(zone.getBegPixCol() + m_window.firstCol - area.getAreaStartCol())
    {
    }

    bool isEmpty() const { return m_window.rowCount == 0; }

    bool haveRowsOf(std::size_t valuesPerPixel) const
    {
        for (qint64 row = 0; row < m_window.rowCount; ++row) {
            const quint64 first = m_window.rowStart(row);
            for (quint64 pixel = first; pixel < first + columns(); ++pixel) {
                if (pixel >= m_zone.m_multiLayerCoefs.size()
                    || m_zone.m_multiLayerCoefs[pixel].size() != valuesPerPixel)
                    return false;
            }
        }
        return true;
    }

    /// Makes a row of the partition whose pixels take pixelBytes each; write(values, bytes) makes
    /// one of them.
    template <typename Write>
    void makeRow(std::size_t areaRow, unsigned char *bytes, std::size_t rowBytes,
                 std::size_t pixelBytes, Write write) const
    {
        std::fill_n(bytes, rowBytes, 0);
        const qint64 row = static_cast<qint64>(areaRow) - m_firstRow;
        if (row < 0 || row >= m_window.rowCount)
            return;
        bytes += static_cast<std::size_t>(m_firstCol) * pixelBytes;
        const quint64 first = m_window.rowStart(row);
        for (quint64 pixel = first; pixel < first + columns(); ++pixel, bytes += pixelBytes)
            write(m_zone.m_multiLayerCoefs[pixel], bytes);
    }

private:
    quint64 columns() const { return static_cast<quint64>(m_window.colCount); }

    const MultiLayerCoefZoneInfo &m_zone;
    const PixelWindow m_window;
    const qint64 m_firstRow; ///< of the window in the partition
    const qint64 m_firstCol;
};

void writeValues(const std::vector<int> &values, unsigned char *bytes)
{
    writeLittleEndian(values.data(), values.size(), bytes);
}

void writeWords(const std::vector<int> &values, unsigned char *bytes)
{
    for (std::size_t first = 0; first < values.size(); first += valuesPerWord) {
        qToLittleEndian(packedWord(values.data() + first), bytes);
        bytes += sizeof(quint32);
    }
}

template <typename Write>
ComingFile comingFile(const QString &path, const OwnPixels &own, const AreaInfoBase &area,
                      std::size_t pixelBytes, Write write)
{
    const std::size_t rowBytes = static_cast<std::size_t>(areaWidth(area)) * pixelBytes;
    return {path, areaPixelCount(area) * pixelBytes,
            RowReader(rowBytes, [=](std::size_t row, unsigned char *bytes) {
                own.makeRow(row, bytes, rowBytes, pixelBytes, write);
            })};
}

} // namespace

std::vector<ComingFile> comingFiles(const QString &directory, const MultiLayerCoefZoneInfo &zone,
                                    const AreaInfoBase &area, std::size_t valuesPerPixel,
                                    unsigned int packedWidth)
{
    const OwnPixels own(zone, area);
    if (own.isEmpty() || packedWidth != sizeof(quint32) || !own.haveRowsOf(valuesPerPixel))
        return {};
    const QString id = area.getAreaNum();
    return {comingFile(filePath(directory, id, tableSuffix), own, area,
                       valuesPerPixel * sizeof(int), writeValues),
            comingFile(filePath(directory, id, packedSuffix), own, area,
                       valuesPerPixel / valuesPerWord * sizeof(quint32), writeWords)};
}

} // namespace seamrevision
