#include "process/backgroundwork.h"
#include "process/parallel.h"

#include <gtest/gtest.h>

#include <atomic>
#include <new>
#include <thread>
#include <vector>

using namespace seamrevise;

namespace
{

class Parallel : public ::testing::TestWithParam<int>
{
protected:
    Parallel() { setJobs(GetParam()); }
    ~Parallel() override { setJobs(0); }
};

TEST_P(Parallel, CallsOnceForEachNumberAndPassesOnWhatIsThrown)
{
    for (const int count : {0, 1, 2, 100}) {
        std::vector<std::atomic<int>> calls(static_cast<std::size_t>(count));
        forEachInParallel(count, [&](int i) { ++calls[static_cast<std::size_t>(i)]; });
        for (const auto &number : calls)
            EXPECT_EQ(number, 1);
    }
    EXPECT_THROW(forEachInParallel(5, [](int) { throw std::bad_alloc(); }), std::bad_alloc);
}

TEST_P(Parallel, BackgroundWorkIsDoneOnceEachAndHoldsNoMoreThanItMay)
{
    constexpr int most = 30;
    std::vector<std::atomic<int>> calls(200);
    std::atomic<int> waiting{0};
    BackgroundWork work;
    for (int round = 0; round < 2; ++round) { // it can be used again
        for (std::size_t i = 0; i < calls.size(); ++i) {
            const int bytes = static_cast<int>(i % 7);
            waiting += bytes;
            work.add(bytes, [&, i, bytes] {
                waiting -= bytes;
                std::this_thread::yield();
                ++calls[i];
            });
            work.helpUntil(most);
            // One may wait besides, and each thread has taken one whose bytes are still counted.
            EXPECT_LE(waiting, most + 6 * (1 + mostThreads()));
        }
        work.finish();
        for (const auto &number : calls)
            EXPECT_EQ(number, round + 1);
    }
}

TEST_P(Parallel, BackgroundWorkEndsWithWhatIsThrownFirst)
{
    std::atomic<int> done{0};
    {
        BackgroundWork work;
        for (int i = 0; i < 50; ++i) {
            work.add(1, [&] {
                if (++done == 10)
                    throw std::bad_alloc();
            });
        }
        EXPECT_THROW(work.finish(), std::bad_alloc);
        EXPECT_NO_THROW(work.finish());
        const int before = done;
        work.add(1, [&] { ++done; });
        work.finish();
        EXPECT_EQ(done, before + 1);
        // What it works on may go after it, however much waits.
        for (int i = 0; i < 50; ++i)
            work.add(1, [&] { ++done; });
    }
    const int atEnd = done;
    std::this_thread::yield();
    EXPECT_EQ(done, atEnd);
}

INSTANTIATE_TEST_SUITE_P(Jobs, Parallel, ::testing::Values(0, 1, 2, 9));

} // namespace
