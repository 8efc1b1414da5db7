#pragma once

#include <functional>

/// Independent pieces of work on several cores. An engine and its database stay on one thread; what
/// is compared, hashed and reckoned beside them need not.
namespace seamrevise
{

/// How many threads work at most, the caller's included; 0: one for each processor, which is how it
/// starts. Only while none of it runs.
void setJobs(int jobs);
int mostThreads();

/// Calls a function for 0 to count - 1, in no order, and returns when all calls have. The first
/// exception that a call lets out comes out here. Where no thread can be had, the caller's does
/// the work.
void forEachInParallel(int count, const std::function<void(int)> &call);

} // namespace seamrevise
