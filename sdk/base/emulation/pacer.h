#pragma once

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <optional>

namespace Nivex::Emulation {

/// Says when exposures begin. At a frame rate they begin at whole multiples of its period after the first, however
/// late the frames before were: nothing adds up.
class Pacer
{
public:
    using Clock = std::chrono::steady_clock;

    /// The next exposure is the first.
    void Restart() { last_.reset(); }

    /// Begin of the next exposure: without a rate, now; else a period after the one before. A triggered one
    /// begins now if that period is over.
    Clock::time_point Next(Clock::time_point now, std::optional<double> rate, std::chrono::nanoseconds exposure,
                           bool triggered)
    {
        const double period = rate ? std::max(1e9 / *rate, static_cast<double>(exposure.count())) : 0;
        if (!last_ || !rate || period != period_) {
            base_ = last_ && rate ? *last_ : now;
            count_ = last_ && rate ? 1 : 0;
            period_ = period;
        }
        Clock::time_point start = At(count_++);
        if (triggered && start < now) {
            base_ = start = now;
            count_ = 1;
        }
        last_ = start;
        return start;
    }

private:
    Clock::time_point At(std::uint64_t count) const
    {
        return base_ + std::chrono::nanoseconds(std::llround(static_cast<double>(count) * period_));
    }

    std::optional<Clock::time_point> last_;
    Clock::time_point base_;
    std::uint64_t count_ = 0;
    double period_ = 0;
};

}  // namespace Nivex::Emulation
