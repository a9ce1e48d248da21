#include "base/infobase.h"

#include <algorithm>

#include "gcbase/exception.h"

namespace Nivex {

using GenICam::gcstring;

CInfoBase::~CInfoBase() = default;

CInfoBase& CInfoBase::SetPropertyValue(const gcstring& name, const gcstring& value)
{
    if (name.empty()) {
        GENICAM_THROW(InvalidArgumentException, "A property needs a name; its value was \"%s\".", value.c_str());
    }
    properties_[name] = value;
    return *this;
}

bool CInfoBase::GetPropertyValue(const gcstring& name, gcstring& value) const
{
    const auto found = properties_.find(name);
    if (found == properties_.end()) return false;
    value = found->second;
    return true;
}

bool CInfoBase::GetPropertyAvailable(const gcstring& name) const
{
    return properties_.contains(name);
}

std::size_t CInfoBase::GetPropertyNames(GenICam::gcstring_vector& names) const
{
    names.clear();
    for (const auto& property : properties_) {
        names.push_back(property.first);
    }
    return names.size();
}

bool CInfoBase::IsSubset(const CInfoBase& subset) const
{
    return std::includes(properties_.begin(), properties_.end(), subset.properties_.begin(),
                         subset.properties_.end());
}

bool operator==(const CInfoBase& a, const CInfoBase& b)
{
    return a.properties_ == b.properties_;
}

bool operator<(const CInfoBase& a, const CInfoBase& b)
{
    return a.properties_ < b.properties_;
}

}  // namespace Nivex
