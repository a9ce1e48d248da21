#include "threading/threadpool.h"

#include <algorithm>

#include "gcbase/exception.h"

#include "utils/log.h"

namespace Nivex::DataProcessing::Threading {

using Utils::createLogEntry;

struct Token::State
{
    std::mutex mutex;
    std::condition_variable changed;
    bool done = false;
};

bool Token::isDone() const
{
    if (!state_) return true;
    std::lock_guard lock(state_->mutex);
    return state_->done;
}

void Token::wait() const
{
    if (!state_) return;
    std::unique_lock lock(state_->mutex);
    state_->changed.wait(lock, [this] { return state_->done; });
}

namespace {

auto poolCategory()
{
    static const auto category = Utils::getCatId("nivex.dataprocessing.threading.ThreadPool");
    return category;
}

void runGuarded(const std::function<void()>& work)
{
    try {
        work();
    } catch (...) {
        createLogEntry(Utils::SeverityFailure, poolCategory(),
                       "ThreadPool: Exception caught in a job. Message: %s",
                       GenICam::describeCurrentException().c_str());
    }
}

}  // namespace

ThreadPool::ThreadPool(std::size_t threadCount)
{
    if (threadCount == 0) threadCount = std::max(2U, std::thread::hardware_concurrency());
    threads_.reserve(threadCount);
    try {
        for (std::size_t i = 0; i < threadCount; ++i)
            threads_.emplace_back([this] { runThread(); });
    } catch (...) {
        end();  // Those that came would end the process, were they left alone.
        throw;
    }
}

ThreadPool::~ThreadPool()
{
    end();
}

void ThreadPool::end()
{
    {
        std::lock_guard lock(mutex_);
        ending_ = true;
    }
    wake_.notify_all();
    for (std::thread& thread : threads_)
        thread.join();
}

Token ThreadPool::addJob(std::shared_ptr<Job> job)
{
    if (!job) GENICAM_THROW(InvalidArgumentException, "The job for the thread pool is null.");
    Token token;
    token.state_ = std::make_shared<Token::State>();
    post([job = std::move(job), state = token.state_]() mutable {
        runGuarded([&job] { job->doWork(); });
        // The job goes before its end is told: who waits may destroy what the job refers to.
        job.reset();
        std::lock_guard lock(state->mutex);
        state->done = true;
        state->changed.notify_all();
    });
    return token;
}

void ThreadPool::post(std::function<void()> work)
{
    bool wake = false;
    {
        std::lock_guard lock(mutex_);
        queue_.push_back(std::move(work));
        wake = idle_ > 0;
    }
    if (wake) wake_.notify_one();
}

void ThreadPool::runThread()
{
    std::unique_lock lock(mutex_);
    for (;;) {
        if (!queue_.empty()) {
            std::function<void()> work = std::move(queue_.front());
            queue_.pop_front();
            lock.unlock();
            runGuarded(work);
            work = nullptr;
            lock.lock();
        } else if (ending_) {
            return;
        } else {
            ++idle_;
            wake_.wait(lock);
            --idle_;
        }
    }
}

}  // namespace Nivex::DataProcessing::Threading
