#include "benchwall.h"
#include "cases.h"
#include "figures.h"
#include "plainrevision.h"
#include "revision/blend.h"
#include <seamrevision/multilayerpartitionmerge.h>
#include <seamrevision/partitionmerge.h>

#include <utility>

namespace bench
{

namespace
{

class SingleLayerSeams : public PartitionMerge
{
public:
    using PartitionMerge::partitionCoefRevise;
};

class LayeredSeams : public MultiLayerPartitionMerge
{
public:
    LayeredSeams()
        : MultiLayerPartitionMerge({})
    {
    }
    using MultiLayerPartitionMerge::partitionCoefRevise;
};

/// Pushes everything else out of the processor's caches.
void coolDown()
{
    static std::vector<unsigned char> bytes(isShortRun() ? 1 << 20 : 192 << 20);
    for (std::size_t place = 0; place < bytes.size(); place += 64)
        ++bytes[place];
    benchmark::DoNotOptimize(bytes.data());
}

/// A pair of neighbouring zones and the runs of neighbouring pixels that their strip is made of.
struct Seam
{
    MultiLayerCoefZoneInfo *current;
    MultiLayerCoefZoneInfo *next;
    enum_ReviseDirection direction;

    int widthOf(const ZoneBaseInfo &zone) const
    {
        return zone.getEndPixCol() - zone.getBegPixCol() + 1;
    }

    /// Calls visit(firstPixelOfCurrent, firstPixelOfNext, pixelCount) for every run.
    template <typename Visit>
    void forEachRun(Visit visit) const
    {
        const bool horizontal = direction == ReviseDirection_Horizontal;
        const int firstRow = horizontal ? current->getBegPixRow() : next->getBegPixRow();
        const int firstCol = horizontal ? next->getBegPixCol() : current->getBegPixCol();
        const int count = current->getEndPixCol() - firstCol + 1;
        for (int row = firstRow; row <= current->getEndPixRow(); ++row) {
            const int inCurrent = (row - current->getBegPixRow()) * widthOf(*current) + firstCol
                - current->getBegPixCol();
            const int inNext
                = (row - next->getBegPixRow()) * widthOf(*next) + firstCol - next->getBegPixCol();
            visit(static_cast<std::size_t>(inCurrent), static_cast<std::size_t>(inNext),
                  static_cast<std::size_t>(count));
        }
    }
};

/// The yardsticks: read both strips, write both back changed by a constant.
void changeSingleLayer(const Seam &seam)
{
    seam.forEachRun([&](std::size_t current, std::size_t next, std::size_t pixelCount) {
        unsigned short *const a = seam.current->m_arrayData.data() + current * 9;
        unsigned short *const b = seam.next->m_arrayData.data() + next * 9;
        for (std::size_t i = 0; i < pixelCount * 9; ++i) {
            a[i] = static_cast<unsigned short>(a[i] + 1);
            b[i] = static_cast<unsigned short>(b[i] + 1);
        }
    });
}

void changeLayered(const Seam &seam)
{
    seam.forEachRun([&](std::size_t current, std::size_t next, std::size_t pixelCount) {
        for (std::size_t pixel = 0; pixel < pixelCount; ++pixel) {
            std::vector<int> &a = seam.current->m_multiLayerCoefs[current + pixel];
            std::vector<int> &b = seam.next->m_multiLayerCoefs[next + pixel];
            for (std::size_t i = 0; i < a.size(); ++i) {
                a[i] += 1;
                b[i] += 1;
            }
        }
    });
}

std::vector<Seam> seamsOf(MemoryDatabase &database, enum_ReviseDirection direction)
{
    std::vector<Seam> seams;
    const bool horizontal = direction == ReviseDirection_Horizontal;
    for (int number = 1; number <= gridColumns * gridRows; ++number) {
        const int next = horizontal ? number + 1 : number + gridColumns;
        if (horizontal ? number % gridColumns != 0 : next <= gridColumns * gridRows)
            seams.push_back({&database.stored.at(number), &database.stored.at(next), direction});
    }
    return seams;
}

void reviseSeam(SingleLayerSeams &engine, const Seam &seam)
{
    engine.partitionCoefRevise(seam.current, seam.next, seam.direction, 0);
}

void reviseSeam(LayeredSeams &engine, const Seam &seam)
{
    engine.partitionCoefRevise(seam.current, seam.next, seam.direction, 0);
}

template <typename Engine>
void blendStrips(benchmark::State &state, const char *name, MemoryDatabase::Kind kind,
                 enum_ReviseDirection direction)
{
    const bool layered = kind == MemoryDatabase::Kind::Layered;
    const Wall wall = layered ? Wall::ofSize(1920, 1080) : Wall::ofSize(3840, 2160);
    MemoryDatabase database(wall, kind);
    const std::vector<Seam> seams = seamsOf(database, direction);
    Engine engine;
    const auto ours = [&] {
        for (const Seam &seam : seams)
            reviseSeam(engine, seam);
    };
    const auto yardstick = [&] {
        for (const Seam &seam : seams)
            layered ? changeLayered(seam) : changeSingleLayer(seam);
    };
    report(state, {name, 1.5}, timeInTurns(ours, yardstick, coolDown));
}

/// Two neighbouring zones of a size that share a strip of the whole side and two bands.
class Pair
{
public:
    Pair(enum_ReviseDirection direction, int width, int height)
    {
        const bool horizontal = direction == ReviseDirection_Horizontal;
        place(m_current, 0, 0, width, height);
        place(m_next, horizontal ? 0 : height - 2 * band, horizontal ? width - 2 * band : 0, width,
              height);
        m_seam = {&m_current, &m_next, direction};
    }
    Pair(const Pair &) = delete;
    Pair &operator=(const Pair &) = delete;

    const Seam &seam() const { return m_seam; }

private:
    static void place(MultiLayerCoefZoneInfo &zone, int row, int col, int width, int height)
    {
        zone.setBegPixRow(row);
        zone.setBegPixCol(col);
        zone.setEndPixRow(row + height - 1);
        zone.setEndPixCol(col + width - 1);
        zone.m_arrayData.assign(
            static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 9, 1000);
    }

    MultiLayerCoefZoneInfo m_current;
    MultiLayerCoefZoneInfo m_next;
    Seam m_seam{};
};

/// The same strip in zones that are ten times as wide or as high, in the caches: from memory also
/// the plainest loop is slower in a wider zone, whose lines lie on more pages.
void blendInLargerZones(benchmark::State &state, const char *name, enum_ReviseDirection direction)
{
    const bool horizontal = direction == ReviseDirection_Horizontal;
    const int across = 200;
    const int along = isShortRun() ? 50 : 400;
    const Pair usual(direction, horizontal ? across : along, horizontal ? along : across);
    const Pair larger(direction, horizontal ? 10 * across : along,
                      horizontal ? along : 10 * across);
    SingleLayerSeams engine;
    const auto reviseOften = [&](const Seam &seam) {
        for (int times = 0; times < 20; ++times)
            reviseSeam(engine, seam);
    };
    report(state, {name, 1.2},
           timeInTurns([&] { reviseOften(larger.seam()); }, [&] { reviseOften(usual.seam()); }));
}

/// The fast version beside the plain one on runs as the engines have them, in the caches.
template <typename Value, typename Blend>
void compareVersions(benchmark::State &state, const char *name, std::size_t valueCount, Blend blend)
{
    if (!seamrevision::avx2Blend()) {
        state.SkipWithError("this processor has one version only");
        return;
    }
    std::vector<Value> current(64 * valueCount, 1000);
    std::vector<Value> next(current.size(), 2000);
    const auto blendAll = [&](const seamrevision::BlendVersion &version) {
        for (int times = isShortRun() ? 1 : 200; times > 0; --times) {
            for (std::size_t first = 0; first < current.size(); first += valueCount)
                blend(version, current.data() + first, next.data() + first, valueCount);
        }
    };
    report(state, {name, 1},
           timeInTurns([&] { blendAll(*seamrevision::avx2Blend()); },
                       [&] { blendAll(seamrevision::plainBlend()); }));
}

void registerVersionCases()
{
    using seamrevision::BlendVersion;
    constexpr std::size_t lineValues = 2 * band * 9;
    registerFigure("Figure5_Versions/level16", [](benchmark::State &state) {
        compareVersions<quint16>(
            state, "5 AVX2 blend to plain one, row of pixels", lineValues,
            [](const BlendVersion &version, quint16 *current, quint16 *next, std::size_t count) {
                version.level16(current, next, count, 7, 2 * band);
            });
    });
    registerFigure("Figure5_Versions/ramp16", [](benchmark::State &state) {
        std::vector<qint32> positions;
        for (int position = 0; position < 2 * band; ++position)
            positions.insert(positions.end(), 9, position);
        compareVersions<quint16>(
            state, "5 AVX2 blend to plain one, line across", lineValues,
            [&](const BlendVersion &version, quint16 *current, quint16 *next, std::size_t count) {
                version.ramp16(current, next, count, positions.data(), 2 * band);
            });
    });
    registerFigure("Figure5_Versions/level32", [](benchmark::State &state) {
        compareVersions<qint32>(
            state, "5 AVX2 blend to plain one, layered pixel", valuesPerLayeredPixel,
            [](const BlendVersion &version, qint32 *current, qint32 *next, std::size_t count) {
                version.level32(current, next, count, 7, 2 * band);
            });
    });
}

} // namespace

void registerBlendCases()
{
    constexpr auto singleLayer = MemoryDatabase::Kind::SingleLayer;
    constexpr auto layered = MemoryDatabase::Kind::Layered;
    registerFigure("Figure5_Blend/16bit/horizontal", [](benchmark::State &state) {
        blendStrips<SingleLayerSeams>(state, "5 blend, 16-bit, horizontal seams", singleLayer,
                                      ReviseDirection_Horizontal);
    });
    registerFigure("Figure5_Blend/16bit/vertical", [](benchmark::State &state) {
        blendStrips<SingleLayerSeams>(state, "5 blend, 16-bit, vertical seams", singleLayer,
                                      ReviseDirection_Vertical);
    });
    registerFigure("Figure5_Blend/layered/horizontal", [](benchmark::State &state) {
        blendStrips<LayeredSeams>(state, "5 blend, layered, horizontal seams", layered,
                                  ReviseDirection_Horizontal);
    });
    registerFigure("Figure5_Blend/layered/vertical", [](benchmark::State &state) {
        blendStrips<LayeredSeams>(state, "5 blend, layered, vertical seams", layered,
                                  ReviseDirection_Vertical);
    });
    registerFigure("Figure5_Locality/horizontal", [](benchmark::State &state) {
        blendInLargerZones(state, "5 same strip, zones ten times as wide",
                           ReviseDirection_Horizontal);
    });
    registerFigure("Figure5_Locality/vertical", [](benchmark::State &state) {
        blendInLargerZones(state, "5 same strip, zones ten times as high",
                           ReviseDirection_Vertical);
    });
    registerVersionCases();
}

} // namespace bench
