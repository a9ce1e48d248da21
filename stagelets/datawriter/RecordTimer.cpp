#include "datawriter/RecordTimer.h"

#include <algorithm>

namespace Plugin::NivexStageletPackageBase {

void RecordTimer::start(std::uint64_t periodMs)
{
    constexpr auto limit = static_cast<std::uint64_t>(maxPeriod.count());
    period_ = std::chrono::milliseconds(std::min(periodMs, limit));
    recordDue_ = false;
    timerRunning_ = true;
    try {
        thread_ = std::thread(&RecordTimer::run, this);
    } catch (...) {
        timerRunning_ = false;
        throw;
    }
}

void RecordTimer::stop()
{
    {
        const std::lock_guard guard(mutex_);
        timerRunning_ = false;
    }
    condition_.notify_all();
    if (thread_.joinable()) thread_.join();
}

bool RecordTimer::takeDue()
{
    const std::lock_guard guard(mutex_);
    return recordDue_.exchange(false);
}

void RecordTimer::run()
{
    std::unique_lock lock(mutex_);
    while (timerRunning_) {
        const auto deadline = std::chrono::steady_clock::now() + period_;
        const bool isStopped = condition_.wait_until(lock, deadline, [this] { return !timerRunning_; });
        if (!isStopped) recordDue_ = true;
    }
}

}  // namespace Plugin::NivexStageletPackageBase
