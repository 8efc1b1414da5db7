#include "process/parallel.h"

#include <algorithm>
#include <atomic>
#include <future>
#include <thread>
#include <vector>

namespace seamrevise
{

namespace
{

int &jobLimit()
{
    static int jobs = 0;
    return jobs;
}

} // namespace

void setJobs(int jobs)
{
    jobLimit() = jobs;
}

int mostThreads()
{
    return jobLimit() > 0 ? jobLimit()
                          : std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
}

void forEachInParallel(int count, const std::function<void(int)> &call)
{
    std::atomic<int> next{0};
    const auto work = [&] {
        for (int i = next++; i < count; i = next++)
            call(i);
    };
    // Where no thread can be had, a future runs when it is waited for.
    std::vector<std::future<void>> others;
    for (int i = 1; i < std::min(count, mostThreads()); ++i)
        others.push_back(std::async(work));
    work();
    for (std::future<void> &other : others)
        other.get();
}

} // namespace seamrevise
