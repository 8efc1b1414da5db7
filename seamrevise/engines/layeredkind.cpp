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
    int layerCount() const override { return m_layerCount; }
    int cap() const override { return LayerValues::cap; }

    std::vector<FileKind> fileKinds() const override
    {
        return {{QStringLiteral("_m"), qint64{m_layerCount} * 3 * 4},
                {QStringLiteral("_zip"), static_cast<qint64>(packedBytes())}};
    }

    bool readFiles(const QString &dir, const QString &key, qint64 pixelCount) override
    {
        return m_engine.readCoef(dir, key, m_fileRows, m_filePacked)
            && m_filePacked.size() == static_cast<std::size_t>(pixelCount) * packedBytes();
    }
    bool isResult(std::size_t filePixel, std::size_t screenPixel) const override
    {
        const std::vector<int> &file = m_fileRows[filePixel];
        const std::vector<int> &expected = m_result.multiLayerCoefData[screenPixel];
        const auto packed = m_filePacked.begin() + packedOffset(filePixel);
        return std::equal(file.begin(), file.end(), expected.begin(), expected.end(),
                          [](int value, int wanted) {
                              return std::min(value, LayerValues::cap) == wanted;
                          })
            && std::equal(packed, packed + static_cast<qint64>(packedBytes()),
                          m_result.zipCoefData.begin() + packedOffset(screenPixel));
    }
    bool isNeutral(std::size_t filePixel) const override
    {
        bool isNeutralWord = true;
        for (std::size_t i = 0; i < packedBytes(); ++i)
            isNeutralWord
                &= m_filePacked[filePixel * packedBytes() + i] == neutralWord[i % wordBytes];
        return isNeutralWord && m_fileRows[filePixel] == m_neutralRow;
    }

    QStringList partitionDumps(bool withFiles) const override
    {
        QStringList names{QStringLiteral("areaEx_%1_before.txt"),
                          QStringLiteral("area_%1_before.txt"),
                          QStringLiteral("areaEx_%1_after.txt")};
        if (withFiles)
            names += QStringLiteral("areaEx_%1_afterZIP.txt");
        return names;
    }
    QStringList screenDumps() const override
    {
        return {QStringLiteral("Multilayer_After_Revise.txt")};
    }

    QString writeTables(const QString &dir, QStringList &names) const override;
    QString fillNeutral(const NQRect &partition) override;

private:
    std::size_t packedBytes() const { return static_cast<std::size_t>(m_layerCount) * wordBytes; }
    std::ptrdiff_t packedOffset(std::size_t pixel) const
    {
        return static_cast<std::ptrdiff_t>(pixel * packedBytes());
    }

    const int m_layerCount;
    const std::vector<int> m_neutralRow;
    WatchedLayered m_engine;
    std::unique_ptr<KindRun<LayerValues>> m_run;
    Rows m_fileRows;
    std::vector<unsigned char> m_filePacked;
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

QString LayeredKind::writeTables(const QString &dir, QStringList &names) const
{
    const NQRect &screen = m_result.rect;
    names.push_back(QStringLiteral("coefficients.npy"));
    QString fault = writeNpy(
        dir + QLatin1Char('/') + names.back(), "<i4",
        {rowsOf(screen), columnsOf(screen), qint64{m_layerCount} * 3},
        [&](const BlockSink &sink) { return sendRows(m_result.multiLayerCoefData, sink); });
    if (!fault.isEmpty())
        return fault;
    names.push_back(QStringLiteral("packed.bin"));
    return writeChecked(dir + QLatin1Char('/') + names.back(), [&](const BlockSink &sink) {
        return sendLittleEndian(m_result.zipCoefData, sink);
    });
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
