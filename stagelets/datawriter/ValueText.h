#pragma once

#include <ostream>

#include "datawriter/IMediaWriter.h"

namespace Plugin::NivexStageletPackageBase {

/// Writes a value of one of the twelve value classes with a printer, or an array of one, in the data and array
/// sections of a pin. Arrays that hold an error, and values without a template of their own that do, give the
/// error's message. Of the context only tokens, time and indices are used. Raises what the value's getters raise;
/// what was written until then stays.
/// @return false, and nothing is written, for a value of any other class.
bool writeValueText(std::ostream& stream, const Nivex::DataProcessing::Utils::Variant& value,
                    const Nivex::DataProcessing::Utils::TypeInfo& type, const InputPinSettings& pin,
                    const MediaWriterContext& context);

}  // namespace Plugin::NivexStageletPackageBase
