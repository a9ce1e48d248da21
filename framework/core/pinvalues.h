#pragma once

#include <map>

#include "gcbase/gcstring.h"

#include "utils/variant.h"

namespace Nivex::DataProcessing::Core {

/// The values of one update at the pins of one node: pin name to value.
using PinValues = std::map<GenICam::gcstring, Utils::Variant>;

}  // namespace Nivex::DataProcessing::Core
