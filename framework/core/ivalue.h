#pragma once

#include <memory>

#include "core/ierror.h"

namespace Nivex::DataProcessing::Core {

/// The base of all pin values. A value holds data or an error, never both. Reading from several threads is safe.
class GENICAM_API IValue
{
public:
    virtual ~IValue() = default;

    /// True if the value holds an error; with `recursive` also if a value inside it does.
    virtual bool hasError(bool recursive = false) const = 0;
    /// The error of the value. With `recursive` and no error of its own: an InvalidValueError whose parents are
    /// the errors of the values inside, in their order. Null if there is none.
    virtual std::shared_ptr<IError> getError(bool recursive = false) const = 0;
    /// Drops the data. Raises InvalidArgumentException for null.
    virtual void setError(std::shared_ptr<IError> error) = 0;

protected:
    IValue() = default;
    IValue(const IValue&) = default;
    IValue(IValue&&) = default;
    IValue& operator=(const IValue&) = default;
    IValue& operator=(IValue&&) = default;
};

}  // namespace Nivex::DataProcessing::Core
