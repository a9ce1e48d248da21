#include "camera/threadedconfigurationeventhandler.h"

#include <utility>

#include "gcbase/exception.h"

#include "camera/cameralog.h"

namespace Plugin::NivexStageletPackageBase {

namespace Utils = Nivex::DataProcessing::Utils;
namespace Threading = Nivex::DataProcessing::Threading;
using Guard = Threading::UniqueLock<Threading::RecursiveMutex>;

ThreadedConfigurationEventHandler::ThreadedConfigurationEventHandler(
    std::shared_ptr<Threading::ThreadPool> threadPool)
    : threadPool_(std::move(threadPool))
{
    if (!threadPool_) GENICAM_THROW(InvalidArgumentException, "ThreadPool must not be nullptr");
}

ThreadedConfigurationEventHandler::~ThreadedConfigurationEventHandler()
{
    finishRemovals();
}

void ThreadedConfigurationEventHandler::OnCameraDeviceRemoved(Nivex::CInstantCamera&)
{
    {
        const Guard guard(*mutex_);
        const bool isOneWaiting =
            !jobs_.empty() && jobs_.back()->getState() == CameraDeviceRemovalJob::State::NotStarted;
        if (finishing_ || isOneWaiting) return;
        forgetEndedJobs();
        jobs_.reserve(jobs_.size() + 1);
        tokens_.reserve(tokens_.size() + 1);
        const auto job = std::make_shared<CameraDeviceRemovalJob>(this, mutex_, condition_);
        tokens_.push_back(threadPool_->addJob(job));
        // In time: the job's work begins with the mutex.
        jobs_.push_back(job);
    }
    Utils::createLogEntry(Utils::SeverityTrace, cameraChannel(), "Camera: Added Job");
}

void ThreadedConfigurationEventHandler::forgetEndedJobs()
{
    std::erase_if(tokens_, [](const Token& token) { return token.isDone(); });
}

void ThreadedConfigurationEventHandler::waitForRemoval()
{
    Guard guard(*mutex_);
    condition_->wait(guard, [this] { return jobs_.empty(); });
}

void ThreadedConfigurationEventHandler::finishRemovals()
{
    std::shared_ptr<CameraDeviceRemovalJob> newest;
    std::vector<Token> tokens;
    {
        const Guard guard(*mutex_);
        finishing_ = true;
        if (!jobs_.empty()) newest = jobs_.back();
        tokens.swap(tokens_);
    }
    if (newest) newest->withdraw();
    newest.reset();
    waitForRemoval();
    // The pool may still hold jobs that have ended or were withdrawn, whose code goes with the package.
    for (const Token& token : tokens) {
        token.wait();
    }
}

ThreadedConfigurationEventHandler::CameraDeviceRemovalJob::CameraDeviceRemovalJob(
    ThreadedConfigurationEventHandler* handler, std::shared_ptr<Mutex> mutex, std::shared_ptr<Condition> condition)
    : handler_(handler), mutex_(std::move(mutex)), condition_(std::move(condition))
{
    if (!handler_) {
        GENICAM_THROW(InvalidArgumentException, "ThreadedConfigurationEventHandler must not be nullptr.");
    }
    if (!mutex_) {
        GENICAM_THROW(RuntimeException, "Could not get mutex from ThreadedConfigurationEventHandler.");
    }
    if (!condition_) {
        GENICAM_THROW(RuntimeException,
                      "Could not get condition variable from ThreadedConfigurationEventHandler.");
    }
}

/// Ends a job, whether its removal returns or throws.
class ThreadedConfigurationEventHandler::CameraDeviceRemovalJob::Finish
{
public:
    explicit Finish(CameraDeviceRemovalJob& job) : job_(job) {}
    Finish(const Finish&) = delete;
    Finish& operator=(const Finish&) = delete;
    ~Finish()
    {
        {
            const Guard guard(*job_.mutex_);
            job_.endLocked();
        }
        job_.condition_->notifyAll();
        Utils::createLogEntry(Utils::SeverityTrace, cameraChannel(),
                              "Camera: CameraDeviceRemovalJob::m_state = Finished");
    }

private:
    CameraDeviceRemovalJob& job_;
};

void ThreadedConfigurationEventHandler::CameraDeviceRemovalJob::doWork()
{
    Utils::createLogEntry(Utils::SeverityTrace, cameraChannel(), "Camera: CameraDeviceRemovalJob::doWork");
    {
        const Guard guard(*mutex_);
        if (state_ != State::NotStarted) return;
        state_ = State::Running;
    }
    const Finish finish(*this);
    handler_->handleCameraDeviceRemoval();
}

bool ThreadedConfigurationEventHandler::CameraDeviceRemovalJob::withdraw()
{
    {
        const Guard guard(*mutex_);
        if (state_ != State::NotStarted) return false;
        endLocked();
    }
    condition_->notifyAll();
    Utils::createLogEntry(Utils::SeverityTrace, cameraChannel(), "Camera: Withdrew Job");
    return true;
}

void ThreadedConfigurationEventHandler::CameraDeviceRemovalJob::endLocked()
{
    std::erase_if(handler_->jobs_, [this](const auto& job) { return job.get() == this; });
    handler_ = nullptr;
    state_ = State::Finished;
}

ThreadedConfigurationEventHandler::CameraDeviceRemovalJob::State
ThreadedConfigurationEventHandler::CameraDeviceRemovalJob::getState() const
{
    const Guard guard(*mutex_);
    return state_;
}

}  // namespace Plugin::NivexStageletPackageBase
