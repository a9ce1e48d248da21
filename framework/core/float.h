#pragma once

#include <concepts>

#include "core/value.h"

namespace Nivex::DataProcessing::Core {

struct FloatData
{
    static constexpr const char* className = "Float";
    double value = 0.0;
};

/// A floating-point number. Initially 0. Reading raises RuntimeException if it holds an error.
class GENICAM_API Float : public DataValue<FloatData>
{
public:
    Float() = default;
    template <typename N>
    requires(std::is_arithmetic_v<N> && !std::same_as<N, bool>) explicit Float(N value)
        : DataValue(FloatData{static_cast<double>(value)})
    {}
    explicit Float(std::shared_ptr<IError> error) : DataValue(std::move(error)) {}

    double get() const { return data().value; }
    operator double() const { return get(); }  // NOLINT: stands for its number
};

}  // namespace Nivex::DataProcessing::Core
