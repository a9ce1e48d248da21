#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "genapi/formulaoperators.h"

namespace GenApi {

/// Gives a formula the values of its variables, each when it is needed and not before.
class VariableReader
{
public:
    virtual FormulaNumber ReadVariable(std::size_t index) = 0;

protected:
    ~VariableReader() = default;
};

/// A formula as a flat program for a stack of numbers. It has jumps forward only, so that an evaluation takes at
/// most Length() instructions and no recursion, however the text was nested. Never changes once it is made.
class Formula
{
public:
    static constexpr std::size_t maxLength = 16384;
    static constexpr std::size_t maxDepth = 1024;

    /// FormulaFault where the numbers allow no result.
    FormulaNumber Evaluate(VariableReader& variables) const;
    std::size_t Length() const { return program_.size(); }
    /// The variables that it mentions, each once.
    const std::vector<std::size_t>& Variables() const { return variables_; }

private:
    friend class FormulaProgram;

    enum class Step : uint8_t
    {
        Constant,     ///< pushes
        Variable,     ///< pushes
        Unary,        ///< replaces the top
        Binary,       ///< replaces the two on top
        Truth,        ///< replaces the top by 1 or 0
        And,          ///< a false top becomes 0 and jumps; a true one is popped
        Or,           ///< a true top becomes 1 and jumps; a false one is popped
        JumpIfFalse,  ///< pops
        Jump
    };
    struct Instruction
    {
        Step step;
        FormulaNumber constant;
        std::size_t operand = 0;  // a variable, or how many instructions a jump leaves out
        UnaryFunction unary = nullptr;
        BinaryFunction binary = nullptr;
    };

    FormulaNumber Run(FormulaNumber* top, VariableReader& variables) const;

    std::vector<Instruction> program_;
    std::vector<std::size_t> variables_;
    std::size_t depth_ = 0;
};

/// A formula in the making. What goes beyond the limits of a formula raises FormulaFault.
class FormulaProgram
{
public:
    void PushConstant(FormulaNumber number);
    void PushVariable(std::size_t index);
    /// Puts another formula in this place.
    void PushFormula(const Formula& formula);
    void Apply(UnaryFunction function);
    void Apply(BinaryFunction function);
    void ToTruth();

    /// A jump whose end is not known yet.
    using Jump = std::size_t;
    Jump BeginAnd();
    Jump BeginOr();
    Jump BeginThen();
    /// Ends the first branch, which `then` began.
    Jump BeginElse(Jump then);
    /// The jump ends here.
    void End(Jump jump);

    Formula Take() { return std::move(formula_); }

private:
    using Step = Formula::Step;

    std::size_t Add(Formula::Instruction instruction);
    void Deepen(std::size_t by);
    void Mention(std::size_t variable);

    Formula formula_;
    std::size_t depth_ = 0;
};

}  // namespace GenApi
