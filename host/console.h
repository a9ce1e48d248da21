#pragma once

#include <mutex>
#include <string>
#include <string_view>

namespace Host {

/// Where messages for a person go, whole lines at a time, and, on a terminal, one line of progress that is
/// replaced in place. Any thread may call it.
class Console
{
public:
    /// `descriptor` is written to directly; `isTerminal` false makes showProgress do nothing. What cannot be
    /// written is dropped, since there is nobody to tell.
    Console(int descriptor, bool isTerminal) : descriptor_(descriptor), isTerminal_(isTerminal) {}

    bool isTerminal() const { return isTerminal_; }
    /// `text` without line feed; several lines may stand in it.
    void writeLine(std::string_view text);
    void showProgress(const std::string& text);
    void clearProgress();

private:
    void put(std::string_view text) const;

    const int descriptor_;
    const bool isTerminal_;
    std::mutex mutex_;  // guards progress_, and keeps lines whole
    std::string progress_;
};

/// The console on stderr. A terminal that TERM calls "dumb" counts as none.
Console& getConsole();

}  // namespace Host
