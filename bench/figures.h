#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

/// How figures are taken: engine and yardstick in turns, and the median of the paired ratios.
namespace bench
{

/// Whether everything is small and runs once: to see that the suite works, not how fast it is.
bool isShortRun();

/// What a figure is, and what it has to reach.
struct Figure
{
    std::string name;
    double target;
    enum Kind
    {
        AtMost, ///< ours / yardstick, the less the better
        AtLeast ///< yardstick / ours, the more the better
    } kind
        = AtMost;
};

struct PairedTimes
{
    double ratio = 0; ///< the median of ours / yardstick
    double oursMs = 0;
    double yardstickMs = 0;
};

double median(std::vector<double> values);

/// Rounds that count; the one before them does not.
int roundCount();

template <typename Code>
double millisecondsOf(const Code &code)
{
    const auto start = std::chrono::steady_clock::now();
    code();
    benchmark::ClobberMemory();
    const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - start;
    return time.count();
}

/// Times ours() and yardstick() in turns; every second round starts with the other one. prepare()
/// runs before each, outside the times.
template <typename Ours, typename Yardstick, typename Prepare>
PairedTimes timeInTurns(Ours ours, Yardstick yardstick, Prepare prepare)
{
    std::vector<double> ratios;
    std::vector<double> ourTimes;
    std::vector<double> yardstickTimes;
    const int rounds = roundCount();
    for (int round = 0; round <= rounds; ++round) {
        double ourTime = 0;
        double yardstickTime = 0;
        for (const bool turn : {round % 2 == 0, round % 2 != 0}) {
            prepare();
            (turn ? ourTime : yardstickTime)
                = turn ? millisecondsOf(ours) : millisecondsOf(yardstick);
        }
        if (round == 0)
            continue;
        ratios.push_back(ourTime / yardstickTime);
        ourTimes.push_back(ourTime);
        yardstickTimes.push_back(yardstickTime);
    }
    return {median(ratios), median(ourTimes), median(yardstickTimes)};
}

template <typename Ours, typename Yardstick>
PairedTimes timeInTurns(Ours ours, Yardstick yardstick)
{
    return timeInTurns(ours, yardstick, [] {});
}

/// Hands times to the benchmark's state, which must be one of registerFigure()'s, and the figure
/// to the table.
void report(benchmark::State &state, const Figure &figure, const PairedTimes &times);

/// Hands over a figure that is no time, such as memory.
void reportValue(benchmark::State &state, const Figure &figure, double value);

/// Ends a case whose result is wrong, and makes the whole run a failure, a short one too.
void fail(benchmark::State &state, const char *reason);

/// Registers a case whose code does its own timing.
template <typename Code>
bool registerFigure(const std::string &name, Code code)
{
    benchmark::RegisterBenchmark(name.c_str(), code)
        ->UseManualTime()
        ->Iterations(1)
        ->Unit(benchmark::kMillisecond);
    return true;
}

/// Writes all reported figures as a table to the error output, so that the ordinary one stays what
/// the benchmark library makes it.
void printTable();

/// Whether no case failed and, but for a short run, no figure misses its target by more than a
/// tenth.
bool isGoodEnough();

} // namespace bench
