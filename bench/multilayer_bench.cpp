#include "benchwall.h"
#include "cases.h"
#include "figures.h"
#include "movement.h"
#include "multilayer/multilayerpartitionmerge.h"
#include "plainrevision.h"

namespace bench
{

namespace
{

void revise(benchmark::State &state)
{
    const Wall wall = Wall::ofSize(1920, 1080);
    MemoryDatabase database(wall, MemoryDatabase::Kind::Layered);
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
    report(state, {"2 four layers 1920x1080", 1.15},
           timeInTurns(ours, [&] { moveLayered(wall, database); }));
}

} // namespace

void registerLayeredCases()
{
    registerFigure("Figure2_Layered/1920x1080", revise);
}

} // namespace bench
