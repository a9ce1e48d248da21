#pragma once

#include "gcbase/gcstring.h"

namespace Nivex::DataProcessing::Utils {

/// Small operations on texts. ASCII only: all other bytes stay as they are, whatever the locale.
class GENICAM_API Helper
{
public:
    static GenICam::gcstring toUpper(const GenICam::gcstring& text);
    /// The text without blanks, tabs, line feeds and the like (bytes 9 to 13 and 32) at both ends.
    static GenICam::gcstring trim(const GenICam::gcstring& text);
};

}  // namespace Nivex::DataProcessing::Utils
