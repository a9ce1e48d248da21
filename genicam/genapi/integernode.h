#pragma once

#include "genapi/integerbase.h"
#include "genapi/valuesource.h"

namespace GenApi {

/// Integer: a value of its own or another node's, with limits of its own or that node's.
class CIntegerNode final : public CIntegerBase
{
public:
    using CIntegerBase::CIntegerBase;

    int64_t ReadInteger(bool ignoreCache) override { return value_.Read(ignoreCache); }
    void WriteInteger(int64_t value) override;
    int64_t MinInteger() override;
    int64_t MaxInteger() override;
    int64_t IncInteger() override;
    std::vector<int64_t> ValidValues() override;
    gcstring Unit() const override { return Look().Unit(value_.Fixed()); }
    ERepresentation Representation() const override { return Look().Representation(value_.Fixed()); }

    bool TakeElement(ElementReader& element) override;
    void Finish(ElementReader& own) override;

protected:
    EAccessMode BaseMode() const override;
    void CheckFurther(int64_t value) override;

private:
    /// The number of the node that the value is in now; `otherwise` without one. With copies the one that is left
    /// when `better` has chosen among them all.
    int64_t OfValue(int64_t (INumber::*limit)(), int64_t otherwise,
                    const int64_t& (*better)(const int64_t&, const int64_t&)) const;
    bool IncrementsDiffer() const;
    /// The nodes that get what is written, each of which counts as an evaluation.
    std::span<const NumberRef> Written() const;
    void TakeValidValues(const ElementReader& element);

    ValueSource<int64_t> value_;
    IntegerSource min_;
    IntegerSource max_;
    IntegerSource inc_;
    std::vector<int64_t> validValues_;
};

}  // namespace GenApi
