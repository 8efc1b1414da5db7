#include "figures.h"

#include <cstdio>
#include <cstdlib>

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

/// How far a figure may be from its target before a run is a failure.
constexpr double tolerance = 1.1;

const char *verdictOn(double miss)
{
    if (miss <= 1 || isShortRun())
        return "";
    return miss <= tolerance ? "  missed by less than a tenth" : "  MISSED";
}

/// How far a figure is from its target: above 1 it misses it.
double missOf(const Reported &reported)
{
    return reported.figure.kind == Figure::AtMost ? reported.value / reported.figure.target
                                                  : reported.figure.target / reported.value;
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

void report(benchmark::State &state, const Figure &figure, const PairedTimes &times)
{
    for (auto unused : state) {
        static_cast<void>(unused);
        state.SetIterationTime(times.oursMs / 1000);
    }
    state.counters["ours_ms"] = times.oursMs;
    state.counters["yardstick_ms"] = times.yardstickMs;
    keep(state, figure, figure.kind == Figure::AtMost ? times.ratio : 1 / times.ratio, times);
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
        const double miss = missOf(reported);
        std::fprintf(stderr, "%-52s %10.3f %12.3f %9.3f %s %6.2f%s\n", reported.figure.name.c_str(),
                     reported.times.oursMs, reported.times.yardstickMs, reported.value,
                     reported.figure.kind == Figure::AtMost ? "<=" : ">=", reported.figure.target,
                     verdictOn(miss));
    }
}

bool isGoodEnough()
{
    const auto &figures = reportedFigures();
    const bool allReached
        = std::all_of(figures.begin(), figures.end(),
                      [](const Reported &reported) { return missOf(reported) <= tolerance; });
    return !someCaseFailed && (allReached || isShortRun());
}

} // namespace bench
