#include "datawriter/TimeSnapshot.h"

#include <ctime>

namespace Plugin::NivexStageletPackageBase {

void TimeSnapshot::fill(std::chrono::system_clock::time_point time)
{
    const auto seconds = std::chrono::floor<std::chrono::seconds>(time);
    const std::time_t whole = std::chrono::system_clock::to_time_t(seconds);
    std::tm local{};
    localtime_r(&whole, &local);
    year = local.tm_year + 1900;
    month = local.tm_mon + 1;
    day = local.tm_mday;
    hour = local.tm_hour;
    minute = local.tm_min;
    second = local.tm_sec;
    millisecond = static_cast<std::int32_t>(std::chrono::floor<std::chrono::milliseconds>(time - seconds).count());
    valid = true;
}

void TimeSnapshot::require()
{
    if (!valid) fill(std::chrono::system_clock::now());
}

}  // namespace Plugin::NivexStageletPackageBase
