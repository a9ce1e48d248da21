#include "threading/threadpool.h"

#include <gtest/gtest.h>

#include <atomic>
#include <latch>

#include "gcbase/exception.h"

using namespace Nivex::DataProcessing::Threading;

namespace {

struct CountingJob : Job
{
    CountingJob(std::atomic<int>& jobs, bool failing) : count(jobs), fails(failing) {}
    void doWork() override
    {
        ++count;
        if (fails) throw 1;
    }
    std::atomic<int>& count;
    bool fails;
};

TEST(ThreadPool, ATokenIsDoneAfterItsJobAlsoWhenThatFails)
{
    std::atomic<int> count = 0;
    ThreadPool pool(2);
    const Token good = pool.addJob(std::make_shared<CountingJob>(count, false));
    const Token bad = pool.addJob(std::make_shared<CountingJob>(count, true));
    good.wait();
    bad.wait();
    EXPECT_TRUE(good.isDone() && bad.isDone() && Token().isDone());
    EXPECT_EQ(count, 2);
    EXPECT_THROW(pool.addJob(nullptr), GenICam::InvalidArgumentException);
}

TEST(ThreadPool, DestructionRunsWhatIsQueuedIncludingWorkAddedByWork)
{
    std::atomic<int> count = 0;
    {
        ThreadPool pool(1);
        for (int i = 0; i < 100; ++i) {
            pool.post([&] { pool.post([&] { ++count; }); });
        }
    }
    EXPECT_EQ(count, 100);
}

TEST(ThreadPool, UsesAllItsThreads)
{
    ThreadPool pool(3);
    std::latch allIn(3);
    std::latch done(3);
    for (int i = 0; i < 3; ++i) {
        pool.post([&] {
            allIn.arrive_and_wait();
            done.count_down();
        });
    }
    done.wait();
    EXPECT_EQ(pool.getThreadCount(), 3U);
}

}  // namespace
