#pragma once

#include <cstddef>

#include "core/ivalue.h"
#include "utils/variant.h"

namespace Nivex::DataProcessing::Core {

/// An array of values, without knowledge of their type. All access to elements raises, in this order,
/// RuntimeException if the array itself holds an error, InvalidArgumentException for an index beyond the end.
class GENICAM_API IArray : public IValue
{
public:
    /// The number of elements; 0 for an array that holds an error.
    virtual std::size_t getSize() const = 0;
    bool isEmpty() const { return getSize() == 0; }
    virtual Utils::TypeInfo getElementType() const = 0;
    /// A copy of the element.
    virtual Utils::Variant getElement(std::size_t index) const = 0;
    /// Raises further InvalidArgumentException for an empty variant, RuntimeException for one of another type.
    virtual void setElement(std::size_t index, const Utils::Variant& value) = 0;
    /// Takes over data or error of another array, sharing the data if the types are equal. On itself it does
    /// nothing. Raises InvalidArgumentException if the other's elements can't be converted to this one's.
    virtual void assign(const IArray& other) = 0;
};

}  // namespace Nivex::DataProcessing::Core
