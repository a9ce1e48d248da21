#include "nearest.h"

#include <algorithm>

namespace Host {

namespace {

constexpr std::size_t longestWord = 100;
constexpr std::size_t mostNames = 1000;

char toLower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// Optimal string alignment distance.
std::size_t countEdits(std::string_view a, std::string_view b)
{
    std::vector<std::size_t> beforeLast(b.size() + 1);
    std::vector<std::size_t> last(b.size() + 1);
    std::vector<std::size_t> row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j)
        row[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        beforeLast.swap(last);
        last.swap(row);
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const char x = toLower(a[i - 1]);
            const char y = toLower(b[j - 1]);
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (x == y ? 0 : 1)});
            const bool isSwap = i > 1 && j > 1 && x == toLower(b[j - 2]) && y == toLower(a[i - 2]);
            if (isSwap) row[j] = std::min(row[j], beforeLast[j - 2] + 1);
        }
    }
    return row[b.size()];
}

}  // namespace

std::optional<std::string> findNearest(std::string_view word, const std::vector<std::string>& known)
{
    std::optional<std::string> nearest;
    std::size_t fewest = longestWord;
    if (word.size() > longestWord) return nearest;
    for (std::size_t i = 0; i < std::min(known.size(), mostNames); ++i) {
        if (known[i].size() > longestWord) continue;
        const std::size_t edits = countEdits(word, known[i]);
        if (edits < fewest && edits <= (std::max(word.size(), known[i].size()) + 2) / 3) {
            fewest = edits;
            nearest = known[i];
        }
    }
    return nearest;
}

}  // namespace Host
