#include "engines/coefkind.h"
#include "engines/kindrun.h"
#include "exchange/npywriter.h"

namespace seamrevise
{

namespace
{

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
    std::map<int, QByteArray> storedHashes() override { return m_run->storedHashes(); }
    int layerCount() const override { return 0; }
    int cap() const override { return MatrixValues::cap; }

    std::vector<TableFile> tables() const override
    {
        const NQRect &screen = m_result.rect;
        return {
            {QStringLiteral("coefficients.npy"),
             npyBytes("<u2", {rowsOf(screen), columnsOf(screen), 9}, [this](const BlockSink &sink) {
                 return sendLittleEndian(m_result.coefData, sink);
             })}};
    }

private:
    std::vector<DumpKind> dumpKinds() const override
    {
        return {{QStringLiteral("normal_areaEx_%1_before.txt"), Dumped::StoredZone},
                {QStringLiteral("normal_area_%1_before.txt"), Dumped::OwnPixels},
                {QStringLiteral("normal_areaEx_%1_after.txt"), Dumped::Zone},
                {QStringLiteral("分区融合后融合区域系数.txt"), Dumped::Screen},
                {QStringLiteral("分区融合后系数.txt"), Dumped::Screen}};
    }

    WatchedSingleLayer m_engine;
    std::unique_ptr<KindRun<MatrixValues>> m_run;
};

} // namespace

std::unique_ptr<CoefKind> singleLayerKind()
{
    return std::make_unique<SingleLayerKind>();
}

} // namespace seamrevise
