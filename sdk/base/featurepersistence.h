#pragma once

#include "gcbase/gcstring.h"
#include "genapi/inodemap.h"

namespace Nivex {

/// Settings of a node map as feature-stream text: lines ended by a line feed; a first line "#
/// {05D8C294-F295-4dfb-9D01-096BD04049F4}", further comment lines that begin with "#", and one line per value:
/// name, tab, value. Where values depend on a selector, a line that sets the selector stands before those of the
/// values. Works under the map's lock; any thread may call it.
class GENICAM_API CFeaturePersistence
{
public:
    /// All streamable features that can be read and written now, for every value of their selectors; the selectors
    /// are as before afterwards. Raises RuntimeException that names the feature which failed, and for selectors
    /// with more than 20000 choices.
    static void SaveToString(GenICam::gcstring& text, GenApi::INodeMap& nodeMap);
    /// Applies the lines in order. Every line is tried; if any failed, all are tried once more, since an earlier
    /// value may have been refused for what a later line changes. If any fails then, RuntimeException lists them
    /// (the first ten) with number, name, value and cause: a line without a tab, an unknown name, a command, one
    /// that can't be written, a value that is refused. What could be applied stays. `verify` reads each value
    /// back; a floating-point value may be off by a ten-thousandth or its increment. An empty text changes
    /// nothing.
    static void LoadFromString(const GenICam::gcstring& text, GenApi::INodeMap& nodeMap, bool verify = true);
};

}  // namespace Nivex
