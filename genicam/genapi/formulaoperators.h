#pragma once

#include <string_view>

#include "genapi/formulanumber.h"

// The operators, functions and constants of the formula language, one row each.
namespace GenApi {

/// Formulas of integers compute in 64-bit integers throughout, wrapping around, with division towards zero. In
/// formulas of floats two integers give an integer while it is exact, but a division always gives a float.
enum class FormulaKind
{
    Integer,
    Float
};

using UnaryFunction = FormulaNumber (*)(FormulaNumber);
using BinaryFunction = FormulaNumber (*)(FormulaNumber, FormulaNumber);

struct BinaryOperator
{
    /// What an operator does besides computing.
    enum class Form
    {
        Plain,
        And,  ///< needs its right side only if the left one is true
        Or    ///< needs its right side only if the left one is false
    };

    std::string_view text;
    int precedence;  ///< the higher the tighter
    bool rightAssociative;
    Form form;
    BinaryFunction ofIntegers;  ///< null for And and Or
    BinaryFunction ofFloats;
};

struct UnaryOperator
{
    char text;
    UnaryFunction ofIntegers;
    UnaryFunction ofFloats;
};

struct FormulaFunction
{
    std::string_view name;
    UnaryFunction ofOne;
    BinaryFunction ofTwo;  ///< null for most
};

constexpr int ternaryPrecedence = 1;
constexpr int unaryPrecedence = 13;

/// The longest operator that `text` starts with, or null.
const BinaryOperator* FindBinaryOperator(std::string_view text);
const UnaryOperator* FindUnaryOperator(char text);
/// In any case of letters; null if there is none.
const FormulaFunction* FindFormulaFunction(std::string_view name);
/// E and PI in any case of letters.
const double* FindFormulaConstant(std::string_view name);

}  // namespace GenApi
