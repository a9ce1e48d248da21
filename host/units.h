#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace Host {

/// A duration above 0 with its unit: "250ms", "90s", "1.5m", "2h". Nothing if the text is none, or is longer than
/// about 292 years.
std::optional<std::chrono::nanoseconds> parseDuration(std::string_view text);

/// A decimal number without sign. Nothing for anything else, or beyond 64 bits.
std::optional<std::uint64_t> parseCount(std::string_view text);

/// As a person reads it: "7 us", "850 ms", "12.3 s", "4 min 05 s", "2 h 07 min".
std::string formatDuration(std::chrono::nanoseconds duration);

/// In binary units with three digits or more: "0 B", "1.50 KiB", "12.3 MiB", "1023 GiB".
std::string formatSize(std::uint64_t bytes);

/// The shortest text that reads back as the same number.
std::string formatNumber(double number);

}  // namespace Host
