#pragma once

#include <memory>
#include <string_view>

#include "utils/datetime.h"

namespace Nivex::DataProcessing::Utils {

/// How grave a log entry is; lower is graver.
enum Severitiy : int  // sic
{
    SeverityEmergency = 0,
    SeverityAlert = 1,
    SeverityCritical = 2,
    SeverityRefused = 3,   ///< An operation was refused.
    SeverityFailure = 4,   ///< A failure was caught and dealt with.
    SeverityProgress = 5,  ///< Progress, coarse.
    SeverityDetail = 6,
    SeverityTrace = 7  ///< Progress, finest.
};

class LogCategory;
/// A log channel; valid for the life of the process. Get it once and keep it in a local static.
using CatId = const LogCategory*;

/// The channel of that name, made at its first use. Never throws; out of memory gives the channel "".
GENICAM_API CatId getCatId(const char* name) noexcept;

/// Writes one entry, with a printf-style format, to all sinks, unless its severity is above the channel's level
/// (then it costs one atomic load). For any thread; never throws: an entry that can't be rendered is written with
/// its format as the message, a sink that throws is named once per entry on stderr.
GENICAM_API void createLogEntry(Severitiy severity, CatId category, const char* format, ...) noexcept
    __attribute__((format(printf, 3, 4)));

/// True if an entry of that severity would be written; for callers whose arguments are costly.
GENICAM_API bool isLogged(Severitiy severity, CatId category) noexcept;

/// The greatest severity number that is written, for all channels; ends what was set for single channels.
/// Initially SeverityFailure. A level below 0 silences all.
GENICAM_API void setLogLevel(int level);
/// The same for one channel, whether it is in use already or not.
GENICAM_API void setLogLevel(const char* channel, int level);
GENICAM_API int getLogLevel() noexcept;
/// The level of one channel: its own, or else the general one.
GENICAM_API int getLogLevel(const char* channel);

/// What a sink gets. The texts are valid for the length of the call.
struct LogEntry
{
    Severitiy severity;
    std::string_view category;  ///< The channel's name.
    std::string_view format;    ///< The text before its arguments went in; equal for repeats of one entry.
    std::string_view message;
    DateTime time;
};

/// Receives the entries that pass the levels.
class GENICAM_API ILogSink
{
public:
    virtual ~ILogSink() = default;

    /// Called on the thread that logs, also on several at once, with no lock held. It may log itself, but must
    /// see to it that this ends.
    virtual void write(const LogEntry& entry) = 0;
};

/// A sink that writes lines to stderr, coloured on a terminal unless NO_COLOR is set.
GENICAM_API std::shared_ptr<ILogSink> makeDefaultLogSink();
/// Makes `sink` the only one; null brings back the default sink, which is also there initially.
/// A sink from a library that will be unloaded has to be taken out before.
GENICAM_API void setLogSink(std::shared_ptr<ILogSink> sink);
/// Adds a sink beside those in place; null is ignored.
GENICAM_API void addLogSink(std::shared_ptr<ILogSink> sink);
/// Takes a sink out; entries being written at this moment on other threads may still reach it.
GENICAM_API void removeLogSink(const std::shared_ptr<ILogSink>& sink);

}  // namespace Nivex::DataProcessing::Utils
