#include "console.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>

namespace Host {

namespace {

// To the first column, and away with what stands in the line: cursor control, no colour.
constexpr std::string_view clearLine = "\r\x1b[K";

bool isRealTerminal(int descriptor)
{
    const char* kind = std::getenv("TERM");  // NOLINT(concurrency-mt-unsafe): nothing here changes the environment
    return isatty(descriptor) && kind && std::string_view(kind) != "dumb";
}

}  // namespace

void Console::put(std::string_view text) const
{
    while (!text.empty()) {
        const ssize_t written = write(descriptor_, text.data(), text.size());
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return;
        text.remove_prefix(static_cast<std::size_t>(written));
    }
}

void Console::writeLine(std::string_view text)
{
    const std::lock_guard guard(mutex_);
    std::string whole;
    if (!progress_.empty()) whole += clearLine;
    whole += text;
    whole += '\n';
    whole += progress_;
    put(whole);
}

void Console::showProgress(const std::string& text)
{
    if (!isTerminal_) return;
    const std::lock_guard guard(mutex_);
    progress_ = text;
    put(std::string(clearLine) + text);
}

void Console::clearProgress()
{
    const std::lock_guard guard(mutex_);
    if (progress_.empty()) return;
    progress_.clear();
    put(clearLine);
}

Console& getConsole()
{
    static Console console(STDERR_FILENO, isRealTerminal(STDERR_FILENO));
    return console;
}

}  // namespace Host
