#include "texttable.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>

namespace Host {

namespace {

constexpr std::size_t leastLastColumn = 20;
constexpr std::size_t gap = 2;

bool isContinuation(char c)
{
    return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U;
}

/// In characters, not bytes.
std::size_t countCharacters(std::string_view text)
{
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char c) { return !isContinuation(c); }));
}

/// The first byte behind `count` characters.
std::size_t byteOffset(std::string_view text, std::size_t count)
{
    std::size_t offset = 0;
    for (; offset < text.size(); ++offset) {
        if (!isContinuation(text[offset]) && count-- == 0) break;
    }
    return offset;
}

}  // namespace

std::vector<std::string> wrap(std::string_view text, std::size_t width)
{
    std::vector<std::string> lines;
    while (width != 0 && countCharacters(text) > width) {
        const std::size_t end = byteOffset(text, width);
        const std::size_t blank = text.substr(0, end + 1).rfind(' ');
        const bool isAtBlank = blank != std::string_view::npos && blank > 0;
        lines.emplace_back(text.substr(0, isAtBlank ? blank : end));
        text.remove_prefix(isAtBlank ? blank + 1 : end);
    }
    lines.emplace_back(text);
    return lines;
}

namespace {

std::string pad(const std::string& text, std::size_t width, bool isRightAligned)
{
    const std::size_t length = countCharacters(text);
    const std::string blanks(width > length ? width - length : 0, ' ');
    return isRightAligned ? blanks + text : text + blanks;
}

}  // namespace

std::string escapeControls(std::string_view text)
{
    std::string result;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte != 0x7F) {
            result += c;
        } else if (c == '\n') {
            result += "\\n";
        } else if (c == '\t') {
            result += "\\t";
        } else {
            std::array<char, 8> code{};
            std::snprintf(code.data(), code.size(), "\\x%02x", byte);
            result += code.data();
        }
    }
    return result;
}

TextTable::TextTable(std::vector<Column> columns) : columns_(std::move(columns)) {}

void TextTable::addRow(std::vector<std::string> cells)
{
    for (std::string& cell : cells)
        cell = escapeControls(cell);
    rows_.push_back(std::move(cells));
}

std::vector<std::size_t> TextTable::computeWidths(std::size_t width) const
{
    std::vector<std::size_t> widths;
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        std::size_t longest = countCharacters(columns_[i].title);
        for (const auto& row : rows_)
            longest = std::max(longest, countCharacters(row[i]));
        const std::size_t limit = columns_[i].widthLimit;
        widths.push_back(limit != 0 ? std::min(longest, limit) : longest);
    }
    if (width == 0) return widths;
    std::size_t used = 0;
    for (std::size_t i = 0; i + 1 < widths.size(); ++i)
        used += widths[i] + gap;
    const std::size_t left = width > used ? width - used : 0;
    widths.back() = std::min(widths.back(), std::max(left, leastLastColumn));
    return widths;
}

std::string TextTable::toText(std::size_t width) const
{
    const std::vector<std::size_t> widths = computeWidths(width);
    std::string text;
    const auto addLines = [&](const std::vector<std::string>& cells) {
        std::vector<std::vector<std::string>> wrapped;
        std::size_t height = 0;
        for (std::size_t i = 0; i < cells.size(); ++i) {
            wrapped.push_back(wrap(cells[i], width == 0 ? 0 : widths[i]));
            height = std::max(height, wrapped.back().size());
        }
        for (std::size_t line = 0; line < height; ++line) {
            std::string row;
            for (std::size_t i = 0; i < cells.size(); ++i) {
                const std::string part = line < wrapped[i].size() ? wrapped[i][line] : std::string();
                if (i != 0) row.append(gap, ' ');
                row += pad(part, widths[i], columns_[i].isRightAligned);
            }
            text += row.substr(0, row.find_last_not_of(' ') + 1) + "\n";
        }
    };
    std::vector<std::string> titles;
    for (const Column& column : columns_)
        titles.push_back(column.title);
    addLines(titles);
    for (const auto& row : rows_)
        addLines(row);
    return text;
}

std::size_t getTerminalWidth(int descriptor)
{
    winsize size{};
    if (!isatty(descriptor)) return 0;
    return ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col != 0 ? size.ws_col : 80;
}

}  // namespace Host
