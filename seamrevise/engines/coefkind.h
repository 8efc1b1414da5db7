#pragma once

#include "engines/enginerun.h"

#include <seamrevision/areainfobase.h>
#include <seamrevision/reviseresult.h>

#include <QMap>
#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

namespace seamrevise
{

/// One kind of coefficients with the engine that revises it: all that differs for this program
/// between single-layer and layered walls.
///
/// A pixel is an index: row by row in the partition whose files were read last, or in the screen
/// of the result.
class CoefKind
{
public:
    virtual ~CoefKind();

    /// Runs the engine; what came of it is the result, and what was measured on the way.
    virtual void run(const EngineRequest &request) = 0;
    /// Of the latest run. Its arrays may be changed.
    ST_ReviseResult &result() { return m_result; }
    /// Of the latest run, from its onRevised on.
    virtual const WallMeasurements &measured() const = 0;
    virtual const EngineTimes &times() const = 0;

    virtual int layerCount() const = 0; ///< 0: single layer
    /// The largest value that the result's table holds; files hold larger ones.
    virtual int cap() const = 0;

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
    /// New records of a layout's partitions; those before are gone.
    QMap<QString, AreaInfoBase *> makeAreas(const ScreenLayout &layout);

    ST_ReviseResult m_result;

private:
    std::vector<AreaInfoBase> m_areas; ///< the engine keeps pointers to them
};

/// Nine values a pixel.
std::unique_ptr<CoefKind> singleLayerKind();

/// 3 * layerCount values a pixel. In each group of three, a layer, the values are those of red,
/// green and blue.
std::unique_ptr<CoefKind> layeredKind(int layerCount);

} // namespace seamrevise
