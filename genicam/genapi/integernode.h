#pragma once

#include "genapi/integerbase.h"

namespace GenApi {

/// Integer: a value of its own or another node's, with limits of its own or that node's.
class CIntegerNode final : public CIntegerBase
{
public:
    using CIntegerBase::CIntegerBase;

    int64_t ReadInteger(bool ignoreCache) override { return value_.Read(ignoreCache); }
    void WriteInteger(int64_t value) override { Store(value_, value); }
    int64_t MinInteger() override;
    int64_t MaxInteger() override;
    int64_t IncInteger() override;
    std::vector<int64_t> ValidValues() override;
    gcstring Unit() const override { return Look().Unit(value_.Reference()); }
    ERepresentation Representation() const override { return Look().Representation(value_.Reference()); }

    bool TakeElement(ElementReader& element) override;
    void Finish(ElementReader& own) override;

protected:
    EAccessMode BaseMode() const override { return ModeOf(value_.Reference()); }
    void CheckFurther(int64_t value) override;

private:
    void TakeValidValues(const ElementReader& element);

    IntegerSource value_;
    IntegerSource min_;
    IntegerSource max_;
    IntegerSource inc_;
    std::vector<int64_t> validValues_;
};

}  // namespace GenApi
