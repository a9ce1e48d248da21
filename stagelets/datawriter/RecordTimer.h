#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>

namespace Plugin::NivexStageletPackageBase {

/// Says at fixed intervals that a record is due. Its thread takes no lock but its own, so that it can be stopped
/// under the node's lock. Intervals that pass unseen become one record, as each begins when the last one ended.
class RecordTimer
{
public:
    /// Longer periods end after this time.
    static constexpr std::chrono::milliseconds maxPeriod = std::chrono::hours(24 * 365 * 100);

    RecordTimer() = default;
    ~RecordTimer() { stop(); }
    RecordTimer(const RecordTimer&) = delete;
    RecordTimer& operator=(const RecordTimer&) = delete;

    /// Raises std::system_error if there is no thread to be had. Only while stopped.
    void start(std::uint64_t periodMs);
    /// Ends and joins the thread; does nothing when stopped.
    void stop();

    /// True once for one or more intervals that ended.
    bool takeDue();

private:
    void run();

    std::atomic<bool> recordDue_{false};     // written under the mutex
    std::atomic<bool> timerRunning_{false};  // written under the mutex
    std::chrono::milliseconds period_{0};    // fixed while the thread runs
    std::mutex mutex_;
    std::condition_variable condition_;
    std::thread thread_;
};

}  // namespace Plugin::NivexStageletPackageBase
