#pragma once

#include <algorithm>

#include "gcbase/exception.h"

#include "core/array.h"
#include "core/errors.h"

namespace Nivex::DataProcessing::Core {

template <typename T>
bool Array<T>::hasError(bool recursive) const
{
    if (error_ || !recursive || !data_) return error_ != nullptr;
    return std::any_of(data_->begin(), data_->end(), [](const T& element) { return element.hasError(true); });
}

template <typename T>
std::shared_ptr<IError> Array<T>::getError(bool recursive) const
{
    if (error_ || !recursive) return error_;
    ErrorList errors = elementErrors();
    if (errors.empty()) return nullptr;
    return std::make_shared<InvalidValueError>("Array holds elements that are in error state.", std::move(errors),
                                               Utils::DateTime::now());
}

template <typename T>
ErrorList Array<T>::elementErrors() const
{
    ErrorList errors;
    if (!data_) return errors;
    for (const T& element : *data_) {
        if (element.hasError(true)) errors.push_back(element.getError(true));
    }
    return errors;
}

template <typename T>
void Array<T>::setError(std::shared_ptr<IError> error)
{
    if (!error) GENICAM_THROW(InvalidArgumentException, "Invalid error pointer passed.");
    error_ = std::move(error);
    data_.reset();
}

template <typename T>
void Array<T>::requireNoError() const
{
    if (error_) GENICAM_THROW(RuntimeException, "Array is in error state.");
}

template <typename T>
void Array<T>::requireElement(std::size_t index) const
{
    requireNoError();
    if (index >= getSize()) GENICAM_THROW(InvalidArgumentException, "Invalid index passed.");
}

template <typename T>
const T& Array<T>::at(std::size_t index) const
{
    requireElement(index);
    return (*data_)[index];
}

template <typename T>
void Array<T>::set(std::size_t index, T value)
{
    requireElement(index);
    data_.write()[index] = std::move(value);
}

template <typename T>
void Array<T>::setElement(std::size_t index, const Utils::Variant& value)
{
    requireElement(index);
    if (!value.isValid()) GENICAM_THROW(InvalidArgumentException, "The given value is invalid.");
    set(index, value.getValue<T>());
}

template <typename T>
void Array<T>::append(T value)
{
    requireNoError();
    if (!data_) data_ = Data::make();
    data_.write().push_back(std::move(value));
}

template <typename T>
const typename Array<T>::Data& Array<T>::getData() const
{
    requireNoError();
    return data_;
}

template <typename T>
void Array<T>::assign(const IArray& other)
{
    if (&other == this) return;
    if (!other.getElementType().canConvert(getElementType())) {
        GENICAM_THROW(InvalidArgumentException, "Data in the given array is not compatible with this array.");
    }
    if (const auto* same = dynamic_cast<const Array*>(&other)) {
        *this = *same;
    } else if (other.hasError()) {
        setError(other.getError());
    } else {
        std::vector<T> elements;
        elements.reserve(other.getSize());
        for (std::size_t i = 0; i < other.getSize(); ++i) {
            elements.push_back(other.getElement(i).template getValue<T>());
        }
        *this = Array(std::move(elements));
    }
}

}  // namespace Nivex::DataProcessing::Core
