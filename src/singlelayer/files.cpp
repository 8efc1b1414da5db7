#include "seamrevision/partitionmerge.h"

#include "coeffiles/container.h"
#include "coeffiles/valuebytes.h"
#include "records/pixelmath.h"
#include "records/trace.h"
#include "revision/withoutthrowing.h"
#include "singlelayer/coefs.h"

#include <QFile>

using namespace seamrevision;

bool PartitionMerge::saveCombineAreaCoef(QString dir, CoefsZoneInfo *zone)
{
    const Trace trace(QStringLiteral("PartitionMerge::saveCombineAreaCoef"));
    return withoutThrowing(trace, 405, [&] {
        trace.debug(382, "enter!");
        if (!zone)
            return false;
        if (!ensureDirectory(dir)) {
            trace.debug(387, "mkpath failed!");
            return false;
        }
        const QString path = filePath(dir, zone->getAreaID());
        if (!writeEncrypted(path, littleEndianBytes(zone->m_arrayData))) {
            trace.debug(398, "Save encryptFile failed!");
            return false;
        }
        trace.debug(402, "Save encryptFile end!");
        return true;
    });
}

bool PartitionMerge::readCoef(QString dir, QString areaId, std::vector<unsigned short> &coefArray)
{
    const Trace trace(QStringLiteral("PartitionMerge::readCoef"));
    return withoutThrowing(trace, 442, [&] {
        trace.debug(411, "start!");
        const QString path = filePath(dir, areaId);
        if (!QFile::exists(path)) {
            trace.critical(416, "Coefs file not exists!");
            return false;
        }
        const AreaInfoBase *area = m_areas.value(areaId);
        if (!area) {
            trace.critical(421, "Area's id is error!");
            return false;
        }
        std::vector<unsigned char> plaintext;
        if (!readDecrypted(path, plaintext)) {
            trace.critical(430, "Coefs file open failed!");
            return false;
        }
        const std::size_t pixelCount = areaPixelCount(*area);
        if (plaintext.size() / sizeof(unsigned short) / valuesPerPixel < pixelCount) {
            trace.critical(437, "Coefs file is too short!");
            return false;
        }
        coefArray.resize(pixelCount * valuesPerPixel);
        readLittleEndian(plaintext.data(), coefArray.size(), coefArray.data());
        return true;
    });
}
