#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <string>
#include <vector>

/// How figures are taken: engine and yardstick in turns, and the median of the paired ratios.
/// Times are the thread's time on a processor, so that waiting for one does not count.
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
        AtMost,    ///< ours / yardstick, the less the better
        OverBound, ///< the same, where the yardstick is what nobody can avoid: never below 1
        AtLeast    ///< yardstick / ours, the more the better
    } kind
        = AtMost;
};

struct PairedTimes
{
    double ratio = 0; ///< the median of ours / yardstick
    double oursMs = 0;
    double yardstickMs = 0;
    double yardstickSpread = 0; ///< see spread()
};

double median(std::vector<double> values);

/// How far apart the middle half of the values lies, as a part of their median.
double spread(std::vector<double> values);

/// Rounds that count; the one before them does not.
int roundCount();

/// The time that this thread has had on a processor so far.
double threadMilliseconds();

template <typename Code>
double millisecondsOf(const Code &code)
{
    const double start = threadMilliseconds();
    code();
    benchmark::ClobberMemory();
    return threadMilliseconds() - start;
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
    return {median(ratios), median(ourTimes), median(yardstickTimes), spread(yardstickTimes)};
}

template <typename Ours, typename Yardstick>
PairedTimes timeInTurns(Ours ours, Yardstick yardstick)
{
    return timeInTurns(ours, yardstick, [] {});
}

/// Makes the allocator keep what it has, or, as it does by itself, give large blocks back to the
/// system at once. Fresh pages cost more than most of what is measured, and never the same.
void keepMemory(bool keeps);

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

/// Whether no case failed and, but for a short run, every figure reaches its target and no bound
/// exceeds what it is a bound of.
bool isGoodEnough();

} // namespace bench
