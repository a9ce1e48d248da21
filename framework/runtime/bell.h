#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace Nivex::DataProcessing::Runtime {

/// Wakes those who wait for something to happen. Shared by all who ring it, which may be done after the graph's
/// end.
class Bell
{
public:
    static constexpr auto never = std::chrono::steady_clock::time_point::max();

    void ring()
    {
        {
            const std::lock_guard guard(mutex_);
            ++rings_;
        }
        rung_.notify_all();
    }
    std::uint64_t getRings() const
    {
        const std::lock_guard guard(mutex_);
        return rings_;
    }
    /// Until it was rung more often than `rings` times.
    void waitUntil(std::chrono::steady_clock::time_point end, std::uint64_t rings)
    {
        std::unique_lock lock(mutex_);
        const auto isRung = [&] { return rings_ != rings; };
        if (end == never) {
            rung_.wait(lock, isRung);
        } else {
            rung_.wait_until(lock, end, isRung);
        }
    }

private:
    mutable std::mutex mutex_;  // guards rings_
    std::condition_variable rung_;
    std::uint64_t rings_ = 0;
};

}  // namespace Nivex::DataProcessing::Runtime
