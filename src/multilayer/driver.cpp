#include "seamrevision/multilayerpartitionmerge.h"

#include "coeffiles/textdump.h"
#include "multilayer/coefs.h"
#include "multilayer/packing.h"
#include "records/pixelmath.h"
#include "records/trace.h"
#include "revision/driver.h"
#include "revision/exacttype.h"
#include "revision/pixelwindow.h"
#include "revision/screentable.h"
#include "seamrevision/localconfig.h"
#include "seamrevision/screendatabasemanager.h"

#include <algorithm>
#include <memory>
#include <new>

using namespace seamrevision;

namespace
{

/// Bytes that one layer of a pixel takes in the packed form of an uncorrected partition.
constexpr unsigned int neutralPackedWidth = 4;

/// The coefficients that uncorrected partitions would have in a whole-screen table, kept beside
/// the result, which has zeros there. An agreed part of a revision; nothing reads it yet.
class NeutralScreen
{
public:
    NeutralScreen(const NQRect &rect, std::size_t valuesPerPixel)
        : m_screen(rect)
        , m_valuesPerPixel(valuesPerPixel)
        , m_values(static_cast<std::size_t>(rect.area()) * valuesPerPixel, 0)
        , m_packed(m_values.size() / 3 * neutralPackedWidth, 0)
    {
    }

    void fill(const ZoneBaseInfo &zone, qint64 width, qint64 height)
    {
        m_screen.forEachRun(zone.getBegPixRow(), zone.getBegPixCol(), width, height,
                            [this](std::size_t firstPixel, std::size_t pixelCount) {
                                std::fill_n(m_values.data() + firstPixel * m_valuesPerPixel,
                                            pixelCount * m_valuesPerPixel, neutralCoef);
                            });
    }

private:
    const ScreenTable m_screen;
    const std::size_t m_valuesPerPixel;
    std::vector<int> m_values;
    std::vector<unsigned char> m_packed;
};

/// The rows of a partition's own pixels, one after the other; behind those that the stored zone
/// has, rows for the pixels that it lacks.
CoefTable cutOut(const MultiLayerCoefZoneInfo &stored, const AreaInfoBase &area,
                 const std::vector<int> &missing)
{
    CoefTable own(areaPixelCount(area), missing);
    const PixelWindow window = windowInside(stored, area);
    auto target = own.begin();
    for (qint64 row = 0; row < window.rowCount; ++row) {
        for (qint64 col = 0; col < window.colCount; ++col, ++target) {
            const quint64 pixel = window.rowStart(row) + static_cast<quint64>(col);
            if (pixel < stored.m_multiLayerCoefs.size())
                *target = stored.m_multiLayerCoefs[pixel];
        }
    }
    return own;
}

} // namespace

/// One call of boundaryModifying.
class MultiLayerPartitionMerge::Revision : public RevisionSteps<MultiLayerCoefZoneInfo>
{
public:
    Revision(MultiLayerPartitionMerge &engine, const Trace &trace, const RevisionRequest &request,
             ST_ReviseResult &result)
        : RevisionSteps(trace, request, result)
        , m_engine(engine)
    {
    }

private:
    StepOutcome listCorrected() override;
    StepOutcome prepareZones() override;
    StepOutcome resetUncorrected() override;
    StepOutcome resetInFile(const QString &key, MultiLayerCoefZoneInfo &fillZone, qint64 width,
                            qint64 height);
    StepOutcome loadCorrected() override;
    StepOutcome loadOne(MultiLayerCoefZoneInfo &scratch, const QString &key, AreaInfoBase &area);
    void dumpStored(const MultiLayerCoefZoneInfo &stored, const QString &key,
                    const AreaInfoBase &area);
    StepOutcome reviseSeams() override;
    StepOutcome saveZones() override;

    MultiLayerPartitionMerge &m_engine;
};

ST_ReviseResult MultiLayerPartitionMerge::boundaryModifying(
    QString coefPath, enum_ScreenType screenType, QMap<QString, AreaInfoBase *> areas,
    baseCommon::NQSize partitionGrid, NQRect screenRect, baseCommon::NQSize zoneSize,
    int edgeMargin)
{
    const Trace trace(QStringLiteral("MultiLayerPartitionMerge::boundaryModifying"));
    m_screenRect = screenRect;
    m_edgeMargin = edgeMargin;
    m_areas = areas;
    const RevisionRequest request{coefPath, screenType, areas, partitionGrid, screenRect, zoneSize};
    return runRevision<Revision>(
        *this, trace, {268, 272}, request,
        [this](enum_ErrCodeType code, const QString &text, ST_ReviseResult &result) {
            return sendResult(code, text, result);
        });
}

StepOutcome MultiLayerPartitionMerge::Revision::listCorrected()
{
    if (!m_engine.m_pScreenDBManager) {
        m_trace.critical(43, "The pScreenDBManager is nullptr!");
        return {ErrCode_Failed, QString()};
    }
    std::vector<int> corrected;
    if (m_engine.m_pScreenDBManager->ReadMultiLayerAllCorrectedAreaIDs(corrected) != 0) {
        m_trace.debug(52, "Read screen database failed!");
        return {ErrCode_ReadScreenDbFailed, QString()};
    }
    if (corrected.empty() || m_result.rect.area() == 0) {
        m_trace.debug(57, "Corrected partition is empty!");
        return {ErrCode_CorrectedAreaEmpty, QString()};
    }
    for (const int number : corrected)
        m_correctedNumbers.insert(number);
    return {};
}

StepOutcome MultiLayerPartitionMerge::Revision::prepareZones()
{
    const PreparationTags tags{64, 74, 89};
    const baseCommon::NQSize band = m_request.zoneSize;
    return prepareEachPartition(
        m_trace, tags, m_request.areas, m_correctedNumbers, m_zones, [&](const AreaInfoBase &area) {
            return m_engine.getScreenCoefEx(area, band.width(), band.height());
        });
}

StepOutcome MultiLayerPartitionMerge::Revision::resetUncorrected()
{
    NeutralScreen neutralScreen(m_result.rect, m_engine.valuesPerPixel());
    const std::unique_ptr<MultiLayerCoefZoneInfo> fillZone(new (std::nothrow)
                                                               MultiLayerCoefZoneInfo());
    if (!fillZone) {
        m_trace.critical(101, "The pCoefsZoneInfo is nullptr!");
        return {ErrCode_Failed, QString()};
    }
    const auto reset = [&](const QString &key, AreaInfoBase &area) {
        int width = 0;
        int height = 0;
        fillZone->setAreaID(key);
        m_engine.AreaInfoToCoefZoneInfo(fillZone.get(), &area, width, height);
        width = std::max(0, width);
        height = std::max(0, height);
        if (m_request.screenType == ScreenType_PartitionFile)
            return resetInFile(key, *fillZone, width, height);
        neutralScreen.fill(*fillZone, width, height);
        return StepOutcome();
    };
    const StepOutcome outcome = forEachUncorrected(m_trace, {116, 74}, m_request, reset);
    if (!outcome.failed())
        logPlain("Start revise!");
    return outcome;
}

StepOutcome MultiLayerPartitionMerge::Revision::resetInFile(const QString &key,
                                                            MultiLayerCoefZoneInfo &fillZone,
                                                            qint64 width, qint64 height)
{
    fillZone.m_multiLayerCoefs.assign(static_cast<std::size_t>(width * height),
                                      std::vector<int>(m_engine.valuesPerPixel(), neutralCoef));
    packCoefs(ledZoneInfo(fillZone), fillZone.m_multiLayerCoefs, neutralPackedWidth,
              m_engine.m_layerSize, fillZone.m_zipCoefs);
    if (m_engine.saveCombineAreaCoef(m_request.coefPath, &fillZone))
        return {};
    m_trace.debug(139, "Save combine area coefficient failed!");
    return {ErrCode_SaveCombineCoefFailed, key};
}

StepOutcome MultiLayerPartitionMerge::Revision::loadCorrected()
{
    const auto scratch = std::make_unique<MultiLayerCoefZoneInfo>();
    return forEachCorrected(m_request, [&](const QString &key, AreaInfoBase &area) {
        return loadOne(*scratch, key, area);
    });
}

StepOutcome MultiLayerPartitionMerge::Revision::loadOne(MultiLayerCoefZoneInfo &scratch,
                                                        const QString &key, AreaInfoBase &area)
{
    if (!m_engine.readCofficients(&scratch, &area)) {
        logPlain("Read current area cofficient failed!");
        return {ErrCode_ReadAreaCoefFailed, key};
    }
    dumpStored(scratch, key, area);
    if (!m_engine.subInfoCoefToAreaCoef(&scratch, m_zones.map().value(key.toInt()))) {
        m_trace.critical(219, "coefFromDB or coefsZoneInfos.value(key.toInt()) is nullptr");
        return {ErrCode_Failed, key};
    }
    return {};
}

void MultiLayerPartitionMerge::Revision::dumpStored(const MultiLayerCoefZoneInfo &stored,
                                                    const QString &key, const AreaInfoBase &area)
{
    passOverFailures([&] {
        outData(stored.m_multiLayerCoefs,
                QStringLiteral("areaEx_") + key + QStringLiteral("_before.txt"),
                QStringLiteral(","), QString());
    });
    if (!LocalConfig::getInstance().isExportData())
        return;
    passOverFailures([&] {
        const std::vector<int> missing(m_engine.valuesPerPixel(), 0);
        outData(cutOut(stored, area, missing),
                QStringLiteral("area_") + key + QStringLiteral("_before.txt"), QStringLiteral(","),
                QString());
    });
}

StepOutcome MultiLayerPartitionMerge::Revision::reviseSeams()
{
    return reviseEachSeam(m_request, [&](const Seam &seam) {
        return m_engine.startRevise(seam.direction, seam.current, seam.next, m_request.areas,
                                    m_zones.map());
    });
}

StepOutcome MultiLayerPartitionMerge::Revision::saveZones()
{
    // Rows of zones bring their memory with them where they are moved.
    const std::size_t valuesPerRow = isExactly(m_engine) ? 0 : m_engine.valuesPerPixel();
    m_result.multiLayerCoefData.assign(static_cast<std::size_t>(m_result.rect.area()),
                                       std::vector<int>(valuesPerRow, 0));
    return savingOutcome(m_engine.saveRevisedCoef(
        m_zones.map(), m_request.areas, m_request.coefPath, m_request.screenType, m_result));
}
