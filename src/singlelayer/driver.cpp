#include "seamrevision/partitionmerge.h"

#include "coeffiles/textdump.h"
#include "records/pixelmath.h"
#include "records/trace.h"
#include "revision/driver.h"
#include "revision/pixelwindow.h"
#include "revision/screentable.h"
#include "seamrevision/localconfig.h"
#include "seamrevision/screendatabasemanager.h"
#include "singlelayer/coefs.h"

#include <algorithm>
#include <memory>
#include <new>

using namespace seamrevision;

/// One call of boundaryModifying.
class PartitionMerge::Revision : public RevisionSteps<CoefsZoneInfo>
{
public:
    Revision(PartitionMerge &engine, const Trace &trace, const RevisionRequest &request,
             ST_ReviseResult &result)
        : RevisionSteps(trace, request, result)
        , m_engine(engine)
    {
    }

private:
    StepOutcome listCorrected() override;
    StepOutcome prepareZones() override;
    StepOutcome resetUncorrected() override;
    StepOutcome resetInFile(const QString &key, CoefsZoneInfo &scratch, qint64 width,
                            qint64 height);
    void resetInTable(const CoefsZoneInfo &scratch, qint64 width, qint64 height);
    StepOutcome loadCorrected() override;
    StepOutcome loadOne(CoefsZoneInfo *scratch, const QString &key, AreaInfoBase &area);
    void dumpStored(const CoefsZoneInfo &stored, const QString &key, const AreaInfoBase &area);
    StepOutcome reviseSeams() override;
    StepOutcome saveZones() override;

    PartitionMerge &m_engine;
};

ST_ReviseResult PartitionMerge::boundaryModifying(QString coefPath, enum_ScreenType screenType,
                                                  QMap<QString, AreaInfoBase *> areas,
                                                  baseCommon::NQSize partitionGrid,
                                                  NQRect screenRect, baseCommon::NQSize zoneSize,
                                                  int edgeMargin)
{
    const Trace trace(QStringLiteral("PartitionMerge::boundaryModifying"));
    m_screenRect = screenRect;
    m_edgeMargin = edgeMargin;
    m_areas = areas;
    const RevisionRequest request{coefPath, screenType, areas, partitionGrid, screenRect, zoneSize};
    return runRevision<Revision>(
        *this, trace, {306, 310}, request,
        [this](enum_ErrCodeType code, const QString &text, ST_ReviseResult &result) {
            return sendResult(code, text, result);
        });
}

StepOutcome PartitionMerge::Revision::listCorrected()
{
    const auto pixelCount = static_cast<std::size_t>(m_result.rect.area());
    m_result.coefData.resize(valueCount(pixelCount));
    if (!m_engine.m_pScreenDBManager) {
        m_trace.critical(69, "The pScreenDBManager is nullptr!");
        return {ErrCode_Failed, QString()};
    }
    OwnedZones<CoefsZoneInfo> corrected;
    if (m_engine.m_pScreenDBManager->ReadAllIDAreaCoefIDs(corrected.map()) != 0) {
        m_trace.debug(77, "Read screen database failed!");
        return {ErrCode_ReadScreenDbFailed, QString()};
    }
    if (corrected.map().isEmpty() || pixelCount == 0) {
        m_trace.debug(82, "Corrected partition is empty!");
        return {ErrCode_CorrectedAreaEmpty, QString()};
    }
    for (auto entry = corrected.map().keyBegin(); entry != corrected.map().keyEnd(); ++entry)
        m_correctedNumbers.insert(*entry);
    return {};
}

StepOutcome PartitionMerge::Revision::prepareZones()
{
    const PreparationTags tags{89, 99, 113};
    const baseCommon::NQSize band = m_request.zoneSize;
    return prepareEachPartition(
        m_trace, tags, m_request.areas, m_correctedNumbers, m_zones, [&](const AreaInfoBase &area) {
            return m_engine.getScreenCoefEx(area, band.width(), band.height());
        });
}

StepOutcome PartitionMerge::Revision::resetUncorrected()
{
    const std::unique_ptr<CoefsZoneInfo> scratch(new (std::nothrow) CoefsZoneInfo());
    if (!scratch) {
        m_trace.critical(127, "The pCoefsZoneInfo is nullptr!");
        return {ErrCode_Failed, QString()};
    }
    const auto reset = [&](const QString &key, AreaInfoBase &area) {
        int width = 0;
        int height = 0;
        scratch->setAreaID(key);
        m_engine.AreaInfoToCoefZoneInfo(scratch.get(), &area, width, height);
        width = std::max(0, width);
        height = std::max(0, height);
        if (m_request.screenType == ScreenType_PartitionFile)
            return resetInFile(key, *scratch, width, height);
        resetInTable(*scratch, width, height);
        return StepOutcome();
    };
    const StepOutcome outcome = forEachUncorrected(m_trace, {141, 99}, m_request, reset);
    if (!outcome.failed())
        logPlain("Start revise!");
    return outcome;
}

StepOutcome PartitionMerge::Revision::resetInFile(const QString &key, CoefsZoneInfo &scratch,
                                                  qint64 width, qint64 height)
{
    scratch.m_arrayData = identityCoefs(static_cast<std::size_t>(width * height));
    if (m_engine.saveCombineAreaCoef(m_request.coefPath, &scratch))
        return {};
    m_trace.debug(164, "Save combine area coefficient failed!");
    return {ErrCode_SaveCombineCoefFailed, key};
}

void PartitionMerge::Revision::resetInTable(const CoefsZoneInfo &scratch, qint64 width,
                                            qint64 height)
{
    const auto setIdentity = [&](std::size_t firstPixel, std::size_t pixelCount) {
        setIdentityDiagonal(m_result.coefData.data() + firstPixel * valuesPerPixel, pixelCount);
    };
    ScreenTable(m_result.rect)
        .forEachRun(scratch.getBegPixRow(), scratch.getBegPixCol(), width, height, setIdentity);
}

StepOutcome PartitionMerge::Revision::loadCorrected()
{
    // Without memory for it the copy below finds no source and fails.
    const std::unique_ptr<CoefsZoneInfo> scratch(new (std::nothrow) CoefsZoneInfo());
    return forEachCorrected(m_request, [&](const QString &key, AreaInfoBase &area) {
        return loadOne(scratch.get(), key, area);
    });
}

StepOutcome PartitionMerge::Revision::loadOne(CoefsZoneInfo *scratch, const QString &key,
                                              AreaInfoBase &area)
{
    if (scratch) {
        if (!m_engine.readCofficients(scratch, &area)) {
            logPlain("Read current area cofficient failed!");
            return {ErrCode_ReadAreaCoefFailed, key};
        }
        dumpStored(*scratch, key, area);
    }
    if (!m_engine.subInfoCoefToAreaCoef(scratch, m_zones.map().value(key.toInt()))) {
        m_trace.critical(256, "coefFromDB or coefsZoneInfos.value(key.toInt()) is nullptr");
        return {ErrCode_Failed, key};
    }
    return {};
}

void PartitionMerge::Revision::dumpStored(const CoefsZoneInfo &stored, const QString &key,
                                          const AreaInfoBase &area)
{
    passOverFailures([&] {
        outData(stored.m_arrayData,
                QStringLiteral("normal_areaEx_") + key + QStringLiteral("_before.txt"),
                QStringLiteral(","), valuesPerPixel, QString());
    });
    if (!LocalConfig::getInstance().isExportData())
        return;
    passOverFailures([&] {
        std::vector<unsigned short> own = cutOut(stored.m_arrayData, windowInside(stored, area));
        own.resize(valueCount(areaPixelCount(area)));
        outData(own, QStringLiteral("normal_area_") + key + QStringLiteral("_before.txt"),
                QStringLiteral(","), valuesPerPixel, QString());
    });
}

StepOutcome PartitionMerge::Revision::reviseSeams()
{
    StepOutcome outcome = reviseEachSeam(m_request, [&](const Seam &seam) {
        return m_engine.startRevise(seam.direction, seam.current, seam.next, m_request.areas,
                                    m_zones.map());
    });
    if (outcome.failed())
        return outcome;
    passOverFailures([&] {
        outData(m_result.coefData, tr("分区融合后融合区域系数.txt"), QStringLiteral(","),
                valuesPerPixel, QString());
    });
    return {};
}

StepOutcome PartitionMerge::Revision::saveZones()
{
    return savingOutcome(m_engine.saveRevisedCoef(
        m_zones.map(), m_request.areas, m_request.coefPath, m_request.screenType, m_result));
}
