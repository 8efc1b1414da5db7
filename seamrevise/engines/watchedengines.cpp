#include "engines/watchedengines.h"

#include "engines/layereddumps.h"
#include "engines/neutrallayer.h"
#include "store/screenlayout.h"

#include <seamrevision/screendatabasemanager.h>

#include <algorithm>
#include <map>
#include <memory>
#include <set>

namespace seamrevise
{

namespace
{

/// Saves, if the watch does not mind. It is told of the end also when something is thrown.
template <typename Zone, typename Save>
enum_ErrCodeType watchedSaving(ZoneWatch<Zone> *watch, const QMap<int, Zone *> &zones, Save save)
{
    if (!watch)
        return save();
    if (!watch->zonesRevised(zones))
        return ErrCode_Success;
    struct End
    {
        ~End() { watch->savingEnded(isSaved); }
        ZoneWatch<Zone> *const watch;
        bool isSaved;
    } end{watch, false};
    const enum_ErrCodeType code = save();
    end.isSaved = code == ErrCode_Success;
    return code;
}

} // namespace

enum_ErrCodeType WatchedSingleLayer::saveRevisedCoef(const QMap<int, CoefsZoneInfo *> &coefs,
                                                     QMap<QString, AreaInfoBase *> areas,
                                                     QString path, enum_ScreenType screenType,
                                                     ST_ReviseResult &result)
{
    return watchedSaving(m_watch, coefs, [&] {
        return PartitionMerge::saveRevisedCoef(coefs, areas, path, screenType, result);
    });
}

/// One call of boundaryModifying: the steps in their order, each with the code that ends it.
class WatchedLayered::Revision
{
public:
    Revision(WatchedLayered &engine, const QString &dir, enum_ScreenType screenType,
             const QMap<QString, AreaInfoBase *> &areas, const baseCommon::NQSize &grid,
             ST_ReviseResult &result)
        : m_engine(engine)
        , m_dir(dir)
        , m_screenType(screenType)
        , m_areas(areas)
        , m_grid(grid)
        , m_result(result)
    {
    }

    enum_ErrCodeType run(const baseCommon::NQSize &band)
    {
        enum_ErrCodeType code = prepare(band);
        if (code == ErrCode_Success && m_screenType == ScreenType_PartitionFile)
            code = saveNeutralFiles();
        if (code == ErrCode_Success)
            code = load();
        if (code == ErrCode_Success)
            code = reviseSeams();
        return code == ErrCode_Success ? save() : code;
    }

    /// The partition at which a step ended; empty if there is none.
    const QString &place() const { return m_place; }

private:
    enum_ErrCodeType prepare(const baseCommon::NQSize &band);
    enum_ErrCodeType saveNeutralFiles();
    enum_ErrCodeType load();
    enum_ErrCodeType reviseSeams();
    enum_ErrCodeType save();

    static bool isCorrected(const AreaInfoBase &area)
    {
        return area.getCorrectAreaStateType() == SubAreaState_Corrected;
    }
    enum_ErrCodeType endAt(const QString &place, enum_ErrCodeType code)
    {
        m_place = place;
        return code;
    }

    WatchedLayered &m_engine;
    const QString &m_dir;
    const enum_ScreenType m_screenType;
    const QMap<QString, AreaInfoBase *> &m_areas;
    const baseCommon::NQSize m_grid;
    ST_ReviseResult &m_result;
    QString m_place;
    std::map<int, std::unique_ptr<MultiLayerCoefZoneInfo>> m_owned;
    QMap<int, MultiLayerCoefZoneInfo *> m_zones;
};

ST_ReviseResult WatchedLayered::boundaryModifying(QString coefPath, enum_ScreenType screenType,
                                                  QMap<QString, AreaInfoBase *> areas,
                                                  baseCommon::NQSize partitionGrid,
                                                  NQRect screenRect, baseCommon::NQSize zoneSize,
                                                  int edgeMargin)
{
    m_screenRect = screenRect;
    m_edgeMargin = edgeMargin;
    m_areas = areas;
    ST_ReviseResult result;
    result.rect = screenRect;
    QString place;
    {
        // The zones go before the result is handed on: they need not exist at once.
        Revision revision(*this, coefPath, screenType, areas, partitionGrid, result);
        result.errCode = revision.run(zoneSize);
        place = revision.place();
    }
    if (result.errCode != ErrCode_Success)
        return sendResult(result.errCode, place, result);
    result.isSuccess = 1;
    return result;
}

enum_ErrCodeType WatchedLayered::Revision::prepare(const baseCommon::NQSize &band)
{
    std::vector<int> numbers;
    if (m_engine.m_pScreenDBManager->ReadMultiLayerAllCorrectedAreaIDs(numbers) != 0)
        return ErrCode_ReadScreenDbFailed;
    if (numbers.empty() || m_result.rect.area() == 0)
        return ErrCode_CorrectedAreaEmpty;
    const std::set<int> corrected(numbers.begin(), numbers.end());
    for (AreaInfoBase *const area : m_areas) {
        const int number = area->getAreaIndex() + 1;
        area->setCorrectAreaStateType(corrected.count(number) != 0 ? SubAreaState_Corrected
                                                                   : SubAreaState_NotCorrected);
        m_owned[number].reset(m_engine.getScreenCoefEx(*area, band.width(), band.height()));
        if (!m_owned[number])
            return endAt(area->getAreaNum(), ErrCode_Failed);
        m_zones.insert(number, m_owned[number].get());
    }
    return ErrCode_Success;
}

enum_ErrCodeType WatchedLayered::Revision::saveNeutralFiles()
{
    MultiLayerCoefZoneInfo neutral;
    for (AreaInfoBase *const area : m_areas) {
        if (isCorrected(*area))
            continue;
        int width = 0;
        int height = 0;
        m_engine.AreaInfoToCoefZoneInfo(&neutral, area, width, height);
        const auto pixels = static_cast<std::size_t>(qint64{width} * height);
        neutral.m_multiLayerCoefs.assign(pixels, neutralRow(m_engine.m_layerSize));
        neutral.m_zipCoefs = neutralPacked(pixels, m_engine.m_layerSize);
        if (!m_engine.saveCombineAreaCoef(m_dir, &neutral))
            return endAt(area->getAreaNum(), ErrCode_SaveCombineCoefFailed);
    }
    return ErrCode_Success;
}

enum_ErrCodeType WatchedLayered::Revision::load()
{
    MultiLayerCoefZoneInfo stored;
    for (AreaInfoBase *const area : m_areas) {
        if (!isCorrected(*area))
            continue;
        if (!m_engine.readCofficients(&stored, area))
            return endAt(area->getAreaNum(), ErrCode_ReadAreaCoefFailed);
        dumpStored(stored, *area, m_engine.m_layerSize);
        if (!m_engine.subInfoCoefToAreaCoef(&stored, m_zones.value(area->getAreaIndex() + 1)))
            return endAt(area->getAreaNum(), ErrCode_Failed);
    }
    return ErrCode_Success;
}

enum_ErrCodeType WatchedLayered::Revision::reviseSeams()
{
    for (const SeamPair &seam : seamsInEngineOrder(m_grid)) {
        const auto code
            = m_engine.startRevise(seam.direction, seam.current, seam.next, m_areas, m_zones);
        if (code != ErrCode_Success)
            return endAt(QString::number(seam.current), code);
    }
    return ErrCode_Success;
}

enum_ErrCodeType WatchedLayered::Revision::save()
{
    return watchedSaving(m_engine.m_watch, m_zones, [&] {
        m_result.multiLayerCoefData.assign(
            static_cast<std::size_t>(m_result.rect.area()),
            std::vector<int>(neutralRow(m_engine.m_layerSize).size()));
        return m_engine.saveRevisedCoef(m_zones, m_areas, m_dir, m_screenType, m_result);
    });
}

} // namespace seamrevise
