#include "process/parallel.h"

#include "process/backgroundwork.h"

#include <algorithm>
#include <thread>

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
    BackgroundWork work;
    for (int i = 0; i < count; ++i)
        work.add(0, [&call, i] { call(i); });
    work.finish();
}

} // namespace seamrevise
