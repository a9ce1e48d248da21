#include "utils/datetime.h"

#include <ctime>

#include "gcbase/exception.h"

namespace Nivex::DataProcessing::Utils {

DateTime DateTime::now()
{
    return DateTime(std::chrono::system_clock::now().time_since_epoch());
}

GenICam::gcstring DateTime::toString() const
{
    const auto seconds = std::chrono::floor<std::chrono::seconds>(sinceEpoch_);
    const auto milliseconds = std::chrono::floor<std::chrono::milliseconds>(sinceEpoch_ - seconds);
    const std::time_t time = seconds.count();
    std::tm utc{};
    gmtime_r(&time, &utc);
    return GenICam::formatText("%04d-%02d-%02dT%02d:%02d:%02d.%03dZ", utc.tm_year + 1900, utc.tm_mon + 1,
                               utc.tm_mday, utc.tm_hour, utc.tm_min, utc.tm_sec,
                               static_cast<int>(milliseconds.count()));
}

}  // namespace Nivex::DataProcessing::Utils
