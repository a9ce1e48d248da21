#pragma once

namespace Plugin::NivexStageletPackageBase {

/// The package's manifest: a JSON document in UTF-8 with an ending zero.
extern const char* const manifest;

}  // namespace Plugin::NivexStageletPackageBase
