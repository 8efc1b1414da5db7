#include "benchwall.h"
#include "cases.h"
#include "figures.h"
#include "libcrypto.h"
#include "movement.h"
#include "plainrevision.h"
#include <seamrevision/partitionmerge.h>

#include <QTemporaryDir>

namespace bench
{

namespace
{

/// A wall with its database, ready to be revised, and its yardstick.
class RevisedWall
{
public:
    RevisedWall(int width, int height)
        : m_wall(Wall::ofSize(width, height))
        , m_database(m_wall, MemoryDatabase::Kind::SingleLayer)
    {
        m_engine.setPScreenDb(&m_database);
    }

    bool isRight() { return isPlainSingleLayer(m_wall, m_database, m_wall.reviseWith(m_engine)); }

    void revise()
    {
        const ST_ReviseResult result = m_wall.reviseWith(m_engine);
        benchmark::DoNotOptimize(result.coefData.data());
    }

    void move() const { moveSingleLayer(m_wall, m_database); }

    /// The ratio of one round, in which both sides run so many times.
    double ratio(bool startsWithOurs, int times)
    {
        const auto ours = [this, times] {
            for (int run = 0; run < times; ++run)
                revise();
        };
        const auto yardstick = [this, times] {
            for (int run = 0; run < times; ++run)
                move();
        };
        const double first = startsWithOurs ? millisecondsOf(ours) : millisecondsOf(yardstick);
        const double second = startsWithOurs ? millisecondsOf(yardstick) : millisecondsOf(ours);
        return startsWithOurs ? first / second : second / first;
    }

private:
    const Wall m_wall;
    MemoryDatabase m_database;
    PartitionMerge m_engine;
};

void revise(benchmark::State &state, const Figure &figure)
{
    RevisedWall wall(3840, 2160);
    if (!wall.isRight()) {
        state.SkipWithError("the result is wrong");
        return;
    }
    report(state, figure, timeInTurns([&] { wall.revise(); }, [&] { wall.move(); }));
}

void reviseInFreshMemory(benchmark::State &state)
{
    keepMemory(false);
    revise(state, {"1 single layer 3840x2160, memory not kept", 1.8, Figure::OverBound});
    keepMemory(true);
}

/// Whether every file holds its part of the table, but for the cap.
bool areFilesOfTable(const Wall &wall, PartitionMerge &engine, const QString &directory,
                     const ST_ReviseResult &result)
{
    for (const AreaInfoBase *area : wall.areas()) {
        std::vector<unsigned short> values;
        if (!engine.readCoef(directory, area->getAreaNum(), values))
            return false;
        auto value = values.begin();
        for (int row = area->getAreaStartRow(); row <= area->getAreaEndRow(); ++row) {
            const auto first = static_cast<std::size_t>(row * wall.screen().width()) * 9;
            const auto begin = first + static_cast<std::size_t>(area->getAreaStartCol()) * 9;
            const auto end = first + static_cast<std::size_t>(area->getAreaEndCol() + 1) * 9;
            for (std::size_t place = begin; place < end; ++place) {
                if (result.coefData[place] != std::min<unsigned short>(*value++, 0x999))
                    return false;
            }
        }
    }
    return true;
}

void reviseIntoFiles(benchmark::State &state)
{
    const Wall wall = Wall::ofSize(3840, 2160);
    MemoryDatabase database(wall, MemoryDatabase::Kind::SingleLayer);
    PartitionMerge engine;
    engine.setPScreenDb(&database);
    const QTemporaryDir directory;
    const auto ours
        = [&] { return wall.reviseWith(engine, ScreenType_PartitionFile, directory.path()); };
    const ST_ReviseResult checked = ours();
    if (!isPlainSingleLayer(wall, database, checked)
        || !areFilesOfTable(wall, engine, directory.path(), checked)) {
        fail(state, "the result is wrong");
        return;
    }
    const std::vector<Bytes> plaintexts = plaintextsIn(directory.path());
    report(state, {"3 single layer 3840x2160, files, to libcrypto", 0.33},
           timeInTurns([&] { benchmark::DoNotOptimize(ours().coefData.data()); },
                       [&] { encryptOneByOne(plaintexts); }));
}

/// Both walls in every round, so that whatever else the machine does meets both; the smaller one as
/// often as makes up for its size.
void growth(benchmark::State &state, int width, int height)
{
    RevisedWall wall(width, height);
    RevisedWall base(3840, 2160);
    const int times = std::max(1, 3840 * 2160 / (width * height));
    if (!wall.isRight() || !base.isRight()) {
        state.SkipWithError("the result is wrong");
        return;
    }
    std::vector<double> growths;
    for (int round = 0; round <= roundCount(); ++round) {
        const bool startsWithOurs = round % 2 == 0;
        const double growth = wall.ratio(startsWithOurs, times) / base.ratio(startsWithOurs, 1);
        if (round > 0)
            growths.push_back(growth);
    }
    reportValue(
        state,
        {"8 growth, " + std::to_string(width) + "x" + std::to_string(height) + " to 3840x2160",
         1.15},
        median(growths));
}

} // namespace

void registerSingleLayerCases()
{
    registerFigure("Figure1_SingleLayer/3840x2160", [](benchmark::State &state) {
        revise(state, {"1 single layer 3840x2160", 1.8, Figure::OverBound});
    });
    registerFigure("Figure1_SingleLayer/notkept/3840x2160", reviseInFreshMemory);
    if (haveLibcrypto())
        registerFigure("Figure3_SingleLayerFiles/3840x2160", reviseIntoFiles);
    registerFigure("Figure8_Growth/1920x1080",
                   [](benchmark::State &state) { growth(state, 1920, 1080); });
    registerFigure("Figure8_Growth/7680x4320",
                   [](benchmark::State &state) { growth(state, 7680, 4320); });
}

} // namespace bench
