#pragma once

#include <string>

#include "base/emulation/feature.h"

namespace Nivex::Emulation {

/// The register description of one of the camera's maps, as XML. Its port is named "Device".
std::string describeMap(EMap map);

/// A description of the chunks alone, for maps that show one frame each.
std::string describeChunks();

}  // namespace Nivex::Emulation
