#pragma once

#include <utility>

#include "gcbase/exception.h"

#include "utils/property.h"

namespace Nivex::DataProcessing::Utils {

template <typename T>
ResettableProperty<T>::ResettableProperty() : ResettablePropertyBase(TypeInfo::get<COWPtr<Element>>())
{}

template <typename T>
T ResettableProperty<T>::getValue() const
{
    return getVariant().template getValue<T>();
}

template <typename T>
void ResettableProperty<T>::setValue(const T& value)
{
    setCOWPtr(COWPtr<Element>(value));
}

template <typename T>
void ResettableProperty<T>::setCOWPtr(COWPtr<Element> value)
{
    if (!value) GENICAM_THROW(InvalidArgumentException, "Invalid value pointer passed.");
    replace(Variant(std::move(value)));
}

template <typename T>
void ResettableProperty<T>::setPointer(std::unique_ptr<Element> value)
{
    setCOWPtr(value ? COWPtr<Element>(std::move(value)) : COWPtr<Element>());
}

}  // namespace Nivex::DataProcessing::Utils
