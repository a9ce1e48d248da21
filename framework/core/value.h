#pragma once

#include <utility>

#include "core/ivalue.h"

namespace Nivex::DataProcessing::Core {

/// Keeps the error of a value that has no values inside.
class GENICAM_API ValueBase : public IValue
{
public:
    bool hasError(bool recursive = false) const override;
    std::shared_ptr<IError> getError(bool recursive = false) const override;

protected:
    ValueBase() = default;
    /// Raises InvalidArgumentException for null.
    explicit ValueBase(std::shared_ptr<IError> error);

    /// Raises RuntimeException, naming the value class, if there is an error.
    void requireNoError(const char* className) const
    {
        if (error_) throwInErrorState(className);
    }
    void keepError(std::shared_ptr<IError> error);
    void dropError() { error_.reset(); }

private:
    [[noreturn]] static void throwInErrorState(const char* className);

    std::shared_ptr<IError> error_;
};

/// A value class over plain data. `Data` is default-made while there is an error, and tells the class's name for
/// messages with `static constexpr const char* className`.
template <typename Data>
class DataValue : public ValueBase
{
public:
    void setError(std::shared_ptr<IError> error) override
    {
        keepError(std::move(error));
        data_ = Data();
    }

protected:
    DataValue() = default;
    explicit DataValue(Data data) : data_(std::move(data)) {}
    explicit DataValue(std::shared_ptr<IError> error) : ValueBase(std::move(error)) {}

    /// Raises RuntimeException if there is an error.
    const Data& data() const
    {
        requireNoError(Data::className);
        return data_;
    }
    /// For writing; raises as data() does.
    Data& editData()
    {
        requireNoError(Data::className);
        return data_;
    }

private:
    Data data_;
};

}  // namespace Nivex::DataProcessing::Core
