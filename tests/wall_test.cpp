#include "multilayer/multilayerpartitionmerge.h"
#include "testsupport.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <random>

using wallmodel::Outcome;
using wallmodel::Pixels;
using wallmodel::Rect;
using wallmodel::Wall;
using wallmodel::Zone;

namespace
{

/// Small random walls of every kind that a host can hand in.
class WallMaker
{
public:
    explicit WallMaker(unsigned int seed)
        : m_random(seed)
    {
    }

    Wall make(bool layered)
    {
        Wall wall{};
        wall.layered = layered;
        wall.layers = between(1, 6);
        wall.gridCols = between(1, 4);
        wall.gridRows = between(1, 4);
        wall.bandCols = between(0, 6);
        wall.bandRows = between(0, 6);
        wall.margin = oneIn(2) ? 0 : between(-1, 4);
        wall.screenType = between(0, 2);
        const std::vector<int> rows = edges(wall.gridRows);
        const std::vector<int> cols = edges(wall.gridCols);
        wall.screen = {rows.front(), cols.front(), rows.back() - 1, cols.back() - 1};
        const bool tidy = !oneIn(4);
        for (int row = 0; row < wall.gridRows; ++row)
            for (int col = 0; col < wall.gridCols; ++col)
                addPartition(wall, row * wall.gridCols + col + 1,
                             {rows[row], cols[col], rows[row + 1] - 1, cols[col + 1] - 1}, tidy);
        if (wall.stored.empty())
            wall.stored[1] = storedZone(wall, wall.partitions.at(1), true);
        return wall;
    }

private:
    int between(int low, int high)
    {
        return std::uniform_int_distribution<int>(low, high)(m_random);
    }
    bool oneIn(int chances) { return between(1, chances) == 1; }

    std::vector<int> edges(int count)
    {
        std::vector<int> edges{between(-5, 5)};
        for (int i = 0; i < count; ++i)
            edges.push_back(edges.back() + between(1, 7));
        return edges;
    }

    void addPartition(Wall &wall, int number, Rect rect, bool tidy)
    {
        if (!tidy && oneIn(8)) // reaches outside its place, perhaps outside the screen
            rect.bottom += between(0, 2), rect.right += between(0, 2), rect.left -= between(0, 2);
        wall.partitions[number] = rect;
        if (!oneIn(4))
            wall.stored[number] = storedZone(wall, rect, tidy);
    }

    Zone storedZone(const Wall &wall, const Rect &own, bool tidy)
    {
        const int more = oneIn(2) ? 0 : between(0, 2);
        Rect rect{own.top - wall.bandRows - more, own.left - wall.bandCols - more,
                  own.bottom + wall.bandRows + more, own.right + wall.bandCols + more};
        int missing = 0;
        if (!tidy && oneIn(6)) // smaller than the band needs, or cut short
            rect = {own.top, own.left, own.bottom, own.right};
        if (!tidy && oneIn(10))
            missing = between(1, rect.area());
        Zone zone{rect, {}};
        for (int pixel = 0; pixel < rect.area() - missing; ++pixel)
            zone.pixels.push_back(values(wall));
        return zone;
    }

    std::vector<int> values(const Wall &wall)
    {
        std::vector<int> values(wall.valuesPerPixel());
        for (int &value : values) {
            if (!wall.layered)
                value = oneIn(3) ? between(0, 65535) : between(1500, 2600);
            else
                value = oneIn(3) ? between(INT_MIN, INT_MAX) : between(3500, 4300);
        }
        return values;
    }

    std::mt19937 m_random;
};

/// Runs an engine on a wall and collects what the host sees; the engine is used again and again.
template <typename Engine>
Outcome reviseWith(Engine &engine, const Wall &wall)
{
    const QTemporaryDir directory;
    const QTemporaryDir dumpDirectory;
    const ExportTo exporting(dumpDirectory.path());
    MemoryDatabase database(wall.stored);
    const Partitions partitions(wall.partitions);
    LogCapture log;

    engine.setPScreenDb(&database);
    const ST_ReviseResult result = engine.boundaryModifying(
        directory.path(), enum_ScreenType(wall.screenType), partitions.map,
        {wall.gridCols, wall.gridRows},
        {wall.screen.left, wall.screen.top, wall.screen.right, wall.screen.bottom},
        {wall.bandCols, wall.bandRows}, wall.margin);

    Outcome outcome;
    outcome.log = log.take();
    outcome.code = result.errCode;
    outcome.text = result.errMsg;
    EXPECT_EQ(result.isSuccess, result.errCode == ErrCode_Success);
    EXPECT_EQ(result.rect.left(), wall.screen.left);
    outcome.table = wall.layered ? result.multiLayerCoefData : pixelsOf(result.coefData);
    outcome.packed = result.zipCoefData;
    outcome.dumps = filesIn(dumpDirectory.path());
    for (const auto &[name, content] : filesIn(directory.path()))
        outcome.files[name] = decrypted(content);
    for (auto entry = partitions.map.begin(); entry != partitions.map.end(); ++entry)
        outcome.states[entry.key().toInt()] = entry.value()->getCorrectAreaStateType();
    return outcome;
}

std::string describe(const Wall &wall)
{
    return (QStringLiteral("grid %1x%2 band %3x%4 margin %5 type %6 layers %7")
                .arg(wall.gridCols)
                .arg(wall.gridRows)
                .arg(wall.bandCols)
                .arg(wall.bandRows)
                .arg(wall.margin)
                .arg(wall.screenType)
                .arg(wall.layered ? wall.layers : 0))
        .toStdString();
}

void expectEqual(const Outcome &actual, const Outcome &expected)
{
    EXPECT_EQ(actual.code, expected.code);
    EXPECT_EQ(actual.text, expected.text);
    EXPECT_EQ(actual.states, expected.states);
    EXPECT_EQ(actual.log.join('\n'), expected.log.join('\n'));
    EXPECT_EQ(actual.packed, expected.packed);
    EXPECT_EQ(actual.files, expected.files);
    EXPECT_EQ(actual.dumps, expected.dumps);
    ASSERT_EQ(actual.table.size(), expected.table.size());
    for (std::size_t pixel = 0; pixel < actual.table.size(); ++pixel)
        ASSERT_EQ(actual.table[pixel], expected.table[pixel]) << "pixel " << pixel;
}

/// One engine for all walls, so that nothing may be left over from the call before.
template <typename Engine>
void compareOnRandomWalls(Engine &engine, bool layered, unsigned int count)
{
    std::map<int, int> codes;
    for (unsigned int seed = 1; seed <= count && !::testing::Test::HasFailure(); ++seed) {
        const Wall wall = WallMaker(seed).make(layered);
        SCOPED_TRACE("seed " + std::to_string(seed) + ": " + describe(wall));
        if constexpr (std::is_same_v<Engine, MultiLayerPartitionMerge>)
            engine.setLayerSize(wall.layers);
        const Outcome expected = wallmodel::revise(wall);
        expectEqual(reviseWith(engine, wall), expected);
        ++codes[expected.code];
    }
    // The walls are worth comparing only while they reach success and the failures in the middle.
    // A layered zone always has all its rows and lies on the screen, so it fits the table.
    EXPECT_GT(codes[0], int(count) / 2);
    EXPECT_GT(codes[3], 0);
    EXPECT_EQ(codes[1804] > 0, !layered);
}

} // namespace

TEST(Wall, SingleLayerEngineAgreesWithThePlainModel)
{
    PartitionMerge engine;
    compareOnRandomWalls(engine, false, 600);
}

TEST(Wall, MultiLayerEngineAgreesWithThePlainModel)
{
    MultiLayerPartitionMerge engine({});
    compareOnRandomWalls(engine, true, 600);
}

TEST(Wall, CornerWhereFourPartitionsMeetIsBlendedAcrossThenDown)
{
    // Two by two partitions of one pixel, band 1: every zone is the whole screen of 2 x 2, each
    // with one value throughout. Strips are 2 wide, so position 1 gets the mean of both.
    Wall wall{};
    wall.screen = {0, 0, 1, 1};
    wall.gridCols = wall.gridRows = 2;
    wall.bandCols = wall.bandRows = 1;
    for (int number = 1; number <= 4; ++number) {
        const int row = (number - 1) / 2;
        const int col = (number - 1) % 2;
        wall.partitions[number] = {row, col, row, col};
        wall.stored[number] = {wall.screen, Pixels(4, std::vector<int>(9, number * 400))};
    }
    // Across: (1, 2) gives 400 | 600 in both, (3, 4) gives 1200 | 1400. Down, position 0 keeps the
    // upper zone and position 1 takes the mean: 400 | 600 over 800 | 1000.
    const Pixels expected{std::vector<int>(9, 400), std::vector<int>(9, 600),
                          std::vector<int>(9, 800), std::vector<int>(9, 1000)};
    PartitionMerge engine;
    EXPECT_EQ(reviseWith(engine, wall).table, expected);
}
