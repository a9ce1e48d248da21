#pragma once

#include <chrono>
#include <cstdint>

namespace Plugin::NivexStageletPackageBase {

/// The local time that all names and texts of one unit of work show: one start, one update or one stop. Its owner
/// makes a new one for each; it is filled when the first token asks for it.
struct TimeSnapshot
{
    bool valid = false;
    std::int32_t year = 0;
    std::int32_t month = 0;  ///< 1 to 12.
    std::int32_t day = 0;
    std::int32_t hour = 0;
    std::int32_t minute = 0;
    std::int32_t second = 0;
    std::int32_t millisecond = 0;

    void fill(std::chrono::system_clock::time_point time);
    /// Fills it with the present time unless it is filled.
    void require();
};

}  // namespace Plugin::NivexStageletPackageBase
