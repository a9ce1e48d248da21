#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace Plugin::NivexStageletPackageBase {

/// The code of a data name of camera events ("EventExposureEndTimestamp"); names of one event share a code. Empty
/// for an unknown name. Case counts.
std::optional<std::uint32_t> eventDataCode(std::string_view name) noexcept;

}  // namespace Plugin::NivexStageletPackageBase
