#pragma once

#include <concepts>
#include <cstdint>
#include <type_traits>

#include "core/value.h"

namespace Nivex::DataProcessing::Core {

struct IntegerData
{
    static constexpr const char* className = "Integer";
    std::uint64_t bits = 0;
    bool isSigned = true;
};

/// A 64-bit integer, signed or unsigned as it was made. Initially signed 0. Getters raise RuntimeException if it
/// holds an error.
class GENICAM_API Integer : public DataValue<IntegerData>
{
public:
    Integer() = default;
    template <std::integral I>
    requires(!std::same_as<I, bool>) explicit Integer(I value)
        : DataValue(IntegerData{static_cast<std::uint64_t>(value), std::is_signed_v<I>})
    {}
    explicit Integer(std::shared_ptr<IError> error) : DataValue(std::move(error)) {}

    bool isSigned() const { return data().isSigned; }
    /// The value; for a value of the other signedness the same 64 bits read in two's complement.
    std::int64_t getSigned() const { return static_cast<std::int64_t>(data().bits); }
    std::uint64_t getUnsigned() const { return data().bits; }
};

}  // namespace Nivex::DataProcessing::Core
