#pragma once

#include <concepts>

#include "core/value.h"

namespace Nivex::DataProcessing::Core {

struct BooleanData
{
    static constexpr const char* className = "Boolean";
    bool value = false;
};

/// A truth value. Initially false. get() raises RuntimeException if it holds an error.
class GENICAM_API Boolean : public DataValue<BooleanData>
{
public:
    Boolean() = default;
    explicit Boolean(std::same_as<bool> auto value) : DataValue(BooleanData{value}) {}
    explicit Boolean(std::shared_ptr<IError> error) : DataValue(std::move(error)) {}

    bool get() const { return data().value; }
};

}  // namespace Nivex::DataProcessing::Core
