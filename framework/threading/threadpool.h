#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "gcbase/export.h"

namespace Nivex::DataProcessing::Threading {

/// A piece of work for a pool. What `doWork` throws is logged and goes no further.
class GENICAM_API Job
{
public:
    virtual ~Job() = default;
    virtual void doWork() = 0;
};

/// Follows one queued job. Copies follow the same job; an empty token is done.
class GENICAM_API Token
{
public:
    Token() = default;
    bool isDone() const;
    /// Waits for the end of the job. Must not be called from a thread of the same pool.
    void wait() const;

private:
    friend class ThreadPool;
    struct State;
    std::shared_ptr<State> state_;
};

/// A fixed number of threads that run work in the order of arrival. Any thread may add work, those of the pool
/// included. Destruction runs what is queued and joins the threads; it must not happen on one of them.
class GENICAM_API ThreadPool
{
public:
    /// `threadCount` 0 means the number of cores, but at least two. Raises std::system_error if the system gives
    /// no more threads.
    explicit ThreadPool(std::size_t threadCount = 0);
    ~ThreadPool();
    ThreadPool(const ThreadPool&) = delete;
    ThreadPool& operator=(const ThreadPool&) = delete;

    /// Raises InvalidArgumentException for a null job.
    Token addJob(std::shared_ptr<Job> job);
    /// Work without a token. What it throws is logged.
    void post(std::function<void()> work);

    std::size_t getThreadCount() const { return threads_.size(); }

private:
    void runThread();
    void end();

    std::mutex mutex_;  // guards queue_, idle_ and ending_
    std::condition_variable wake_;
    std::deque<std::function<void()>> queue_;
    std::size_t idle_ = 0;
    bool ending_ = false;
    std::vector<std::thread> threads_;
};

}  // namespace Nivex::DataProcessing::Threading
