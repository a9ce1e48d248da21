#include "utils/log.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace Nivex::DataProcessing::Utils {

class LogCategory
{
public:
    LogCategory(std::string name, int level) : name_(std::move(name)), level_(level) {}

    const std::string& getName() const noexcept { return name_; }
    int getLevel() const noexcept { return level_.load(std::memory_order_relaxed); }
    void setLevel(int level) noexcept { level_.store(level, std::memory_order_relaxed); }

private:
    const std::string name_;
    std::atomic<int> level_;
};

namespace {

using Sinks = std::vector<std::shared_ptr<ILogSink>>;

/// The state of the log. Never destroyed: libraries log until the very end of the process.
class Log
{
public:
    static Log& instance()
    {
        static Log& log = *new Log;
        return log;
    }

    CatId getCategory(const std::string& name) { return &categoryOf(name); }
    CatId getNoCategory() const noexcept { return &noCategory_; }

    std::shared_ptr<const Sinks> getSinks()
    {
        const std::lock_guard lock(mutex_);
        return currentSinks();
    }

    template <typename Change>
    void changeSinks(const Change& apply)
    {
        std::shared_ptr<const Sinks> previous;  // Sinks die without the lock; they may log.
        const std::lock_guard lock(mutex_);
        Sinks changed = *currentSinks();
        apply(changed);
        previous = std::exchange(sinks_, std::make_shared<const Sinks>(std::move(changed)));
    }

    int getLevel() const noexcept { return level_.load(std::memory_order_relaxed); }
    int getLevel(const std::string& channel) { return categoryOf(channel).getLevel(); }

    void setLevel(int level)
    {
        const std::lock_guard lock(mutex_);
        level_.store(level, std::memory_order_relaxed);
        noCategory_.setLevel(level);
        for (auto& [name, category] : categories_)
            category.setLevel(level);
    }

    void setLevel(const std::string& channel, int level) { categoryOf(channel).setLevel(level); }

private:
    const std::shared_ptr<const Sinks>& currentSinks()
    {
        if (!sinks_) sinks_ = std::make_shared<const Sinks>(Sinks{makeDefaultLogSink()});
        return sinks_;
    }

    LogCategory& categoryOf(const std::string& name)
    {
        const std::lock_guard lock(mutex_);
        return categories_.try_emplace(name, name, getLevel()).first->second;
    }

    std::mutex mutex_;
    std::atomic<int> level_{SeverityFailure};
    LogCategory noCategory_{"", SeverityFailure};
    std::map<std::string, LogCategory> categories_;
    std::shared_ptr<const Sinks> sinks_;
};

[[gnu::format(printf, 1, 0)]] std::string render(const char* format, std::va_list arguments)
{
    std::va_list measured;
    va_copy(measured, arguments);
    char shortText[512];
    const int length = std::vsnprintf(shortText, sizeof shortText, format, measured);
    va_end(measured);
    if (length < 0) return format;
    const auto size = static_cast<std::size_t>(length);
    if (size < sizeof shortText) return std::string(shortText, size);
    std::string text(size, '\0');
    std::vsnprintf(text.data(), size + 1, format, arguments);
    return text;
}

void writeTo(ILogSink& sink, const LogEntry& entry) noexcept
{
    try {
        sink.write(entry);
    } catch (...) {
        std::fprintf(stderr, "A log sink failed on: %.*s\n", static_cast<int>(entry.message.size()),
                     entry.message.data());
    }
}

}  // namespace

CatId getCatId(const char* name) noexcept
{
    try {
        return Log::instance().getCategory(name ? name : "");
    } catch (...) {
        return Log::instance().getNoCategory();
    }
}

bool isLogged(Severitiy severity, CatId category) noexcept
{
    if (!category) category = Log::instance().getNoCategory();
    return static_cast<int>(severity) <= category->getLevel();
}

void createLogEntry(Severitiy severity, CatId category, const char* format, ...) noexcept
{
    if (!category) category = Log::instance().getNoCategory();
    if (!isLogged(severity, category)) return;
    std::va_list arguments;
    va_start(arguments, format);
    try {
        const std::string message = render(format, arguments);
        const LogEntry entry{severity, category->getName(), format, message, DateTime::now()};
        const auto sinks = Log::instance().getSinks();
        for (const auto& sink : *sinks)
            writeTo(*sink, entry);
    } catch (...) {
        std::fprintf(stderr, "A log entry could not be written: %s\n", format);
    }
    va_end(arguments);
}

void setLogLevel(int level)
{
    Log::instance().setLevel(level);
}

void setLogLevel(const char* channel, int level)
{
    Log::instance().setLevel(channel, level);
}

int getLogLevel() noexcept
{
    return Log::instance().getLevel();
}

int getLogLevel(const char* channel)
{
    return Log::instance().getLevel(channel);
}

void setLogSink(std::shared_ptr<ILogSink> sink)
{
    if (!sink) sink = makeDefaultLogSink();
    Log::instance().changeSinks([&](Sinks& sinks) { sinks = {sink}; });
}

void addLogSink(std::shared_ptr<ILogSink> sink)
{
    if (!sink) return;
    Log::instance().changeSinks([&](Sinks& sinks) { sinks.push_back(sink); });
}

void removeLogSink(const std::shared_ptr<ILogSink>& sink)
{
    Log::instance().changeSinks([&](Sinks& sinks) { std::erase(sinks, sink); });
}

}  // namespace Nivex::DataProcessing::Utils
