#pragma once

#include <string_view>
#include <variant>
#include <vector>

#include "genapi/formula.h"

namespace GenApi {

/// What a name in a formula stands for.
struct VariableSymbol
{
    std::size_t index;
};
using FormulaSymbol = std::variant<std::monostate, VariableSymbol, FormulaNumber, const Formula*>;

/// The names that a formula may use besides those of the language; they win over E and PI.
class FormulaSymbols
{
public:
    /// Nothing (monostate) if the name means nothing.
    virtual FormulaSymbol FindSymbol(std::string_view name) = 0;

protected:
    ~FormulaSymbols() = default;
};

/// Makes a formula of its text, without recursion: operators wait on a stack of the compiler until the operand
/// behind them is complete. Operators in descending order of precedence: `( )` and functions; unary `- + ~`; `**`
/// (from the right); `* / %`; `+ -`; `<< >>`; `< <= > >=`; `= <> == !=`; `&`; `^`; `|`; `&&`; `||`; `? :` (from
/// the right). FormulaFault with the character at which the text goes wrong.
class FormulaCompiler
{
public:
    static constexpr std::size_t maxText = 65536;

    FormulaCompiler(std::string_view text, FormulaKind kind, FormulaSymbols& symbols)
        : text_(text), kind_(kind), symbols_(symbols)
    {}
    Formula Compile();

private:
    /// Something that waits for what follows it.
    struct Waiting
    {
        enum class What
        {
            Unary,
            Binary,
            Then,  ///< a `?` that waits for its `:`
            Else,
            Parenthesis,
            Function
        };
        What what;
        int precedence;
        const UnaryOperator* unary = nullptr;
        const BinaryOperator* binary = nullptr;
        const FormulaFunction* function = nullptr;
        int arguments = 0;
        FormulaProgram::Jump jump = 0;
    };
    using What = Waiting::What;

    void TakeOperand();
    void TakeName();
    void TakeNumber();
    /// What follows an operand.
    void TakeOperator();
    void TakeBinary(const BinaryOperator& row);
    void TakeQuestionMark();
    void TakeColon();
    void TakeComma();
    void TakeClosing();

    void PushLiteral(FormulaNumber number);
    void PushSymbol(const FormulaSymbol& symbol);
    void CallFunction(const Waiting& call);
    /// Completes what binds tighter than `precedence`.
    void Complete(int precedence);
    void CompleteTop();
    bool IsWaitingFor(What what) const { return !waiting_.empty() && waiting_.back().what == what; }

    void SkipBlanks();
    bool IsAtEnd() const { return at_ == text_.size(); }
    char Current() const { return IsAtEnd() ? '\0' : text_[at_]; }
    [[noreturn]] void Refuse(const char* cause) const;

    std::string_view text_;
    std::size_t at_ = 0;
    FormulaKind kind_;
    FormulaSymbols& symbols_;
    FormulaProgram program_;
    std::vector<Waiting> waiting_;
    bool expectsOperand_ = true;
};

}  // namespace GenApi
