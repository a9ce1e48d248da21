#pragma once

#include "utils/typeregistrar.h"

namespace Nivex::DataProcessing::Utils {

template <typename T, typename... Bases>
TypeRegistrar<T, Bases...>::TypeRegistrar(std::initializer_list<PropertyInfo> properties) noexcept
{
    try {
        constexpr bool isValue = std::is_copy_constructible_v<T> && !std::is_abstract_v<T>;
        TypeInfo::Factory factory = nullptr;
        if constexpr (isValue && std::is_default_constructible_v<T>) {
            factory = [](Variant& target) { target = Variant(T()); };
        }
        TypeInfo::ITypeInfoData* data = add(Detail::typeIdentifier<T>(), sizeof(T), factory);
        (TypeInfo::addBaseType<T, Bases>(data), ...);
        for (const PropertyInfo& property : properties)
            data->addProperty(property);
        if constexpr (isValue) {
            add(Detail::typeIdentifier<COWPtr<T>>(), sizeof(COWPtr<T>), nullptr)->setSharedFormOf(data);
        }
    } catch (...) {
        logCaught();
    }
}

}  // namespace Nivex::DataProcessing::Utils
