#pragma once

#include <map>

#include "gcbase/gcstring.h"

namespace Nivex {

/// A property bag: names to values, both texts, ordered by name. The base of what describes a device, a
/// resource or a node map to those who enumerate and choose. Values are copied; not synchronised.
class GENICAM_API CInfoBase
{
public:
    CInfoBase() = default;
    virtual ~CInfoBase();
    CInfoBase(const CInfoBase&) = default;
    CInfoBase(CInfoBase&&) noexcept = default;
    CInfoBase& operator=(const CInfoBase&) = default;
    CInfoBase& operator=(CInfoBase&&) noexcept = default;

    /// Sets or replaces a property; an empty value counts as a value. Raises InvalidArgumentException for an
    /// empty name. Returns the object, so that calls can be chained.
    CInfoBase& SetPropertyValue(const GenICam::gcstring& name, const GenICam::gcstring& value);

    /// Gives true and the value, or false and leaves `value` alone if there is no such property.
    bool GetPropertyValue(const GenICam::gcstring& name, GenICam::gcstring& value) const;
    bool GetPropertyAvailable(const GenICam::gcstring& name) const;

    /// The names in ascending order; the return value is their count.
    std::size_t GetPropertyNames(GenICam::gcstring_vector& names) const;

    /// True if every property of `subset` stands here with the same value. The empty bag is a subset of all.
    bool IsSubset(const CInfoBase& subset) const;

    /// Equal names and values; what derived classes add is not looked at.
    friend GENICAM_API bool operator==(const CInfoBase& a, const CInfoBase& b);
    /// A strict order over all properties: names first differing decide, then values.
    friend GENICAM_API bool operator<(const CInfoBase& a, const CInfoBase& b);

private:
    std::map<GenICam::gcstring, GenICam::gcstring> properties_;
};

}  // namespace Nivex
