#pragma once

#include "engines/enginerun.h"
#include "exchange/blockfile.h"
#include "exchange/dumpcheck.h"

#include <seamrevision/areainfobase.h>
#include <seamrevision/reviseresult.h>

#include <QMap>
#include <QString>
#include <QStringList>

#include <map>
#include <memory>
#include <vector>

namespace seamrevise
{

/// A text dump and what it must hold.
struct DumpFile
{
    QString name;
    DumpShape shape;
};

/// A file of a table and its bytes.
struct TableFile
{
    QString name;
    BlockSource bytes;
};

/// What the shapes of a run's dumps depend on.
struct DumpPlan
{
    const ScreenLayout &layout;
    baseCommon::NQSize band;
    const std::map<int, NQRect> &storedZones; ///< of the corrected partitions
    bool withFiles = false;                   ///< files are written, not a table
};

/// One kind of coefficients with the engine that revises it: all that differs for this program
/// between single-layer and layered walls.
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
    /// The SHA-256 of what is stored for each corrected partition, if the request asked for it;
    /// waits for those that are not done yet.
    virtual std::map<int, QByteArray> storedHashes() = 0;

    virtual int layerCount() const = 0; ///< 0: single layer
    /// The largest value that the result's table holds; files hold larger ones.
    virtual int cap() const = 0;

    /// The text dumps of the latest run.
    std::vector<DumpFile> dumps(const DumpPlan &plan) const;

    /// The files of the result's tables, the largest first. Valid until the result changes.
    virtual std::vector<TableFile> tables() const = 0;

    /// Fills the pixels of an uncorrected partition of the result, whose screen it is part of, if
    /// the engine leaves them empty. Says what with; empty if there is nothing to do.
    virtual QString fillNeutral(const NQRect &partition);

protected:
    /// What a dump of the screen or of each corrected partition covers.
    enum class Dumped
    {
        StoredZone,
        OwnPixels,
        Zone, ///< the partition grown by the band
        PackedBytes,
        Screen
    };
    struct DumpKind
    {
        QString name; ///< with the partition's number as %1
        Dumped what;
    };
    virtual std::vector<DumpKind> dumpKinds() const = 0;

    /// New records of a layout's partitions; those before are gone.
    QMap<QString, AreaInfoBase *> makeAreas(const ScreenLayout &layout);

    ST_ReviseResult m_result;

private:
    DumpShape dumpShape(Dumped what, const NQRect &stored, const NQRect &own,
                        const DumpPlan &plan) const;

    std::vector<AreaInfoBase> m_areas; ///< the engine keeps pointers to them
};

/// Nine values a pixel.
std::unique_ptr<CoefKind> singleLayerKind();

/// 3 * layerCount values a pixel. In each group of three, a layer, the values are those of red,
/// green and blue.
std::unique_ptr<CoefKind> layeredKind(int layerCount);

} // namespace seamrevise
