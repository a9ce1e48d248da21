#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "genapi/types.h"

// Numbers and bytes from and to text, without regard to the locale.
namespace GenApi {

/// Without blanks, tabs and line ends at both ends.
std::string_view Trimmed(std::string_view text);

/// `0x` and up to 16 hexadecimal digits, or a decimal number. A hexadecimal number with bit 63 set is the negative
/// number of the same 64 bits. Nothing if the text is anything else.
std::optional<int64_t> ParseInteger(std::string_view text);
/// Also reads `192.168.0.1` and `00:11:22:33:44:55` where the representation says so.
std::optional<int64_t> ParseInteger(std::string_view text, ERepresentation representation);
/// The digits behind a `0x`, if there is one.
std::string_view WithoutHexPrefix(std::string_view text);
/// Up to 16 hexadecimal digits with or without `0x`.
std::optional<uint64_t> ParseHexDigits(std::string_view text);
std::string FormatInteger(int64_t value, ERepresentation representation);

/// A decimal number with or without sign, fraction and exponent, `INF`, `-INF`, `NaN`, or what ParseInteger reads.
std::optional<double> ParseFloat(std::string_view text);
/// The shortest text that reads back as `value`.
std::string FormatFloat(double value);

/// 1, 0, true or false, in any case of letters.
std::optional<bool> ParseBoolean(std::string_view text);

/// `0x` and two digits for each byte.
std::string FormatBytes(std::span<const uint8_t> bytes);
std::optional<std::vector<uint8_t>> ParseBytes(std::string_view text);

}  // namespace GenApi
