// The way of a camera's removal from the camera's thread to a thread of the pool.
#include <gmock/gmock.h>

#include <atomic>
#include <future>
#include <stdexcept>

#include "base/instantcamera.h"

#include "camera/threadedconfigurationeventhandler.h"
#include "framework/logcapture.h"
#include "framework/refusal.h"

namespace Plugin::NivexStageletPackageBase::Test {
namespace {

namespace Threading = Nivex::DataProcessing::Threading;
using Job = ThreadedConfigurationEventHandler::CameraDeviceRemovalJob;
using Texts = std::vector<std::string>;

constexpr const char* added = "Camera: Added Job";
constexpr const char* withdrawn = "Camera: Withdrew Job";
constexpr const char* working = "Camera: CameraDeviceRemovalJob::doWork";
constexpr const char* finished = "Camera: CameraDeviceRemovalJob::m_state = Finished";

class Handler : public ThreadedConfigurationEventHandler
{
public:
    explicit Handler(std::shared_ptr<Threading::ThreadPool> pool)
        : ThreadedConfigurationEventHandler(std::move(pool))
    {}
    ~Handler() override { finishRemovals(); }

    using ThreadedConfigurationEventHandler::finishRemovals;
    using ThreadedConfigurationEventHandler::waitForRemoval;
    void handleCameraDeviceRemoval() override
    {
        if (removal) removal();
        ++removals;
    }

    std::function<void()> removal;
    std::atomic<int> removals{0};
};

class RemovalTest : public testing::Test
{
protected:
    void removeCamera() { handler->OnCameraDeviceRemoved(camera); }
    /// Has the first removal begin, and end when the test says so.
    void holdFirstRemoval()
    {
        handler->removal = [this, first = true]() mutable {
            if (!std::exchange(first, false)) return;
            began.set_value(std::this_thread::get_id());
            mayEnd.get_future().wait();
        };
    }

    ScopedLogCapture log;
    std::shared_ptr<Threading::ThreadPool> pool = std::make_shared<Threading::ThreadPool>(1);
    std::promise<std::thread::id> began;
    std::promise<void> mayEnd;
    Nivex::CInstantCamera camera;
    std::unique_ptr<Handler> handler = std::make_unique<Handler>(pool);
};

TEST_F(RemovalTest, RunsOnThePool)
{
    holdFirstRemoval();
    removeCamera();  // must not wait for the removal
    EXPECT_NE(began.get_future().get(), std::this_thread::get_id());
    mayEnd.set_value();
    handler->waitForRemoval();
    removeCamera();
    handler->waitForRemoval();
    EXPECT_EQ(handler->removals, 2);
    handler->finishRemovals();
    EXPECT_THAT(log.messages("nivex.dataprocessing.stagelet.Camera"),
                testing::UnorderedElementsAre(added, working, finished, added, working, finished));
    EXPECT_EQ(log.lines().front().severity, 7);
}

TEST_F(RemovalTest, ARemovalWhileAnotherRunsIsNotForgotten)
{
    holdFirstRemoval();
    removeCamera();
    began.get_future().wait();
    removeCamera();
    removeCamera();  // one is waiting already
    auto waiter = std::async(std::launch::async, [&] {
        handler->waitForRemoval();
        return handler->removals.load();
    });
    mayEnd.set_value();
    EXPECT_EQ(waiter.get(), 2);
}

TEST_F(RemovalTest, TheEndWithdrawsWhatWaits)
{
    pool->post([&] { mayEnd.get_future().wait(); });
    removeCamera();
    auto end = std::async(std::launch::async, [&] {
        handler->finishRemovals();
        removeCamera();
        const int removals = handler->removals;
        handler.reset();
        return removals;
    });
    for (Texts lines; std::count(lines.begin(), lines.end(), withdrawn) == 0; lines = log.messages())
        std::this_thread::yield();
    EXPECT_EQ(end.wait_for(std::chrono::seconds(0)), std::future_status::timeout) << "the pool still has the job";
    mayEnd.set_value();
    EXPECT_EQ(end.get(), 0);
    EXPECT_EQ(log.messages(), (Texts{added, withdrawn, working}));
}

TEST_F(RemovalTest, TheEndWaitsForWhatRuns)
{
    holdFirstRemoval();
    removeCamera();
    began.get_future().wait();
    auto end = std::async(std::launch::async, [&] {
        handler->finishRemovals();
        return handler->removals.load();
    });
    mayEnd.set_value();
    EXPECT_EQ(end.get(), 1);
}

TEST_F(RemovalTest, ARemovalThatThrowsIsOverToo)
{
    handler->removal = [] { throw std::logic_error("no"); };
    removeCamera();
    handler->waitForRemoval();
    handler->finishRemovals();
    EXPECT_EQ(handler->removals, 0);
    EXPECT_THAT(log.messages(), testing::Contains("ThreadPool: Exception caught in a job. Message: no"));
}

TEST_F(RemovalTest, JobsWorkOnce)
{
    const auto mutex = std::make_shared<Threading::RecursiveMutex>();
    const auto condition = std::make_shared<Threading::ConditionVariableAny>();
    Job job(handler.get(), mutex, condition);
    job.doWork();
    EXPECT_EQ(job.getState(), Job::State::Finished);
    EXPECT_FALSE(job.withdraw());
    job.doWork();
    EXPECT_EQ(handler->removals, 1);
}

TEST_F(RemovalTest, NeedsAllItsParts)
{
    const auto mutex = std::make_shared<Threading::RecursiveMutex>();
    const auto condition = std::make_shared<Threading::ConditionVariableAny>();
    const std::pair<std::function<void()>, const char*> rows[] = {
        {[&] { Job(nullptr, mutex, condition); }, "ThreadedConfigurationEventHandler must not be nullptr."},
        {[&] { Job(handler.get(), nullptr, condition); },
         "Could not get mutex from ThreadedConfigurationEventHandler."},
        {[&] { Job(handler.get(), mutex, nullptr); },
         "Could not get condition variable from ThreadedConfigurationEventHandler."},
        {[] { Handler(nullptr).finishRemovals(); }, "ThreadPool must not be nullptr"},
    };
    for (const auto& [make, text] : rows) {
        const bool isMissingPart = std::string(text).starts_with("Could not");
        EXPECT_EQ(isMissingPart ? refusal<GenICam::RuntimeException>(make)
                                : refusal<GenICam::InvalidArgumentException>(make),
                  text);
    }
}

}  // namespace
}  // namespace Plugin::NivexStageletPackageBase::Test
