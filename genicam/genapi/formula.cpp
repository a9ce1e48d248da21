#include "genapi/formula.h"

#include <algorithm>
#include <array>

#include "gcbase/exception.h"

namespace GenApi {

FormulaNumber Formula::Evaluate(VariableReader& variables) const
{
    // Most formulas need little; the stacks of the nodes that they depend on lie above this one.
    std::array<FormulaNumber, 16> few;
    if (depth_ < few.size()) return Run(few.data(), variables);
    std::vector<FormulaNumber> many(depth_ + 1);
    return Run(many.data(), variables);
}

/// `top` is the topmost number; the one it points to at first is not used.
FormulaNumber Formula::Run(FormulaNumber* top, VariableReader& variables) const
{
    for (std::size_t i = 0; i < program_.size(); ++i) {
        const Instruction& instruction = program_[i];
        switch (instruction.step) {
            case Step::Constant:
                *++top = instruction.constant;
                break;
            case Step::Variable:
                *++top = variables.ReadVariable(instruction.operand);
                break;
            case Step::Unary:
                *top = instruction.unary(*top);
                break;
            case Step::Binary:
                --top;
                *top = instruction.binary(top[0], top[1]);
                break;
            case Step::Truth:
                *top = int64_t{top->IsTrue()};
                break;
            case Step::And:
            case Step::Or:
                if (top->IsTrue() == (instruction.step == Step::Or)) {
                    *top = int64_t{instruction.step == Step::Or};
                    i += instruction.operand;
                } else {
                    --top;
                }
                break;
            case Step::JumpIfFalse:
                if (!(top--)->IsTrue()) i += instruction.operand;
                break;
            case Step::Jump:
                i += instruction.operand;
                break;
        }
    }
    return *top;
}

void FormulaProgram::PushConstant(FormulaNumber number)
{
    Deepen(1);
    Add({.step = Step::Constant, .constant = number});
}

void FormulaProgram::PushVariable(std::size_t index)
{
    Deepen(1);
    Mention(index);
    Add({.step = Step::Variable, .constant = {}, .operand = index});
}

void FormulaProgram::PushFormula(const Formula& formula)
{
    Deepen(formula.depth_);
    depth_ -= formula.depth_ - 1;
    for (const std::size_t variable : formula.variables_)
        Mention(variable);
    for (const Formula::Instruction& instruction : formula.program_)
        Add(instruction);
}

void FormulaProgram::Apply(UnaryFunction function)
{
    Add({.step = Step::Unary, .constant = {}, .operand = 0, .unary = function});
}

void FormulaProgram::Apply(BinaryFunction function)
{
    --depth_;
    Add({.step = Step::Binary, .constant = {}, .operand = 0, .unary = nullptr, .binary = function});
}

void FormulaProgram::ToTruth()
{
    Add({.step = Step::Truth, .constant = {}});
}

FormulaProgram::Jump FormulaProgram::BeginAnd()
{
    --depth_;
    return Add({.step = Step::And, .constant = {}});
}

FormulaProgram::Jump FormulaProgram::BeginOr()
{
    --depth_;
    return Add({.step = Step::Or, .constant = {}});
}

FormulaProgram::Jump FormulaProgram::BeginThen()
{
    --depth_;
    return Add({.step = Step::JumpIfFalse, .constant = {}});
}

FormulaProgram::Jump FormulaProgram::BeginElse(Jump then)
{
    --depth_;
    const Jump jump = Add({.step = Step::Jump, .constant = {}});
    End(then);
    return jump;
}

void FormulaProgram::End(Jump jump)
{
    formula_.program_[jump].operand = formula_.program_.size() - jump - 1;
}

std::size_t FormulaProgram::Add(Formula::Instruction instruction)
{
    if (formula_.program_.size() == Formula::maxLength)
        throw FormulaFault{GenICam::formatText("the formula has more than %zu steps", Formula::maxLength)};
    formula_.program_.push_back(instruction);
    return formula_.program_.size() - 1;
}

void FormulaProgram::Deepen(std::size_t by)
{
    depth_ += by;
    if (depth_ > Formula::maxDepth)
        throw FormulaFault{
            GenICam::formatText("the formula holds more than %zu numbers at once", Formula::maxDepth)};
    formula_.depth_ = std::max(formula_.depth_, depth_);
}

void FormulaProgram::Mention(std::size_t variable)
{
    auto& variables = formula_.variables_;
    if (std::find(variables.begin(), variables.end(), variable) == variables.end()) variables.push_back(variable);
}

}  // namespace GenApi
