#include "base/deviceinfo.h"

namespace Nivex {

CDeviceInfo::~CDeviceInfo() = default;

GenICam::gcstring CDeviceInfo::Read(const char* name) const
{
    GenICam::gcstring value;
    GetPropertyValue(name, value);
    return value;
}

}  // namespace Nivex
