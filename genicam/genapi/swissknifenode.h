#pragma once

#include <limits>

#include "genapi/floatbase.h"
#include "genapi/formulavariables.h"
#include "genapi/integerbase.h"

namespace GenApi {

/// The formula of a SwissKnife or IntSwissKnife with its variables.
class SwissKnifeFormula
{
public:
    SwissKnifeFormula(const CNodeBase& owner, FormulaKind kind) : owner_(owner), variables_(owner, kind) {}

    bool TakeElement(ElementReader& element);
    void Finish(ElementReader& own);
    FormulaNumber Evaluate(bool ignoreCache) const
    {
        return variables_.Evaluate(formula_, {}, {.ignoreCache = ignoreCache});
    }
    EAccessMode Mode() const { return variables_.AreAllReadable() ? RO : NA; }
    [[noreturn]] void RefuseWrite() const;

private:
    const CNodeBase& owner_;
    FormulaVariables variables_;
    std::optional<ElementReader> text_;  // until Finish
    Formula formula_;
};

/// SwissKnife: a float computed from other nodes.
class CSwissKnifeNode final : public CFloatBase
{
public:
    explicit CSwissKnifeNode(NodeOrigin origin) : CFloatBase(std::move(origin)) {}

    double ReadFloat(bool ignoreCache) override { return formula_.Evaluate(ignoreCache).AsFloat(); }
    void WriteFloat(double /*value*/) override { formula_.RefuseWrite(); }
    double MinFloat() override { return std::numeric_limits<double>::lowest(); }
    double MaxFloat() override { return std::numeric_limits<double>::max(); }
    std::optional<double> IncFloat() override { return std::nullopt; }
    gcstring Unit() const override { return Look().Unit({}); }
    ERepresentation Representation() const override { return Look().Representation({}); }

    bool TakeElement(ElementReader& element) override;
    void Finish(ElementReader& own) override;

protected:
    EAccessMode BaseMode() const override { return formula_.Mode(); }

private:
    SwissKnifeFormula formula_{*this, FormulaKind::Float};
};

/// IntSwissKnife: an integer computed from other nodes; also the address of a register, in whose element it
/// stands.
class CIntSwissKnifeNode final : public CIntegerBase
{
public:
    explicit CIntSwissKnifeNode(NodeOrigin origin) : CIntegerBase(std::move(origin)) {}

    int64_t ReadInteger(bool ignoreCache) override { return formula_.Evaluate(ignoreCache).AsInteger(); }
    void WriteInteger(int64_t /*value*/) override { formula_.RefuseWrite(); }
    int64_t MinInteger() override { return std::numeric_limits<int64_t>::min(); }
    int64_t MaxInteger() override { return std::numeric_limits<int64_t>::max(); }
    int64_t IncInteger() override { return 1; }
    gcstring Unit() const override { return Look().Unit({}); }
    ERepresentation Representation() const override { return Look().Representation({}); }

    bool TakeElement(ElementReader& element) override;
    void Finish(ElementReader& own) override;

protected:
    EAccessMode BaseMode() const override { return formula_.Mode(); }

private:
    SwissKnifeFormula formula_{*this, FormulaKind::Integer};
};

}  // namespace GenApi
