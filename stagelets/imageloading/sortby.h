#pragma once

#include <cstdint>

namespace Plugin::NivexStageletPackageBase {

/// The order in which images are loaded.
enum class SortBy : std::uint32_t
{
    Ascending = 0,
    Descending = 1,
    Random = 2
};

}  // namespace Plugin::NivexStageletPackageBase
