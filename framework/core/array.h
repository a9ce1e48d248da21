#pragma once

#include <vector>

#include "core/iarray.h"
#include "utils/cowptr.h"

namespace Nivex::DataProcessing::Core {

/// An array of values of one class. Copies share the elements until one of them writes.
/// @tparam T is a registered value class with a default constructor.
template <typename T>
class Array : public IArray
{
public:
    using Data = Utils::COWPtr<std::vector<T>>;

    Array() = default;
    /// Default-made elements.
    explicit Array(std::size_t size) : Array(std::vector<T>(size)) {}
    explicit Array(std::vector<T> elements) : data_(Data::make(std::move(elements))) {}
    /// Shares the elements; an empty pointer gives an empty array.
    explicit Array(Data data) : data_(std::move(data)) {}
    /// Raises InvalidArgumentException for null.
    explicit Array(std::shared_ptr<IError> error) { Array::setError(std::move(error)); }

    bool hasError(bool recursive = false) const override;
    std::shared_ptr<IError> getError(bool recursive = false) const override;
    void setError(std::shared_ptr<IError> error) override;

    std::size_t getSize() const override { return data_ ? data_->size() : 0; }
    Utils::TypeInfo getElementType() const override { return Utils::TypeInfo::get<T>(); }
    Utils::Variant getElement(std::size_t index) const override { return Utils::Variant(at(index)); }
    void setElement(std::size_t index, const Utils::Variant& value) override;
    void assign(const IArray& other) override;

    /// The element; valid until the array is written to. Raises as IArray tells.
    const T& at(std::size_t index) const;
    void set(std::size_t index, T value);
    void append(T value);  ///< Raises RuntimeException if the array holds an error.
    /// All elements, shared; empty for an array without elements. Raises RuntimeException for one with an error.
    const Data& getData() const;

private:
    void requireNoError() const;
    void requireElement(std::size_t index) const;
    ErrorList elementErrors() const;

    Data data_;
    std::shared_ptr<IError> error_;
};

}  // namespace Nivex::DataProcessing::Core

#include "core/array_impl.h"
