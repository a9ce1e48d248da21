#include <spdlog/logger.h>
#include <spdlog/sinks/stdout_color_sinks.h>

#include <cstdlib>
#include <string>

#include "utils/log.h"

namespace Nivex::DataProcessing::Utils {

namespace {

class SpdlogSink final : public ILogSink
{
public:
    SpdlogSink() : logger_("", std::make_shared<spdlog::sinks::stderr_color_sink_mt>(colorMode()))
    {
        logger_.set_level(spdlog::level::trace);
        logger_.set_pattern("%Y-%m-%d %H:%M:%S.%e %^%v%$");
    }

    void write(const LogEntry& entry) override
    {
        const spdlog::log_clock::time_point time(
            std::chrono::duration_cast<spdlog::log_clock::duration>(entry.time.getTimeSinceEpoch()));
        std::string line = std::to_string(static_cast<int>(entry.severity)) + " [";
        line.append(entry.category).append("] ").append(entry.message);
        logger_.log(time, {}, levelOf(entry.severity), spdlog::string_view_t(line));
    }

private:
    static spdlog::color_mode colorMode()
    {
        const char* noColor =
            std::getenv("NO_COLOR");  // NOLINT(concurrency-mt-unsafe): nobody here sets variables
        return noColor && *noColor ? spdlog::color_mode::never : spdlog::color_mode::automatic;
    }

    static spdlog::level::level_enum levelOf(Severitiy severity)
    {
        constexpr spdlog::level::level_enum levels[] = {
            spdlog::level::critical, spdlog::level::critical, spdlog::level::critical, spdlog::level::err,
            spdlog::level::warn,     spdlog::level::info,     spdlog::level::debug,    spdlog::level::trace};
        const int index = static_cast<int>(severity);
        return index < 0 ? levels[0] : levels[index > 7 ? 7 : index];
    }

    spdlog::logger logger_;
};

}  // namespace

std::shared_ptr<ILogSink> makeDefaultLogSink()
{
    return std::make_shared<SpdlogSink>();
}

}  // namespace Nivex::DataProcessing::Utils
