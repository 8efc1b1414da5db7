#include "peakmemory.h"

#include "benchwall.h"
#include "cases.h"
#include "figures.h"
#include <seamrevision/multilayerpartitionmerge.h>

#include <QTemporaryDir>

#include <cstdio>
#include <fstream>
#include <limits.h>
#include <malloc.h>
#include <memory>
#include <string>
#include <unistd.h>

namespace bench
{

namespace
{

constexpr const char *singleLayer = "single-layer";
constexpr const char *singleLayerFiles = "single-layer-files";
constexpr const char *layered = "layered";
constexpr const char *layeredFiles = "layered-files";

bool isLayeredRun(const char *engine)
{
    return engine == std::string(layered) || engine == std::string(layeredFiles);
}

bool isFileRun(const char *engine)
{
    return engine == std::string(singleLayerFiles) || engine == std::string(layeredFiles);
}

/// A row of /proc/self/status, in bytes.
double statusBytes(const std::string &row)
{
    std::ifstream status("/proc/self/status");
    std::string word;
    while (status >> word) {
        double kilobytes = 0;
        if (word == row && status >> kilobytes)
            return kilobytes * 1024;
    }
    return 0;
}

/// Bytes of the tables in a result, as they lie in memory.
double tableBytes(const Wall &wall, bool isLayered)
{
    // A row is a vector's three pointers and its values, which the allocator hands out with a word
    // of its own, in sixteens.
    const std::size_t row = 3 * sizeof(void *) + (valuesPerLayeredPixel * 4 + 8 + 15) / 16 * 16;
    const std::size_t pixel = isLayered ? row + 4 * layerCount : 9 * sizeof(unsigned short);
    return static_cast<double>(wall.pixelCount() * pixel);
}

Wall wallFor(bool isLayered)
{
    return isLayered ? Wall::ofSize(1920, 1080) : Wall::ofSize(3840, 2160);
}

void measure(benchmark::State &state, const char *engine, const Figure &figure)
{
    char program[PATH_MAX] = {};
    if (readlink("/proc/self/exe", program, sizeof program - 1) < 0) {
        state.SkipWithError("the program does not find itself");
        return;
    }
    const std::string command
        = "'" + std::string(program) + "' " + peakMemoryArgument + " " + engine;
    std::FILE *const output = popen(command.c_str(), "r");
    double peak = 0;
    const bool isRead = output && std::fscanf(output, "%lf", &peak) == 1;
    if (!output || pclose(output) != 0 || !isRead) {
        state.SkipWithError("the run failed");
        return;
    }
    const bool isLayered = isLayeredRun(engine);
    state.counters["peak_bytes"] = peak;
    reportValue(state, figure, peak / tableBytes(wallFor(isLayered), isLayered));
}

} // namespace

int runForPeakMemory(const char *engine)
{
    const bool isLayered = isLayeredRun(engine);
    const Wall wall = wallFor(isLayered);
    MemoryDatabase database(
        wall, isLayered ? MemoryDatabase::Kind::Layered : MemoryDatabase::Kind::SingleLayer);
    const std::unique_ptr<PartitionMerge> merge = isLayered
        ? std::make_unique<MultiLayerPartitionMerge>(std::vector<unsigned int>())
        : std::make_unique<PartitionMerge>();
    merge->setPScreenDb(&database);
    malloc_trim(0);
    std::ofstream("/proc/self/clear_refs") << 5; // the peak starts anew
    const double before = statusBytes("VmRSS:");
    const QTemporaryDir directory;
    const auto type = isFileRun(engine) ? ScreenType_PartitionFile : enum_ScreenType(0);
    if (wall.reviseWith(*merge, type, directory.path()).isSuccess != 1)
        return 1;
    std::printf("%.0f\n", statusBytes("VmHWM:") - before);
    return 0;
}

void registerMemoryCases()
{
    registerFigure("Figure7_PeakMemory/3840x2160", [](benchmark::State &state) {
        measure(state, singleLayer, {"7 peak memory, single layer 3840x2160", 2.4});
    });
    registerFigure("Figure7_PeakMemory/files/3840x2160", [](benchmark::State &state) {
        measure(state, singleLayerFiles, {"7 peak memory, single layer 3840x2160, files", 2.9});
    });
    registerFigure("Figure7_PeakMemory/layered/files/1920x1080", [](benchmark::State &state) {
        measure(state, layeredFiles, {"7 peak memory, four layers 1920x1080, files", 2.4});
    });
    registerFigure("Figure7_PeakMemory/layered/1920x1080", [](benchmark::State &state) {
        measure(state, layered, {"7 peak memory, four layers 1920x1080", 2.4});
    });
}

} // namespace bench
