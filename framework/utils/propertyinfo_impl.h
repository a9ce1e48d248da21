#pragma once

#include "utils/propertyinfo.h"

namespace Nivex::DataProcessing::Utils {

namespace Detail {

template <typename Member>
struct GetterOf;

template <typename Owner_, typename Value_>
struct GetterOf<Value_ (Owner_::*)() const>
{
    using Owner = Owner_;
    using Value = std::remove_cvref_t<Value_>;
};

}  // namespace Detail

template <auto get>
PropertyInfo PropertyInfo::of(const char* name)
{
    using Member = Detail::GetterOf<decltype(get)>;
    using Owner = typename Member::Owner;
    const Getter getter = [](const void* owner) { return Variant((static_cast<const Owner*>(owner)->*get)()); };
    return PropertyInfo(name, &TypeInfo::get<Owner>, &TypeInfo::get<typename Member::Value>, getter, nullptr);
}

template <auto get, auto set>
PropertyInfo PropertyInfo::of(const char* name)
{
    using Member = Detail::GetterOf<decltype(get)>;
    using Owner = typename Member::Owner;
    PropertyInfo info = of<get>(name);
    info.setter_ = [](void* owner, const Variant& value) {
        (static_cast<Owner*>(owner)->*set)(value.getValue<typename Member::Value>());
    };
    return info;
}

}  // namespace Nivex::DataProcessing::Utils
