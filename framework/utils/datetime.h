#pragma once

#include <chrono>
#include <compare>
#include <cstdint>

#include "gcbase/gcstring.h"

namespace Nivex::DataProcessing::Utils {

/// An instant of the system clock, to the nanosecond.
class GENICAM_API DateTime
{
public:
    /// 1970-01-01 00:00:00 UTC.
    constexpr DateTime() = default;
    constexpr explicit DateTime(std::chrono::nanoseconds sinceEpoch) : sinceEpoch_(sinceEpoch) {}

    static DateTime now();

    /// Counted from 1970-01-01 00:00:00 UTC, without leap seconds.
    constexpr std::chrono::nanoseconds getTimeSinceEpoch() const { return sinceEpoch_; }
    /// In UTC after ISO 8601, as in 2024-02-29T12:30:05.007Z.
    GenICam::gcstring toString() const;

    friend constexpr auto operator<=>(const DateTime&, const DateTime&) = default;

private:
    std::chrono::nanoseconds sinceEpoch_{0};
};

}  // namespace Nivex::DataProcessing::Utils
