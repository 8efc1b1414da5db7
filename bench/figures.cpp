#include "figures.h"

#include <cstdio>
#include <cstdlib>
#include <malloc.h>
#include <time.h>

namespace bench
{

namespace
{

struct Reported
{
    Figure figure;
    double value;
    PairedTimes times;
};

std::vector<Reported> &reportedFigures()
{
    static std::vector<Reported> figures;
    return figures;
}

bool someCaseFailed = false;

/// From this spread of the yardstick on, something else was at work on the machine.
constexpr double busySpread = 0.1;

bool isReached(const Reported &reported)
{
    return reported.figure.kind == Figure::AtLeast ? reported.value >= reported.figure.target
                                                   : reported.value <= reported.figure.target;
}

bool isBoundTooHigh(const Reported &reported)
{
    return reported.figure.kind == Figure::OverBound && reported.value < 1;
}

std::string remarkOn(const Reported &reported)
{
    if (isShortRun())
        return "";
    std::string remark;
    if (!isReached(reported))
        remark += "  MISSED";
    if (isBoundTooHigh(reported))
        remark += "  THE BOUND IS NONE";
    if (reported.times.yardstickSpread >= busySpread) {
        const auto percent = static_cast<int>(100 * reported.times.yardstickSpread);
        remark += "  busy: the yardstick varies by " + std::to_string(percent) + " %";
    }
    return remark;
}

void keep(benchmark::State &state, const Figure &figure, double value, const PairedTimes &times)
{
    state.counters["ratio"] = value;
    state.counters["target"] = figure.target;
    reportedFigures().push_back({figure, value, times});
}

} // namespace

bool isShortRun()
{
    const char *const value = std::getenv("SEAMREVISION_BENCH_SHORT");
    return value && std::string(value) == "1";
}

int roundCount()
{
    return isShortRun() ? 1 : 11;
}

double median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

double spread(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    const std::size_t quarter = values.size() / 4;
    return (values[values.size() - 1 - quarter] - values[quarter]) / median(values);
}

double threadMilliseconds()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

void keepMemory(bool keeps)
{
    constexpr int usual = 128 * 1024;
    mallopt(M_MMAP_THRESHOLD, keeps ? 1 << 30 : usual);
    mallopt(M_TRIM_THRESHOLD, keeps ? -1 : usual);
    if (!keeps)
        malloc_trim(0);
}

void report(benchmark::State &state, const Figure &figure, const PairedTimes &times)
{
    for (auto unused : state) {
        static_cast<void>(unused);
        state.SetIterationTime(times.oursMs / 1000);
    }
    state.counters["ours_ms"] = times.oursMs;
    state.counters["yardstick_ms"] = times.yardstickMs;
    keep(state, figure, figure.kind == Figure::AtLeast ? 1 / times.ratio : times.ratio, times);
}

void reportValue(benchmark::State &state, const Figure &figure, double value)
{
    for (auto unused : state) {
        static_cast<void>(unused);
        state.SetIterationTime(0);
    }
    keep(state, figure, value, {});
}

void fail(benchmark::State &state, const char *reason)
{
    someCaseFailed = true;
    state.SkipWithError(reason);
}

void printTable()
{
    auto &figures = reportedFigures();
    std::stable_sort(figures.begin(), figures.end(), [](const Reported &a, const Reported &b) {
        return a.figure.name < b.figure.name;
    });
    if (isShortRun())
        std::fprintf(stderr, "\nShort form: the times mean nothing.\n");
    std::fprintf(stderr, "\n%-52s %10s %12s %9s %10s\n", "figure", "ours ms", "yardstick ms",
                 "ratio", "to reach");
    for (const Reported &reported : figures) {
        std::fprintf(stderr, "%-52s %10.3f %12.3f %9.3f %s %6.2f%s\n", reported.figure.name.c_str(),
                     reported.times.oursMs, reported.times.yardstickMs, reported.value,
                     reported.figure.kind == Figure::AtLeast ? ">=" : "<=", reported.figure.target,
                     remarkOn(reported).c_str());
    }
}

bool isGoodEnough()
{
    const auto &figures = reportedFigures();
    const bool allReached
        = std::all_of(figures.begin(), figures.end(), [](const Reported &reported) {
              return isReached(reported) && !isBoundTooHigh(reported);
          });
    return !someCaseFailed && (allReached || isShortRun());
}

} // namespace bench
