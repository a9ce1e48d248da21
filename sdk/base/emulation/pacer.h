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

    /// What the times depend on.
    struct Terms
    {
        std::optional<double> rate;           ///< In Hz; none: as fast as it can.
        std::chrono::nanoseconds exposure{};  ///< No period is shorter.
        bool triggered = false;
    };

    /// The next exposure is the first.
    void Restart() { last_.reset(); }

    /// Begin of the next exposure: without a rate, now; else a period after the one before. A triggered one
    /// begins now if that period is over. May be asked again with other terms.
    Clock::time_point Next(Clock::time_point now, const Terms& terms) const
    {
        if (!last_ || !terms.rate) return now;
        const double period = PeriodOf(terms);
        const Clock::time_point due =
            period == period_ ? After(base_, static_cast<double>(count_) * period) : After(*last_, period);
        return terms.triggered ? std::max(due, now) : due;
    }

    /// The exposure begins at `start`, which Next gave for these terms.
    void Take(Clock::time_point start, const Terms& terms)
    {
        const double period = PeriodOf(terms);
        const bool isRegular =
            last_ && period == period_ && start == After(base_, static_cast<double>(count_) * period);
        if (!isRegular) base_ = start;
        count_ = isRegular ? count_ + 1 : 1;
        period_ = period;
        last_ = start;
    }

private:
    static double PeriodOf(const Terms& terms)
    {
        return terms.rate ? std::max(1e9 / *terms.rate, static_cast<double>(terms.exposure.count())) : 0;
    }
    static Clock::time_point After(Clock::time_point time, double ns)
    {
        return time + std::chrono::nanoseconds(std::llround(ns));
    }

    std::optional<Clock::time_point> last_;
    Clock::time_point base_;   // exposures lie `period_` apart from here on
    std::uint64_t count_ = 0;  // of them, the one at base_ included
    double period_ = 0;        // in ns
};

}  // namespace Nivex::Emulation
