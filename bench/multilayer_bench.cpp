#include "benchwall.h"
#include "cases.h"
#include "figures.h"
#include "libcrypto.h"
#include "movement.h"
#include "plainrevision.h"
#include <seamrevision/multilayerpartitionmerge.h>

#include <QTemporaryDir>

namespace bench
{

namespace
{

void revise(benchmark::State &state, MemoryDatabase::Filling filling, const Figure &figure)
{
    const Wall wall = Wall::ofSize(1920, 1080);
    MemoryDatabase database(wall, MemoryDatabase::Kind::Layered, filling);
    MultiLayerPartitionMerge engine({});
    engine.setLayerSize(layerCount);
    engine.setPScreenDb(&database);
    if (!isPlainLayered(wall, database, wall.reviseWith(engine))) {
        state.SkipWithError("the result is wrong");
        return;
    }
    const auto ours = [&] {
        const ST_ReviseResult result = wall.reviseWith(engine);
        benchmark::DoNotOptimize(result.multiLayerCoefData.data());
    };
    report(state, figure, timeInTurns(ours, [&] { moveLayered(wall, database); }));
}

void reviseIntoFiles(benchmark::State &state)
{
    const Wall wall = Wall::ofSize(1920, 1080);
    MemoryDatabase database(wall, MemoryDatabase::Kind::Layered);
    MultiLayerPartitionMerge engine({});
    engine.setLayerSize(layerCount);
    engine.setPScreenDb(&database);
    const QTemporaryDir directory;
    const auto ours
        = [&] { return wall.reviseWith(engine, ScreenType_PartitionFile, directory.path()); };
    if (!isPlainLayered(wall, database, ours())) {
        fail(state, "the result is wrong");
        return;
    }
    const std::vector<Bytes> plaintexts = plaintextsIn(directory.path());
    report(state, {"3 four layers 1920x1080, files, to libcrypto", 0.45},
           timeInTurns([&] { benchmark::DoNotOptimize(ours().zipCoefData.data()); },
                       [&] { encryptOneByOne(plaintexts); }));
}

} // namespace

void registerLayeredCases()
{
    registerFigure("Figure2_Layered/1920x1080", [](benchmark::State &state) {
        revise(state, MemoryDatabase::Filling::InPlace,
               {"2 four layers 1920x1080", 1.6, Figure::OverBound});
    });
    if (haveLibcrypto())
        registerFigure("Figure3_LayeredFiles/1920x1080", reviseIntoFiles);
    registerFigure("Figure2_Layered/notkept/1920x1080", [](benchmark::State &state) {
        keepMemory(false);
        revise(state, MemoryDatabase::Filling::InPlace,
               {"2 four layers 1920x1080, memory not kept", 1.6, Figure::OverBound});
        keepMemory(true);
    });
    registerFigure("Figure2_Layered/replaced/1920x1080", [](benchmark::State &state) {
        revise(state, MemoryDatabase::Filling::Replace,
               {"2 four layers 1920x1080, tables replaced", 1.6, Figure::OverBound});
    });
}

} // namespace bench
