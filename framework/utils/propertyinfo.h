#pragma once

#include <string>
#include <string_view>
#include <type_traits>

#include "utils/variant.h"

namespace Nivex::DataProcessing::Utils {

/// A named part of a type's values, reached through the type's registration, as "X" of a point.
/// Made from the type's own getter and setter: `PropertyInfo::of<&PointF::getX, &PointF::setX>("X")`.
class GENICAM_API PropertyInfo
{
public:
    using Getter = Variant (*)(const void* owner);
    using Setter = void (*)(void* owner, const Variant& value);

    template <auto get>
    static PropertyInfo of(const char* name);
    template <auto get, auto set>
    static PropertyInfo of(const char* name);

    const std::string& getName() const noexcept { return name_; }
    /// The types may be registered after the property is made; an empty handle until then.
    TypeInfo getType() const noexcept { return type_(false); }
    TypeInfo getOwnerType() const noexcept { return ownerType_(false); }
    bool isWritable() const noexcept { return setter_ != nullptr; }

    /// The part of the value in `owner`. Raises RuntimeException if that has no such part.
    Variant getValue(const Variant& owner) const;
    template <typename T>
    T getValue(const Variant& owner) const
    {
        return getValue(owner).template getValue<T>();
    }
    /// Sets the part, leaving copies of `owner` as they are. Raises RuntimeException if `owner` or `value` are of
    /// another type, AccessException for a part that can only be read.
    void setValue(Variant& owner, const Variant& value) const;

    /// The same for a path from the value's type, as in "Center.X". Raise InvalidArgumentException for a path that
    /// the type doesn't have, and as above.
    static Variant getValue(const Variant& owner, std::string_view path);
    static void setValue(Variant& owner, std::string_view path, const Variant& value);

private:
    using TypeGetter = TypeInfo (*)(bool throwOnError);

    PropertyInfo(const char* name, TypeGetter ownerType, TypeGetter type, Getter getter, Setter setter)
        : name_(name), ownerType_(ownerType), type_(type), getter_(getter), setter_(setter)
    {}

    std::string name_;
    TypeGetter ownerType_;
    TypeGetter type_;
    Getter getter_;
    Setter setter_;
};

}  // namespace Nivex::DataProcessing::Utils

#include "utils/propertyinfo_impl.h"
