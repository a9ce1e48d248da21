#pragma once

#include <bit>
#include <cstdint>
#include <string>

namespace GenApi {

/// What is wrong with a formula, or with what it was asked to compute. Raised by the formula classes only; the
/// node that has the formula makes a failure with its name of it.
struct FormulaFault
{
    std::string cause;
};

/// A number in a formula: it stays an integer as long as nothing makes a float of it, so that 64-bit addresses
/// and masks keep all their bits.
class FormulaNumber
{
public:
    constexpr FormulaNumber() = default;
    constexpr FormulaNumber(int64_t value) : bits_(value) {}                                         // NOLINT
    constexpr FormulaNumber(double value) : isFloat_(true), bits_(std::bit_cast<int64_t>(value)) {}  // NOLINT

    bool IsFloat() const { return isFloat_; }
    double AsFloat() const { return isFloat_ ? std::bit_cast<double>(bits_) : static_cast<double>(bits_); }
    /// Without the fraction; FormulaFault for what has no 64-bit integer.
    int64_t AsInteger() const { return isFloat_ ? Truncated() : bits_; }
    bool IsTrue() const { return isFloat_ ? AsFloat() != 0 : bits_ != 0; }

private:
    int64_t Truncated() const;

    bool isFloat_ = false;
    int64_t bits_ = 0;
};

}  // namespace GenApi
