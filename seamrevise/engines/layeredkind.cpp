#include "engines/coefkind.h"
#include "engines/kindrun.h"
#include "exchange/npywriter.h"

#include <algorithm>

namespace seamrevise
{

namespace
{

using Rows = std::vector<std::vector<int>>;

class LayeredKind : public CoefKind
{
public:
    explicit LayeredKind(int layerCount)
        : m_layerCount(layerCount)
        , m_neutralRow(neutralRow(layerCount))
    {
        m_engine.setLayerSize(layerCount);
    }

    void run(const EngineRequest &request) override
    {
        m_run = std::make_unique<KindRun<LayerValues>>(request, LayerValues(m_layerCount));
        m_result = m_run->run(m_engine, makeAreas(request.layout));
    }
    const WallMeasurements &measured() const override { return m_run->measured(); }
    const EngineTimes &times() const override { return m_run->times(); }
    std::map<int, QByteArray> storedHashes() override { return m_run->storedHashes(); }
    int layerCount() const override { return m_layerCount; }
    int cap() const override { return LayerValues::cap; }

    std::vector<TableFile> tables() const override;
    QString fillNeutral(const NQRect &partition) override;

private:
    std::size_t packedBytes() const { return static_cast<std::size_t>(m_layerCount) * wordBytes; }

    std::vector<DumpKind> dumpKinds() const override
    {
        return {{QStringLiteral("areaEx_%1_before.txt"), Dumped::StoredZone},
                {QStringLiteral("area_%1_before.txt"), Dumped::OwnPixels},
                {QStringLiteral("areaEx_%1_after.txt"), Dumped::Zone},
                {QStringLiteral("areaEx_%1_afterZIP.txt"), Dumped::PackedBytes},
                {QStringLiteral("Multilayer_After_Revise.txt"), Dumped::Screen}};
    }

    const int m_layerCount;
    const std::vector<int> m_neutralRow;
    WatchedLayered m_engine;
    std::unique_ptr<KindRun<LayerValues>> m_run;
};

/// Hands the values of rows to a sink, many rows at a time.
bool sendRows(const Rows &rows, const BlockSink &sink)
{
    constexpr std::size_t rowsPerBlock = 4096;
    std::vector<qint32> block;
    for (std::size_t first = 0; first < rows.size(); first += rowsPerBlock) {
        block.clear();
        const std::size_t end = std::min(first + rowsPerBlock, rows.size());
        for (std::size_t i = first; i < end; ++i)
            block.insert(block.end(), rows[i].begin(), rows[i].end());
        if (!sendLittleEndian(block, sink))
            return false;
    }
    return true;
}

std::vector<TableFile> LayeredKind::tables() const
{
    const NQRect &screen = m_result.rect;
    return {{QStringLiteral("coefficients.npy"),
             npyBytes("<i4", {rowsOf(screen), columnsOf(screen), qint64{m_layerCount} * 3},
                      [this](const BlockSink &sink) {
                          return sendRows(m_result.multiLayerCoefData, sink);
                      })},
            {QStringLiteral("packed.bin"), [this](const BlockSink &sink) {
                 return sendLittleEndian(m_result.zipCoefData, sink);
             }}};
}

QString LayeredKind::fillNeutral(const NQRect &partition)
{
    for (int row = partition.top(); row <= partition.bottom(); ++row) {
        for (int col = partition.left(); col <= partition.right(); ++col) {
            const std::size_t pixel = pixelIndex(m_result.rect, row, col);
            m_result.multiLayerCoefData[pixel] = m_neutralRow;
            for (std::size_t i = 0; i < packedBytes(); ++i)
                m_result.zipCoefData[pixel * packedBytes() + i] = neutralWord[i % wordBytes];
        }
    }
    return QStringLiteral("the neutral value 4096, packed word 0x3FFFFFFF");
}

} // namespace

std::unique_ptr<CoefKind> layeredKind(int layerCount)
{
    return std::make_unique<LayeredKind>(layerCount);
}

} // namespace seamrevise
