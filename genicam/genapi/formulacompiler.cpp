#include "genapi/formulacompiler.h"

#include <charconv>

#include "gcbase/exception.h"

namespace GenApi {

namespace {

// Lower than every operator: completes all up to the innermost parenthesis.
constexpr int loosest = 0;

bool isDigit(char character)
{
    return character >= '0' && character <= '9';
}

bool startsName(char character)
{
    return (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z') || character == '_';
}

// The length of the name at the front, with its suffixes.
std::size_t nameLength(std::string_view text)
{
    std::size_t end = 0;
    while (end < text.size() && (startsName(text[end]) || isDigit(text[end]) || text[end] == '.'))
        ++end;
    return end;
}

FormulaNumber truncated(FormulaNumber number)
{
    return number.AsInteger();
}

struct Literal
{
    FormulaNumber number;
    std::size_t length = 0;  // 0 if there is none
};

Literal hexLiteral(std::string_view text)
{
    uint64_t bits = 0;
    const auto [end, error] = std::from_chars(text.data() + 2, text.data() + text.size(), bits, 16);
    if (error != std::errc()) return {};
    return {static_cast<int64_t>(bits), static_cast<std::size_t>(end - text.data())};
}

// 64 bits without a point or exponent stay an integer; in formulas of floats larger ones than 2^63-1 become a
// float.
Literal decimalLiteral(std::string_view text, FormulaKind kind)
{
    double value = 0;
    const char* const last = text.data() + text.size();
    const auto [end, error] = std::from_chars(text.data(), last, value, std::chars_format::general);
    if (error != std::errc()) return {};
    const auto length = static_cast<std::size_t>(end - text.data());
    if (text.substr(0, length).find_first_of(".eE") != std::string_view::npos) return {value, length};
    uint64_t bits = 0;
    if (std::from_chars(text.data(), end, bits).ec != std::errc()) return {value, length};
    const bool isSigned = bits <= INT64_MAX || kind == FormulaKind::Integer;
    return {isSigned ? FormulaNumber(static_cast<int64_t>(bits)) : FormulaNumber(value), length};
}

}  // namespace

Formula FormulaCompiler::Compile()
{
    if (text_.size() > maxText)
        throw FormulaFault{
            GenICam::formatText("the formula has %zu characters; at most %zu are allowed", text_.size(), maxText)};
    for (SkipBlanks(); !IsAtEnd(); SkipBlanks()) {
        if (expectsOperand_) {
            TakeOperand();
        } else {
            TakeOperator();
        }
    }
    if (expectsOperand_) Refuse("a number or name is missing");
    Complete(loosest);
    if (IsWaitingFor(What::Then)) Refuse("a \"?\" has no \":\"");
    if (!waiting_.empty()) Refuse("a \")\" is missing");
    return program_.Take();
}

void FormulaCompiler::TakeOperand()
{
    const char first = Current();
    if (startsName(first)) return TakeName();
    if (isDigit(first) || first == '.') return TakeNumber();
    if (first == '(') {
        waiting_.push_back({.what = What::Parenthesis, .precedence = loosest});
    } else if (const UnaryOperator* unary = FindUnaryOperator(first)) {
        waiting_.push_back({.what = What::Unary, .precedence = unaryPrecedence, .unary = unary});
    } else {
        Refuse("a number or name is missing");
    }
    ++at_;
}

void FormulaCompiler::TakeName()
{
    const std::string_view name = text_.substr(at_, nameLength(text_.substr(at_)));
    const FormulaSymbol symbol = symbols_.FindSymbol(name);
    const double* const constant = FindFormulaConstant(name);
    const std::size_t start = at_;
    at_ += name.size();
    SkipBlanks();
    if (Current() == '(') {
        const FormulaFunction* const function = FindFormulaFunction(name);
        at_ = function ? at_ + 1 : start;
        if (!function) Refuse("there is no such function");
        waiting_.push_back({.what = What::Function,
                            .precedence = loosest,
                            .unary = nullptr,
                            .binary = nullptr,
                            .function = function,
                            .arguments = 1});
        return;
    }
    if (!std::holds_alternative<std::monostate>(symbol)) {
        PushSymbol(symbol);
    } else if (constant) {
        PushLiteral(*constant);
    } else {
        at_ = start;
        Refuse("there is no variable of that name");
    }
    expectsOperand_ = false;
}

void FormulaCompiler::PushSymbol(const FormulaSymbol& symbol)
{
    if (const auto* variable = std::get_if<VariableSymbol>(&symbol)) {
        program_.PushVariable(variable->index);
    } else if (const auto* number = std::get_if<FormulaNumber>(&symbol)) {
        PushLiteral(*number);
    } else {
        program_.PushFormula(*std::get<const Formula*>(symbol));
    }
}

void FormulaCompiler::TakeNumber()
{
    const std::string_view rest = text_.substr(at_);
    const bool isHex = rest.size() > 2 && rest[0] == '0' && (rest[1] == 'x' || rest[1] == 'X');
    const Literal literal = isHex ? hexLiteral(rest) : decimalLiteral(rest, kind_);
    if (literal.length == 0) Refuse("this is no number");
    PushLiteral(literal.number);
    at_ += literal.length;
    expectsOperand_ = false;
}

void FormulaCompiler::PushLiteral(FormulaNumber number)
{
    program_.PushConstant(kind_ == FormulaKind::Integer ? truncated(number) : number);
}

void FormulaCompiler::TakeOperator()
{
    switch (Current()) {
        case '?':
            return TakeQuestionMark();
        case ':':
            return TakeColon();
        case ',':
            return TakeComma();
        case ')':
            return TakeClosing();
        default:
            break;
    }
    const BinaryOperator* const row = FindBinaryOperator(text_.substr(at_));
    if (!row) Refuse("an operator is missing");
    TakeBinary(*row);
}

void FormulaCompiler::TakeBinary(const BinaryOperator& row)
{
    // From the left: what binds as tightly is complete as well.
    Complete(row.rightAssociative ? row.precedence : row.precedence - 1);
    Waiting waiting = {.what = What::Binary, .precedence = row.precedence, .unary = nullptr, .binary = &row};
    if (row.form == BinaryOperator::Form::And) waiting.jump = program_.BeginAnd();
    if (row.form == BinaryOperator::Form::Or) waiting.jump = program_.BeginOr();
    waiting_.push_back(waiting);
    at_ += row.text.size();
    expectsOperand_ = true;
}

void FormulaCompiler::TakeQuestionMark()
{
    Complete(ternaryPrecedence);
    Waiting waiting = {.what = What::Then, .precedence = loosest};
    waiting.jump = program_.BeginThen();
    waiting_.push_back(waiting);
    ++at_;
    expectsOperand_ = true;
}

void FormulaCompiler::TakeColon()
{
    Complete(loosest);
    if (!IsWaitingFor(What::Then)) Refuse("there is no \"?\" to this \":\"");
    Waiting& branch = waiting_.back();
    branch.what = What::Else;
    branch.precedence = ternaryPrecedence;
    branch.jump = program_.BeginElse(branch.jump);
    ++at_;
    expectsOperand_ = true;
}

void FormulaCompiler::TakeComma()
{
    Complete(loosest);
    if (!IsWaitingFor(What::Function)) Refuse("there is no function to this \",\"");
    ++waiting_.back().arguments;
    ++at_;
    expectsOperand_ = true;
}

void FormulaCompiler::TakeClosing()
{
    Complete(loosest);
    if (IsWaitingFor(What::Then)) Refuse("a \"?\" has no \":\"");
    if (waiting_.empty()) Refuse("there is no \"(\" to this \")\"");
    if (IsWaitingFor(What::Function)) CallFunction(waiting_.back());
    waiting_.pop_back();
    ++at_;
}

void FormulaCompiler::CallFunction(const Waiting& call)
{
    if (call.arguments == 1) {
        program_.Apply(call.function->ofOne);
    } else if (call.arguments == 2 && call.function->ofTwo) {
        program_.Apply(call.function->ofTwo);
    } else {
        Refuse("this function does not take so many numbers");
    }
    if (kind_ == FormulaKind::Integer) program_.Apply(truncated);
}

void FormulaCompiler::Complete(int precedence)
{
    while (!waiting_.empty() && waiting_.back().precedence > precedence)
        CompleteTop();
}

void FormulaCompiler::CompleteTop()
{
    const Waiting top = waiting_.back();
    waiting_.pop_back();
    const bool integer = kind_ == FormulaKind::Integer;
    if (top.what == What::Else) {
        program_.End(top.jump);
    } else if (top.what == What::Unary) {
        program_.Apply(integer ? top.unary->ofIntegers : top.unary->ofFloats);
    } else if (top.binary->form == BinaryOperator::Form::Plain) {
        program_.Apply(integer ? top.binary->ofIntegers : top.binary->ofFloats);
    } else {
        program_.ToTruth();
        program_.End(top.jump);
    }
}

void FormulaCompiler::SkipBlanks()
{
    while (!IsAtEnd() && (Current() == ' ' || Current() == '\t' || Current() == '\n' || Current() == '\r'))
        ++at_;
}

void FormulaCompiler::Refuse(const char* cause) const
{
    constexpr std::size_t shown = 40;
    const std::string rest(text_.substr(at_, shown));
    throw FormulaFault{
        GenICam::formatText("the formula is wrong at character %zu, \"%s\": %s", at_ + 1, rest.c_str(), cause)};
}

}  // namespace GenApi
