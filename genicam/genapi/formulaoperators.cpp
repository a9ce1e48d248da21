#include "genapi/formulaoperators.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "genapi/textconversion.h"

namespace GenApi {

namespace {

using Number = FormulaNumber;
using Form = BinaryOperator::Form;

constexpr double integerEnd = 9223372036854775808.0;  // 2^63

Number ofTruth(bool value)
{
    return int64_t{value};
}

// Overflows wrap around; in unsigned numbers that is defined.
int64_t wrapped(uint64_t value)
{
    return static_cast<int64_t>(value);
}

uint64_t bitsOf(Number number)
{
    return static_cast<uint64_t>(number.AsInteger());
}

Number addIntegers(Number a, Number b)
{
    return wrapped(bitsOf(a) + bitsOf(b));
}

Number subtractIntegers(Number a, Number b)
{
    return wrapped(bitsOf(a) - bitsOf(b));
}

Number multiplyIntegers(Number a, Number b)
{
    return wrapped(bitsOf(a) * bitsOf(b));
}

bool areIntegers(Number a, Number b)
{
    return !a.IsFloat() && !b.IsFloat();
}

Number add(Number a, Number b)
{
    int64_t sum = 0;
    if (areIntegers(a, b) && !__builtin_add_overflow(a.AsInteger(), b.AsInteger(), &sum)) return sum;
    return a.AsFloat() + b.AsFloat();
}

Number subtract(Number a, Number b)
{
    int64_t difference = 0;
    if (areIntegers(a, b) && !__builtin_sub_overflow(a.AsInteger(), b.AsInteger(), &difference)) return difference;
    return a.AsFloat() - b.AsFloat();
}

Number multiply(Number a, Number b)
{
    int64_t product = 0;
    if (areIntegers(a, b) && !__builtin_mul_overflow(a.AsInteger(), b.AsInteger(), &product)) return product;
    return a.AsFloat() * b.AsFloat();
}

int64_t divisorOf(Number number)
{
    const int64_t divisor = number.AsInteger();
    if (divisor == 0) throw FormulaFault{"division by zero"};
    return divisor;
}

Number divideIntegers(Number a, Number b)
{
    const int64_t divisor = divisorOf(b);
    // The only quotient that does not fit.
    return divisor == -1 ? wrapped(uint64_t{0} - bitsOf(a)) : a.AsInteger() / divisor;
}

Number divide(Number a, Number b)
{
    if (b.AsFloat() == 0) throw FormulaFault{"division by zero"};
    return a.AsFloat() / b.AsFloat();
}

Number remainder(Number a, Number b)
{
    const int64_t divisor = divisorOf(b);
    return divisor == -1 ? 0 : a.AsInteger() % divisor;
}

Number powerOfIntegers(Number a, Number b)
{
    const int64_t base = a.AsInteger();
    const int64_t exponent = b.AsInteger();
    if (exponent < 0) {
        if (base == 0) throw FormulaFault{"division by zero"};
        if (base == -1) return exponent % 2 == 0 ? int64_t{1} : int64_t{-1};
        return int64_t{base == 1};
    }
    uint64_t result = 1;
    uint64_t square = static_cast<uint64_t>(base);
    for (auto rest = static_cast<uint64_t>(exponent); rest != 0; rest >>= 1U, square *= square)
        if (rest & 1U) result *= square;
    return wrapped(result);
}

Number power(Number a, Number b)
{
    if (a.AsFloat() == 0 && b.AsFloat() < 0) throw FormulaFault{"division by zero"};
    const double result = std::pow(a.AsFloat(), b.AsFloat());
    const bool exact = areIntegers(a, b) && b.AsInteger() >= 0 && std::abs(result) < integerEnd;
    return exact ? powerOfIntegers(a, b) : Number(result);
}

unsigned shiftOf(Number number)
{
    return static_cast<unsigned>(bitsOf(number) & 63U);
}

Number shiftLeft(Number a, Number b)
{
    return wrapped(bitsOf(a) << shiftOf(b));
}

Number shiftRight(Number a, Number b)
{
    return a.AsInteger() >> shiftOf(b);
}

Number bitAnd(Number a, Number b)
{
    return a.AsInteger() & b.AsInteger();
}

Number bitOr(Number a, Number b)
{
    return a.AsInteger() | b.AsInteger();
}

Number bitXor(Number a, Number b)
{
    return a.AsInteger() ^ b.AsInteger();
}

Number isEqual(Number a, Number b)
{
    return ofTruth(areIntegers(a, b) ? a.AsInteger() == b.AsInteger() : a.AsFloat() == b.AsFloat());
}

Number isLess(Number a, Number b)
{
    return ofTruth(areIntegers(a, b) ? a.AsInteger() < b.AsInteger() : a.AsFloat() < b.AsFloat());
}

Number isLessOrEqual(Number a, Number b)
{
    return ofTruth(areIntegers(a, b) ? a.AsInteger() <= b.AsInteger() : a.AsFloat() <= b.AsFloat());
}

Number isUnequal(Number a, Number b)
{
    return ofTruth(!isEqual(a, b).IsTrue());
}

Number isGreater(Number a, Number b)
{
    return isLess(b, a);
}

Number isGreaterOrEqual(Number a, Number b)
{
    return isLessOrEqual(b, a);
}

Number negateInteger(Number a)
{
    return subtractIntegers(int64_t{0}, a);
}

Number negate(Number a)
{
    return a.IsFloat() ? Number(-a.AsFloat()) : subtract(int64_t{0}, a);
}

Number same(Number a)
{
    return a;
}

Number invert(Number a)
{
    return ~a.AsInteger();
}

Number signOf(Number a)
{
    return int64_t{a.AsFloat() > 0} - int64_t{a.AsFloat() < 0};
}

Number magnitude(Number a)
{
    return a.AsFloat() < 0 ? negate(a) : a;
}

template <double (*Function)(double)>
Number ofFloat(Number a)
{
    return Function(a.AsFloat());
}

// For functions that leave integers as they are.
template <double (*Function)(double)>
Number ofFraction(Number a)
{
    return a.IsFloat() ? Number(Function(a.AsFloat())) : a;
}

Number roundTo(Number a, Number digits)
{
    constexpr int64_t mostDigits = 400;  // more than a double has before or behind its point
    const double scale =
        std::pow(10.0, static_cast<double>(std::clamp(digits.AsInteger(), -mostDigits, mostDigits)));
    const double scaled = std::round(a.AsFloat() * scale);
    // Where the scaled number has no digits behind the point, or too many to be counted, there is nothing to
    // round.
    if (scale == 0) return 0.0;
    return std::isfinite(scaled) && std::isfinite(scale) ? scaled / scale : a.AsFloat();
}

constexpr Number (*none)(Number, Number) = nullptr;

// Operators that begin alike stand with the longer one first.
constexpr BinaryOperator binaryOperators[] = {
    {"||", 2, false, Form::Or, none, none},
    {"&&", 3, false, Form::And, none, none},
    {"|", 4, false, Form::Plain, bitOr, bitOr},
    {"^", 5, false, Form::Plain, bitXor, bitXor},
    {"&", 6, false, Form::Plain, bitAnd, bitAnd},
    {"==", 7, false, Form::Plain, isEqual, isEqual},
    {"=", 7, false, Form::Plain, isEqual, isEqual},
    {"<>", 7, false, Form::Plain, isUnequal, isUnequal},
    {"!=", 7, false, Form::Plain, isUnequal, isUnequal},
    {"<<", 9, false, Form::Plain, shiftLeft, shiftLeft},
    {">>", 9, false, Form::Plain, shiftRight, shiftRight},
    {"<=", 8, false, Form::Plain, isLessOrEqual, isLessOrEqual},
    {">=", 8, false, Form::Plain, isGreaterOrEqual, isGreaterOrEqual},
    {"<", 8, false, Form::Plain, isLess, isLess},
    {">", 8, false, Form::Plain, isGreater, isGreater},
    {"+", 10, false, Form::Plain, addIntegers, add},
    {"-", 10, false, Form::Plain, subtractIntegers, subtract},
    {"**", 12, true, Form::Plain, powerOfIntegers, power},
    {"*", 11, false, Form::Plain, multiplyIntegers, multiply},
    {"/", 11, false, Form::Plain, divideIntegers, divide},
    {"%", 11, false, Form::Plain, remainder, remainder},
};

constexpr UnaryOperator unaryOperators[] = {
    {'-', negateInteger, negate}, {'+', same, same}, {'~', invert, invert}};

constexpr FormulaFunction functions[] = {
    {"SGN", signOf, none},
    {"NEG", negate, none},
    {"ABS", magnitude, none},
    {"SIN", ofFloat<std::sin>, none},
    {"COS", ofFloat<std::cos>, none},
    {"TAN", ofFloat<std::tan>, none},
    {"ASIN", ofFloat<std::asin>, none},
    {"ACOS", ofFloat<std::acos>, none},
    {"ATAN", ofFloat<std::atan>, none},
    {"EXP", ofFloat<std::exp>, none},
    {"LN", ofFloat<std::log>, none},
    {"LG", ofFloat<std::log10>, none},
    {"SQRT", ofFloat<std::sqrt>, none},
    {"TRUNC", ofFraction<std::trunc>, none},
    {"FLOOR", ofFraction<std::floor>, none},
    {"CEIL", ofFraction<std::ceil>, none},
    {"ROUND", ofFraction<std::round>, roundTo},
};

struct Constant
{
    std::string_view name;
    double value;
};
constexpr Constant constants[] = {{"PI", std::numbers::pi}, {"E", std::numbers::e}};

char raised(char character)
{
    return character >= 'a' && character <= 'z' ? static_cast<char>(character - 'a' + 'A') : character;
}

bool equalsAnyCase(std::string_view text, std::string_view upperCase)
{
    return std::equal(text.begin(), text.end(), upperCase.begin(), upperCase.end(),
                      [](char a, char b) { return raised(a) == b; });
}

}  // namespace

int64_t FormulaNumber::Truncated() const
{
    const double value = std::trunc(AsFloat());
    if (!(value >= -integerEnd && value < integerEnd))
        throw FormulaFault{FormatFloat(value) + " is no 64-bit integer"};
    return static_cast<int64_t>(value);
}

const BinaryOperator* FindBinaryOperator(std::string_view text)
{
    for (const BinaryOperator& row : binaryOperators)
        if (text.substr(0, row.text.size()) == row.text) return &row;
    return nullptr;
}

const UnaryOperator* FindUnaryOperator(char text)
{
    for (const UnaryOperator& row : unaryOperators)
        if (row.text == text) return &row;
    return nullptr;
}

const FormulaFunction* FindFormulaFunction(std::string_view name)
{
    for (const FormulaFunction& row : functions)
        if (equalsAnyCase(name, row.name)) return &row;
    return nullptr;
}

const double* FindFormulaConstant(std::string_view name)
{
    for (const Constant& row : constants)
        if (equalsAnyCase(name, row.name)) return &row.value;
    return nullptr;
}

}  // namespace GenApi
