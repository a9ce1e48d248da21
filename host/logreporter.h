#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "console.h"
#include "utils/log.h"

namespace Host {

/// Writes log entries to the console, each distinct cause once. Two entries have the same cause if they are equal
/// but for what stands in quotes, numbers and addresses.
class LogReporter : public Nivex::DataProcessing::Utils::ILogSink
{
public:
    /// Beyond so many causes new ones are only counted.
    static constexpr std::size_t mostCauses = 200;

    explicit LogReporter(Console& console) : console_(console) {}

    void write(const Nivex::DataProcessing::Utils::LogEntry& entry) override;
    /// Tells how often each cause came again, and begins anew.
    void reportRepeats();

private:
    struct Cause
    {
        std::string message;  ///< The first one.
        std::uint64_t repeats = 0;
    };

    Console& console_;
    std::mutex mutex_;  // guards the members below
    std::map<std::string, Cause> causes_;
    std::uint64_t untold_ = 0;
};

/// The log goes to the console from its making to its end.
class LogToConsole
{
public:
    /// Entries of severity `level` and graver are shown.
    explicit LogToConsole(int level);
    ~LogToConsole();
    LogToConsole(const LogToConsole&) = delete;
    LogToConsole& operator=(const LogToConsole&) = delete;

private:
    const std::shared_ptr<LogReporter> reporter_;
};

/// The message without what stands in double quotes, and without numbers and addresses.
std::string reduceMessage(std::string_view message);

}  // namespace Host
