#pragma once

#include <cstddef>

namespace Plugin::NivexStageletPackageBase {

/// The package's manifest: a JSON document in UTF-8 with an ending zero, which is not counted in its size.
extern const char* const manifest;
extern const std::size_t manifestSize;

}  // namespace Plugin::NivexStageletPackageBase
