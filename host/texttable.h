#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Host {

/// Control characters in the notation of C ("\n", "\x1b"), so that no text of a file or a node reaches a terminal
/// as a command.
std::string escapeControls(std::string_view text);

/// Breaks at blanks where there are any in reach. `width` 0 is no limit.
std::vector<std::string> wrap(std::string_view text, std::size_t width);

/// Lines up texts in columns, two blanks apart.
class TextTable
{
public:
    struct Column
    {
        std::string title;
        /// How wide the column may be: longer cells go on below where the table's width is limited, and stick out
        /// where it is not. 0: as wide as its longest cell. The last column gets what the others leave.
        std::size_t widthLimit = 0;
        bool isRightAligned = false;
    };

    explicit TextTable(std::vector<Column> columns);

    /// As many cells as columns.
    void addRow(std::vector<std::string> cells);
    /// The lines, each with a line feed. `width` 0 is no limit: one line per row.
    std::string toText(std::size_t width) const;

private:
    std::vector<std::size_t> computeWidths(std::size_t width) const;

    std::vector<Column> columns_;
    std::vector<std::vector<std::string>> rows_;
};

/// How many columns the terminal on that descriptor has; 0 if it is none.
std::size_t getTerminalWidth(int descriptor);

}  // namespace Host
