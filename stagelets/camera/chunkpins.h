#pragma once

#include "base/grabresult.h"

#include "camera/pinmappingparser.h"
#include "core/pinvalues.h"

namespace Plugin::NivexStageletPackageBase {

/// Puts the chunk values of a grab result into `values`, under the names of their pins. For a result with chunks.
///
/// A pin with one value name gets one value. A pin with several gets an array of as many elements, of which only
/// the first is ever written, by each of the names in turn; so the last name that the camera has counts. Names
/// without a node are passed over, as are nodes other than integers, booleans, floats and strings; a pin without
/// any value left gets an empty one. A value that can't be read is an error value.
///
/// A failure of a pin (no value name, a selector without a value or that can't be set, damaged chunks) is logged
/// and leaves that pin out; the first one's cause is logged for the whole result. Works on the selectors of the
/// result's chunk node map, so one thread at a time per result.
/// @param node is the address that log entries name.
void readChunkPins(const PinMappings& pins, const Nivex::CGrabResultData& result,
                   Nivex::DataProcessing::Core::PinValues& values, const void* node);

/// Logs each pin that no frame will bring values for, as the camera's node map says now: none of its value names
/// is a parameter that pins put out; and for all of them together, if the camera's chunk mode is off. Raises what
/// reading the mode raises.
void logSilentChunkPins(const PinMappings& pins, const GenApi::NodeMapPtr& nodeMap, const void* node);

}  // namespace Plugin::NivexStageletPackageBase
