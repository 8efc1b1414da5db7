#pragma once

#include <seamrevision/multilayerpartitionmerge.h>
#include <seamrevision/partitionmerge.h>

namespace seamrevise
{

/// Sees the zones of a revision, which belong to the engine. It must not throw.
template <typename Zone>
class ZoneWatch
{
public:
    virtual ~ZoneWatch() = default;

    /// All seams are revised and nothing is saved yet. The values are as files will hold them,
    /// without any cap. Returns whether to save them; if not, the revision ends with success and
    /// without a table.
    virtual bool zonesRevised(const QMap<int, Zone *> &zones) = 0;
    /// Saving has ended. The zones that zonesRevised() saw are still as they were.
    virtual void savingEnded(bool isSaved) = 0;
};

/// The single-layer engine with a watch on its zones.
class WatchedSingleLayer : public PartitionMerge
{
public:
    void setWatch(ZoneWatch<CoefsZoneInfo> *watch) { m_watch = watch; }

protected:
    enum_ErrCodeType saveRevisedCoef(const QMap<int, CoefsZoneInfo *> &coefs,
                                     QMap<QString, AreaInfoBase *> areas, QString path,
                                     enum_ScreenType screenType, ST_ReviseResult &result) override;

private:
    ZoneWatch<CoefsZoneInfo> *m_watch = nullptr;
};

/// The layered engine with a watch on its zones.
///
/// Its steps are not virtual, so the order in which they run is repeated here. Files, table,
/// packed bytes and dumps are those of the library's own order.
class WatchedLayered : public MultiLayerPartitionMerge
{
public:
    WatchedLayered()
        : MultiLayerPartitionMerge({})
    {
    }
    void setWatch(ZoneWatch<MultiLayerCoefZoneInfo> *watch) { m_watch = watch; }

    ST_ReviseResult boundaryModifying(QString coefPath, enum_ScreenType screenType,
                                      QMap<QString, AreaInfoBase *> areas,
                                      baseCommon::NQSize partitionGrid, NQRect screenRect,
                                      baseCommon::NQSize zoneSize, int edgeMargin) override;

private:
    class Revision;

    ZoneWatch<MultiLayerCoefZoneInfo> *m_watch = nullptr;
};

} // namespace seamrevise
