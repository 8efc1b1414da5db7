#pragma once

#include "store/screenlayout.h"
#include <seamrevision/partitionmerge.h>

#include <QString>
#include <QStringList>

#include <memory>
#include <set>
#include <vector>

namespace seamrevise
{

class SqlScreenStore;

/// One kind of coefficients with the engine that revises it: all that differs for this program
/// between single-layer and layered walls.
///
/// A pixel is an index: row by row in the zone that was read last, in the partition whose files
/// were read last, or in the screen of the result.
class CoefKind
{
public:
    virtual ~CoefKind();

    /// Lists the store's zones of this kind; what fails is in the store's errorText().
    virtual bool listZones(SqlScreenStore &store, std::vector<StoredZone> &zones) const = 0;

    /// Reads a zone of the store, in place of the one read before.
    virtual bool readZone(SqlScreenStore &store, int number) = 0;
    /// The relative white luminance that the zone's coefficients give a pixel; 1 is gain 1.
    virtual double zoneLuminance(std::size_t pixel) const = 0;
    virtual void releaseZone() = 0;

    virtual PartitionMerge &engine() = 0;
    /// The result of the engine's latest revision. Its arrays may be changed.
    ST_ReviseResult &result() { return m_result; }
    virtual double resultLuminance(std::size_t pixel) const = 0;

    /// The coefficient files of a partition.
    struct FileKind
    {
        QString suffix; ///< what follows the partition's number in the name
        qint64 bytesPerPixel;
    };
    virtual std::vector<FileKind> fileKinds() const = 0;

    /// Reads a partition's files back, in place of those read before.
    virtual bool readFiles(const QString &dir, const QString &key, qint64 pixelCount) = 0;
    /// Whether a pixel of the files, cut at the cap, is that of the result.
    virtual bool isResult(std::size_t filePixel, std::size_t screenPixel) const = 0;
    /// Whether a pixel of the files changes nothing: what uncorrected partitions have.
    virtual bool isNeutral(std::size_t filePixel) const = 0;

    /// Names of the text dumps of a corrected partition, its number as %1, and of the screen.
    virtual QStringList partitionDumps(bool withFiles) const = 0;
    virtual QStringList screenDumps() const = 0;

    /// Writes the result's tables into a directory and compares them. The names of the files are
    /// added; empty, or what went wrong.
    virtual QString writeTables(const QString &dir, QStringList &names) const = 0;

    /// Fills the pixels of an uncorrected partition of the result, whose screen it is part of, if
    /// the engine leaves them empty. Says what with; empty if there is nothing to do.
    virtual QString fillNeutral(const NQRect &partition);

protected:
    ST_ReviseResult m_result;
};

/// Nine values a pixel.
std::unique_ptr<CoefKind> singleLayerKind();

/// 3 * layerCount values a pixel. In each group of three, a layer, the values are those of red,
/// green and blue.
std::unique_ptr<CoefKind> layeredKind(int layerCount);

/// The index of a pixel in a rectangle's row by row order.
inline std::size_t pixelIndex(const NQRect &rect, int row, int col)
{
    return static_cast<std::size_t>((qint64{row} - rect.top()) * columnsOf(rect) + col
                                    - rect.left());
}

} // namespace seamrevise
