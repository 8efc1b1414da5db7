#include "engines/coefkind.h"
#include "exchange/npywriter.h"
#include "numbers/borderstep.h"
#include "store/sqlscreenstore.h"

#include <seamrevision/coefszoneinfo.h>

#include <algorithm>

namespace seamrevise
{

namespace
{

using Values = std::vector<unsigned short>;

constexpr std::size_t valueCount = 9;
constexpr double unit = 2048.0;
/// The largest value in the result's table; files hold larger ones.
constexpr unsigned short cap = 2457;
constexpr unsigned short identity[valueCount] = {2048, 0, 0, 0, 2048, 0, 0, 0, 2048};

/// Rows of the matrix are what the primaries get for a white input.
double luminance(const Values &values, std::size_t pixel)
{
    const unsigned short *const matrix = values.data() + pixel * valueCount;
    double sum = 0.0;
    for (std::size_t row = 0; row < 3; ++row)
        sum += luminanceWeights[row]
            * (matrix[row * 3] + matrix[row * 3 + 1] + matrix[row * 3 + 2]);
    return sum / unit;
}

class SingleLayerKind : public CoefKind
{
public:
    bool listZones(SqlScreenStore &store, std::vector<StoredZone> &zones) const override
    {
        return store.listZones(zones);
    }

    bool readZone(SqlScreenStore &store, int number) override
    {
        return store.readAreaCoefficients(number, m_zone) == 0;
    }
    double zoneLuminance(std::size_t pixel) const override
    {
        return luminance(m_zone.m_arrayData, pixel);
    }
    void releaseZone() override { m_zone = CoefsZoneInfo(); }

    PartitionMerge &engine() override { return m_engine; }
    double resultLuminance(std::size_t pixel) const override
    {
        return luminance(m_result.coefData, pixel);
    }

    std::vector<FileKind> fileKinds() const override { return {{QString(), 2 * valueCount}}; }

    bool readFiles(const QString &dir, const QString &key, qint64) override
    {
        return m_engine.readCoef(dir, key, m_fileValues);
    }
    bool isResult(std::size_t filePixel, std::size_t screenPixel) const override
    {
        const unsigned short *const file = m_fileValues.data() + filePixel * valueCount;
        return std::equal(
            file, file + valueCount, m_result.coefData.data() + screenPixel * valueCount,
            [](int value, int expected) { return std::min<int>(value, cap) == expected; });
    }
    bool isNeutral(std::size_t filePixel) const override
    {
        return std::equal(identity, identity + valueCount,
                          m_fileValues.data() + filePixel * valueCount);
    }

    QStringList partitionDumps(bool) const override
    {
        return {QStringLiteral("normal_areaEx_%1_before.txt"),
                QStringLiteral("normal_area_%1_before.txt"),
                QStringLiteral("normal_areaEx_%1_after.txt")};
    }
    QStringList screenDumps() const override
    {
        return {QStringLiteral("分区融合后融合区域系数.txt"), QStringLiteral("分区融合后系数.txt")};
    }

    QString writeTables(const QString &dir, QStringList &names) const override
    {
        const NQRect &screen = m_result.rect;
        names.push_back(QStringLiteral("coefficients.npy"));
        return writeNpy(
            dir + QLatin1Char('/') + names.back(), "<u2",
            {rowsOf(screen), columnsOf(screen), qint64{valueCount}},
            [&](const BlockSink &sink) { return sendLittleEndian(m_result.coefData, sink); });
    }

private:
    PartitionMerge m_engine;
    CoefsZoneInfo m_zone;
    Values m_fileValues;
};

} // namespace

std::unique_ptr<CoefKind> singleLayerKind()
{
    return std::make_unique<SingleLayerKind>();
}

} // namespace seamrevise
