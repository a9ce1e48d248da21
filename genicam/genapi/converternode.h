#pragma once

#include "genapi/floatbase.h"
#include "genapi/formulavariables.h"
#include "genapi/integerbase.h"

namespace GenApi {

/// The two formulas of a Converter or IntConverter and the node they convert. FormulaFrom makes the user's number
/// of the device's, which it calls TO; FormulaTo makes the device's of the user's, which it calls FROM.
class ConverterFormulas
{
public:
    ConverterFormulas(const CNodeBase& owner, FormulaKind kind) : owner_(owner), variables_(owner, kind) {}

    bool TakeElement(ElementReader& element);
    void Finish(ElementReader& own);

    EAccessMode Mode() const;
    FormulaNumber Read(bool ignoreCache) const;
    /// A float for a node of integers is rounded to the nearest one.
    void Write(FormulaNumber value) const;
    /// OutOfRangeException if `value` becomes none of the device's valid values.
    void CheckValidValues(FormulaNumber value) const;

    /// Nothing where the device's number has no limit on that side, or the formula no result for it.
    struct Range
    {
        std::optional<FormulaNumber> min;
        std::optional<FormulaNumber> max;
    };
    Range Limits() const;
    /// The user's step for one step of the device; nothing unless the description says that the conversion is
    /// linear.
    std::optional<FormulaNumber> Increment() const;

private:
    enum class Slope
    {
        Increasing,
        Decreasing,
        Varying,
        Automatic
    };

    FormulaNumber ToDevice(FormulaNumber value) const;
    std::optional<FormulaNumber> FromDevice(const std::optional<FormulaNumber>& value) const;
    /// Limits of the device's number, without those of its type.
    Range DeviceLimits() const;
    bool IsDecreasing(const Range& device) const;
    FormulaNumber DeviceStep() const;
    std::optional<FormulaNumber> FromNear(const std::optional<FormulaNumber>& end,
                                          const std::optional<FormulaNumber>& otherEnd, double inwards) const;

    const CNodeBase& owner_;
    FormulaVariables variables_;
    NumberRef value_;
    Slope slope_ = Slope::Automatic;
    bool linear_ = false;
    bool hasRange_ = false;                // the device's limits tell those of the user
    std::optional<ElementReader> toText_;  // until Finish
    std::optional<ElementReader> fromText_;
    Formula to_;
    Formula from_;
};

/// Converter: a float made from another node's number by formulas.
class CConverterNode final : public CFloatBase
{
public:
    explicit CConverterNode(NodeOrigin origin) : CFloatBase(std::move(origin)) {}

    double ReadFloat(bool ignoreCache) override { return formulas_.Read(ignoreCache).AsFloat(); }
    void WriteFloat(double value) override;
    double MinFloat() override;
    double MaxFloat() override;
    std::optional<double> IncFloat() override;
    gcstring Unit() const override { return Look().Unit({}); }
    ERepresentation Representation() const override { return Look().Representation({}); }

    bool TakeElement(ElementReader& element) override;
    void Finish(ElementReader& own) override;

protected:
    EAccessMode BaseMode() const override { return formulas_.Mode(); }
    void CheckFurther(double value) override { formulas_.CheckValidValues(value); }

private:
    ConverterFormulas formulas_{*this, FormulaKind::Float};
};

/// IntConverter: an integer made from another node's number by formulas.
class CIntConverterNode final : public CIntegerBase
{
public:
    explicit CIntConverterNode(NodeOrigin origin) : CIntegerBase(std::move(origin)) {}

    int64_t ReadInteger(bool ignoreCache) override { return formulas_.Read(ignoreCache).AsInteger(); }
    void WriteInteger(int64_t value) override;
    int64_t MinInteger() override;
    int64_t MaxInteger() override;
    int64_t IncInteger() override;
    gcstring Unit() const override { return Look().Unit({}); }
    ERepresentation Representation() const override { return Look().Representation({}); }

    bool TakeElement(ElementReader& element) override;
    void Finish(ElementReader& own) override;

protected:
    EAccessMode BaseMode() const override { return formulas_.Mode(); }
    void CheckFurther(int64_t value) override { formulas_.CheckValidValues(value); }

private:
    ConverterFormulas formulas_{*this, FormulaKind::Integer};
};

}  // namespace GenApi
