#include "engines/coefkind.h"
#include "engines/kindrun.h"
#include "exchange/npywriter.h"

#include <algorithm>

namespace seamrevise
{

namespace
{

using Values = std::vector<unsigned short>;

constexpr std::size_t valueCount = 9;
constexpr unsigned short identity[valueCount] = {2048, 0, 0, 0, 2048, 0, 0, 0, 2048};

class SingleLayerKind : public CoefKind
{
public:
    void run(const EngineRequest &request) override
    {
        m_run = std::make_unique<KindRun<MatrixValues>>(request, MatrixValues());
        m_result = m_run->run(m_engine, makeAreas(request.layout));
    }
    const WallMeasurements &measured() const override { return m_run->measured(); }
    const EngineTimes &times() const override { return m_run->times(); }
    int layerCount() const override { return 0; }
    int cap() const override { return MatrixValues::cap; }

    std::vector<FileKind> fileKinds() const override { return {{QString(), 2 * valueCount}}; }

    bool readFiles(const QString &dir, const QString &key, qint64) override
    {
        return m_engine.readCoef(dir, key, m_fileValues);
    }
    bool isResult(std::size_t filePixel, std::size_t screenPixel) const override
    {
        const unsigned short *const file = m_fileValues.data() + filePixel * valueCount;
        return std::equal(file, file + valueCount,
                          m_result.coefData.data() + screenPixel * valueCount,
                          [](int value, int expected) {
                              return std::min<int>(value, MatrixValues::cap) == expected;
                          });
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
    WatchedSingleLayer m_engine;
    std::unique_ptr<KindRun<MatrixValues>> m_run;
    Values m_fileValues;
};

} // namespace

std::unique_ptr<CoefKind> singleLayerKind()
{
    return std::make_unique<SingleLayerKind>();
}

} // namespace seamrevise
