#include "genapi/textconversion.h"

#include <array>
#include <charconv>
#include <cmath>
#include <limits>

#include "gcbase/exception.h"

namespace GenApi {

namespace {

template <typename Number, typename... Format>
std::optional<Number> parseWhole(std::string_view digits, Format... format)
{
    Number number{};
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number, format...);
    if (error != std::errc() || end != digits.data() + digits.size()) return std::nullopt;
    return number;
}

bool hasHexPrefix(std::string_view text)
{
    return text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
}

char lowered(char character)
{
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}

bool equalsAnyCase(std::string_view text, std::string_view lowerCase)
{
    if (text.size() != lowerCase.size()) return false;
    for (std::size_t i = 0; i < text.size(); ++i)
        if (lowered(text[i]) != lowerCase[i]) return false;
    return true;
}

// How a number is written as a row of bytes, most significant first.
struct ByteRow
{
    int count;
    int base;
    char separator;
};
constexpr ByteRow ipRow = {4, 10, '.'};
constexpr ByteRow macRow = {6, 16, ':'};

std::optional<int64_t> parseRow(std::string_view text, const ByteRow& row)
{
    uint64_t value = 0;
    for (int i = 0; i < row.count; ++i) {
        const std::size_t end = i + 1 < row.count ? text.find(row.separator) : text.size();
        if (end == std::string_view::npos) return std::nullopt;
        const auto byte = parseWhole<uint8_t>(text.substr(0, end), row.base);
        if (!byte) return std::nullopt;
        value = value << 8U | *byte;
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return static_cast<int64_t>(value);
}

std::string formatRow(uint64_t value, const ByteRow& row)
{
    std::string text;
    for (int i = row.count - 1; i >= 0; --i) {
        const auto byte = static_cast<unsigned>(value >> (8 * static_cast<unsigned>(i)) & 0xFFU);
        text += row.base == 16 ? GenICam::formatText("%02x", byte) : std::to_string(byte);
        if (i > 0) text += row.separator;
    }
    return text;
}

bool fitsRow(int64_t value, const ByteRow& row)
{
    return value >= 0 && value >> (8 * row.count) == 0;
}

}  // namespace

std::string_view Trimmed(std::string_view text)
{
    constexpr std::string_view blanks = " \t\r\n";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::string_view WithoutHexPrefix(std::string_view text)
{
    return hasHexPrefix(text) ? text.substr(2) : text;
}

std::optional<uint64_t> ParseHexDigits(std::string_view text)
{
    return parseWhole<uint64_t>(WithoutHexPrefix(text), 16);
}

std::optional<int64_t> ParseInteger(std::string_view text)
{
    text = Trimmed(text);
    if (!hasHexPrefix(text)) return parseWhole<int64_t>(text);
    const auto bits = parseWhole<uint64_t>(text.substr(2), 16);
    return bits ? std::optional(static_cast<int64_t>(*bits)) : std::nullopt;
}

std::optional<int64_t> ParseInteger(std::string_view text, ERepresentation representation)
{
    if (const auto value = ParseInteger(text)) return value;
    if (representation == IPV4Address) return parseRow(Trimmed(text), ipRow);
    if (representation == MACAddress) return parseRow(Trimmed(text), macRow);
    return std::nullopt;
}

std::string FormatInteger(int64_t value, ERepresentation representation)
{
    const auto bits = static_cast<uint64_t>(value);
    if (representation == HexNumber) return GenICam::formatText("0x%llx", static_cast<unsigned long long>(bits));
    if (representation == IPV4Address && fitsRow(value, ipRow)) return formatRow(bits, ipRow);
    if (representation == MACAddress && fitsRow(value, macRow)) return formatRow(bits, macRow);
    return std::to_string(value);
}

std::optional<double> ParseFloat(std::string_view text)
{
    text = Trimmed(text);
    if (hasHexPrefix(text)) {
        const auto whole = ParseInteger(text);
        return whole ? std::optional(static_cast<double>(*whole)) : std::nullopt;
    }
    if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
    return parseWhole<double>(text, std::chars_format::general);
}

std::string FormatFloat(double value)
{
    if (std::isnan(value)) return "NaN";
    if (std::isinf(value)) return value < 0 ? "-INF" : "INF";
    std::array<char, 32> buffer{};
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value).ptr;
    return {buffer.data(), end};
}

std::optional<bool> ParseBoolean(std::string_view text)
{
    text = Trimmed(text);
    if (text == "1" || equalsAnyCase(text, "true")) return true;
    if (text == "0" || equalsAnyCase(text, "false")) return false;
    return std::nullopt;
}

std::string FormatBytes(std::span<const uint8_t> bytes)
{
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text = "0x";
    text.reserve(2 + 2 * bytes.size());
    for (const uint8_t byte : bytes) {
        text += digits[byte >> 4U];
        text += digits[byte & 0xFU];
    }
    return text;
}

std::optional<std::vector<uint8_t>> ParseBytes(std::string_view text)
{
    text = Trimmed(text);
    if (text.size() < 2 || text.size() % 2 != 0 || text[0] != '0' || lowered(text[1]) != 'x') return std::nullopt;
    std::vector<uint8_t> bytes;
    bytes.reserve(text.size() / 2 - 1);
    for (std::size_t at = 2; at < text.size(); at += 2) {
        const auto byte = parseWhole<uint8_t>(text.substr(at, 2), 16);
        if (!byte) return std::nullopt;
        bytes.push_back(*byte);
    }
    return bytes;
}

}  // namespace GenApi
