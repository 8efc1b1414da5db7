#include "benchwall.h"
#include "cases.h"
#include "figures.h"
#include "movement.h"
#include "plainrevision.h"
#include <seamrevision/multilayerpartitionmerge.h>

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

} // namespace

void registerLayeredCases()
{
    registerFigure("Figure2_Layered/1920x1080", [](benchmark::State &state) {
        revise(state, MemoryDatabase::Filling::InPlace,
               {"2 four layers 1920x1080", 1.6, Figure::OverBound});
    });
    registerFigure("Figure2_Layered/replaced/1920x1080", [](benchmark::State &state) {
        revise(state, MemoryDatabase::Filling::Replace,
               {"2 four layers 1920x1080, tables replaced", 1.6, Figure::OverBound});
    });
}

} // namespace bench
