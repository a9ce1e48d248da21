#include "logreporter.h"

#include <cctype>

#include "texttable.h"

namespace Host {

using Nivex::DataProcessing::Utils::LogEntry;

namespace {

bool isDigit(char c)
{
    return std::isdigit(static_cast<unsigned char>(c)) != 0;
}

bool isHexDigit(char c)
{
    return std::isxdigit(static_cast<unsigned char>(c)) != 0;
}

/// Told from a closing quote by what stands around it, since a quoted message may quote in turn.
bool isOpeningQuote(std::string_view message, std::size_t at)
{
    const bool isAfterWord = at != 0 && std::string_view(" ([").find(message[at - 1]) == std::string_view::npos;
    return !isAfterWord && at + 1 < message.size() && message[at + 1] != ' ';
}

/// Where the quotation ends that begins at `at`; npos if it does not end.
std::size_t findClosingQuote(std::string_view message, std::size_t at)
{
    int depth = 1;
    while (depth > 0 && (at = message.find('"', at + 1)) != std::string_view::npos)
        depth += isOpeningQuote(message, at) ? 1 : -1;
    return at;
}

}  // namespace

std::string reduceMessage(std::string_view message)
{
    std::string result;
    for (std::size_t i = 0; i < message.size(); ++i) {
        const auto closing = message[i] == '"' ? findClosingQuote(message, i) : std::string_view::npos;
        if (closing != std::string_view::npos) {
            i = closing;
        } else if (message.substr(i, 2) == "0x") {
            for (++i; i + 1 < message.size() && isHexDigit(message[i + 1]);)
                ++i;
        } else if (!isDigit(message[i])) {
            result += message[i];
        }
    }
    return result;
}

void LogReporter::write(const LogEntry& entry)
{
    std::string key(entry.category);
    key.append(1, '\0').append(entry.format).append(1, '\0').append(reduceMessage(entry.message));
    const std::string message = escapeControls(entry.message);
    {
        const std::lock_guard guard(mutex_);
        const auto known = causes_.find(key);
        if (known != causes_.end()) {
            ++known->second.repeats;
            return;
        }
        if (causes_.size() >= mostCauses) {
            ++untold_;
            return;
        }
        causes_.emplace(std::move(key), Cause{message, 0});
    }
    console_.writeLine("log " + std::to_string(static_cast<int>(entry.severity)) + " " +
                       std::string(entry.category) + ": " + message);
}

void LogReporter::reportRepeats()
{
    std::map<std::string, Cause> causes;
    std::uint64_t untold = 0;
    {
        const std::lock_guard guard(mutex_);
        causes.swap(causes_);
        std::swap(untold, untold_);
    }
    for (const auto& [key, cause] : causes) {
        if (cause.repeats != 0) {
            console_.writeLine("log: " + std::to_string(cause.repeats) + " more like: " + cause.message);
        }
    }
    if (untold != 0) console_.writeLine("log: " + std::to_string(untold) + " entries of further kinds");
}

LogToConsole::LogToConsole(int level) : reporter_(std::make_shared<LogReporter>(getConsole()))
{
    Nivex::DataProcessing::Utils::setLogLevel(level);
    Nivex::DataProcessing::Utils::setLogSink(reporter_);
}

LogToConsole::~LogToConsole()
{
    Nivex::DataProcessing::Utils::setLogSink(nullptr);
    reporter_->reportRepeats();
}

}  // namespace Host
