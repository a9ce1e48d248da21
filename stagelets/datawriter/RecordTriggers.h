#pragma once

#include "datawriter/DataWriterSettings.h"
#include "utils/variant.h"

namespace Plugin::NivexStageletPackageBase {

/// True if one of the pin's triggers asks for a record.
/// @param value of the pin, of a type derived from IValue; an empty one for a pin without a value, where only the
///     trigger on presence can ask.
bool hasTriggerHit(const InputPinSettings& pin, const Nivex::DataProcessing::Utils::Variant& value);

}  // namespace Plugin::NivexStageletPackageBase
