#pragma once

#include <memory>
#include <vector>

#include "base/eventhandlers.h"

#include "threading/conditionvariable.h"
#include "threading/recursivemutex.h"
#include "threading/threadpool.h"

namespace Plugin::NivexStageletPackageBase {

/// Brings the removal of a camera from the thread of the camera's back end, where nobody may wait, to a thread of
/// the pool, where the node cleans up.
///
/// The final class must call `finishRemovals` first in its destructor, after it was deregistered from the camera,
/// and without a lock that its `handleCameraDeviceRemoval` needs: what is queued is withdrawn, what runs is waited
/// for. So no job outlives the handler.
class ThreadedConfigurationEventHandler : public Nivex::CConfigurationEventHandler
{
public:
    class CameraDeviceRemovalJob;

    ~ThreadedConfigurationEventHandler() override;
    ThreadedConfigurationEventHandler(const ThreadedConfigurationEventHandler&) = delete;
    ThreadedConfigurationEventHandler& operator=(const ThreadedConfigurationEventHandler&) = delete;

    /// Queues a job, unless one is waiting already. Doesn't wait. Nothing after finishRemovals.
    void OnCameraDeviceRemoved(Nivex::CInstantCamera& camera) override;

protected:
    /// Raises InvalidArgumentException for a null pool.
    explicit ThreadedConfigurationEventHandler(
        std::shared_ptr<Nivex::DataProcessing::Threading::ThreadPool> threadPool);

    /// The removal itself, on a thread of the pool, without a lock held. What it throws is logged by the pool.
    virtual void handleCameraDeviceRemoval() = 0;

    /// Waits until no removal is queued or running; those that come afterwards go on as before. Not to be called
    /// by a removal, nor with a lock that it needs.
    void waitForRemoval();

    /// Refuses further removals, withdraws a queued one, and waits until the pool has let go of all jobs. May be
    /// called again. Must not be called on a thread of the pool.
    void finishRemovals();

private:
    using Mutex = Nivex::DataProcessing::Threading::RecursiveMutex;
    using Condition = Nivex::DataProcessing::Threading::ConditionVariableAny;
    using Token = Nivex::DataProcessing::Threading::Token;

    void forgetEndedJobs();

    const std::shared_ptr<Nivex::DataProcessing::Threading::ThreadPool> threadPool_;
    const std::shared_ptr<Mutex> mutex_ = std::make_shared<Mutex>();  ///< Guards all below and the jobs' states.
    const std::shared_ptr<Condition> condition_ = std::make_shared<Condition>();
    std::vector<std::shared_ptr<CameraDeviceRemovalJob>>
        jobs_;                   ///< That have not finished; all but the last one run.
    std::vector<Token> tokens_;  ///< Of all jobs that the pool may still hold.
    bool finishing_ = false;
};

/// One removal on its way.
///
///     NotStarted --doWork--> Running --> Finished
///     NotStarted --withdraw------------> Finished
class ThreadedConfigurationEventHandler::CameraDeviceRemovalJob : public Nivex::DataProcessing::Threading::Job
{
public:
    enum class State
    {
        NotStarted = 0,
        Running = 1,
        Finished = 2
    };

    /// Raises InvalidArgumentException if the handler, RuntimeException if one of the others is null.
    CameraDeviceRemovalJob(ThreadedConfigurationEventHandler* handler, std::shared_ptr<Mutex> mutex,
                           std::shared_ptr<Condition> condition);

    /// Has the handler do the removal, once; a job that has been started or withdrawn does nothing. What the
    /// removal throws passes on, after the job has finished.
    void doWork() override;

    /// Turns a job that waits into a finished one; false if it was started before.
    bool withdraw();
    State getState() const;

private:
    class Finish;

    /// With mutex_ held; condition_ is to be notified afterwards.
    void endLocked();

    ThreadedConfigurationEventHandler* handler_;  ///< Null when finished.
    const std::shared_ptr<Mutex> mutex_;          ///< Guards handler_ and state_; never held while the node works.
    const std::shared_ptr<Condition> condition_;  ///< Tells that state_ has become Finished.
    State state_ = State::NotStarted;
};

}  // namespace Plugin::NivexStageletPackageBase
