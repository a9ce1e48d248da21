#pragma once

#include "utility/pixeltype.h"

namespace Nivex {

/// Goes between the names that cameras use in their feature "PixelFormat" and pixel types.
class CPixelTypeMapper
{
public:
    /// Undefined for a name that is in no table, or null.
    static EPixelType GetNivexPixelTypeByName(const char* name) { return GetPixelTypeByName(name); }
    /// As GetPixelTypeName.
    static const char* GetNameByPixelType(EPixelType pixelType) { return GetPixelTypeName(pixelType); }
};

}  // namespace Nivex
