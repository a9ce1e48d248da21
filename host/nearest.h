#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Host {

/// The known name that a mistyped word most likely means: the first of those that differ from it in the fewest
/// letters (inserted, left out, exchanged, swapped with their neighbour; upper and lower case alike), if these are
/// no more than about a third. Only the first thousand names and words up to 100 bytes are looked at.
std::optional<std::string> findNearest(std::string_view word, const std::vector<std::string>& known);

}  // namespace Host
