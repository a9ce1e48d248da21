#include "units.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>

namespace Host {

namespace {

template <typename Number>
std::optional<Number> parseNumber(std::string_view text)
{
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (text.empty() || error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

std::string format(int decimals, double value, const char* unit)
{
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.*f %s", decimals, value, unit);
    return text.data();
}

struct DurationUnit
{
    std::string_view name;
    double nanoseconds;
};
constexpr DurationUnit durationUnits[] = {{"ns", 1.0}, {"us", 1e3}, {"ms", 1e6},
                                          {"s", 1e9},  {"m", 60e9}, {"h", 3600e9}};

}  // namespace

std::optional<std::chrono::nanoseconds> parseDuration(std::string_view text)
{
    const std::size_t unitStart = text.find_last_of("0123456789.") + 1;
    const std::string_view digits = text.substr(0, unitStart);
    if (digits.find_first_not_of("0123456789.") != std::string_view::npos) return std::nullopt;
    const auto number = parseNumber<double>(digits);
    for (const DurationUnit& unit : durationUnits) {
        if (!number || unit.name != text.substr(unitStart)) continue;
        const double nanoseconds = *number * unit.nanoseconds;
        if (nanoseconds < 1.0 || nanoseconds >= 0x1p63) return std::nullopt;
        return std::chrono::nanoseconds(std::llround(nanoseconds));
    }
    return std::nullopt;
}

std::optional<std::uint64_t> parseCount(std::string_view text)
{
    return parseNumber<std::uint64_t>(text);
}

std::string formatDuration(std::chrono::nanoseconds duration)
{
    const double seconds = std::chrono::duration<double>(duration).count();
    if (seconds < 0.9995e-3) return format(0, seconds * 1e6, "us");
    if (seconds < 0.9995) return format(0, seconds * 1e3, "ms");
    if (seconds < 59.95) return format(1, seconds, "s");
    const auto whole = std::llround(seconds);
    const bool isHours = whole >= 3600;
    const long long large = whole / (isHours ? 3600 : 60);
    const long long small = whole / (isHours ? 60 : 1) % 60;
    return std::to_string(large) + (isHours ? " h " : " min ") + (small < 10 ? "0" : "") + std::to_string(small) +
           (isHours ? " min" : " s");
}

std::string formatSize(std::uint64_t bytes)
{
    constexpr const char* units[] = {"B", "KiB", "MiB", "GiB", "TiB", "PiB", "EiB"};
    if (bytes < 1024) return std::to_string(bytes) + " B";
    auto size = static_cast<double>(bytes);
    std::size_t unit = 0;
    // What would be shown as 1024 belongs to the next unit.
    while (size >= 1023.5) {
        size /= 1024;
        ++unit;
    }
    return format(size < 9.995 ? 2 : size < 99.95 ? 1 : 0, size, units[unit]);
}

std::string formatNumber(double number)
{
    std::array<char, 32> text{};
    return std::string(text.data(), std::to_chars(text.data(), text.data() + text.size(), number).ptr);
}

}  // namespace Host
