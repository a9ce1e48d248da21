#include "core/inodemapcontainer.h"

namespace Nivex::DataProcessing::Core {

namespace {

constexpr const char* nameKey = "Name";
constexpr const char* identifierKey = "Identifier";

}  // namespace

NodeMapInfo::NodeMapInfo(const GenICam::gcstring& name, const GenICam::gcstring& identifier)
{
    SetPropertyValue(nameKey, name);
    SetPropertyValue(identifierKey, identifier);
}

NodeMapInfo::~NodeMapInfo() = default;

GenICam::gcstring NodeMapInfo::GetName() const
{
    return read(nameKey);
}
GenICam::gcstring NodeMapInfo::GetIdentifier() const
{
    return read(identifierKey);
}

GenICam::gcstring NodeMapInfo::read(const char* key) const
{
    GenICam::gcstring value;
    GetPropertyValue(key, value);
    return value;
}

}  // namespace Nivex::DataProcessing::Core
