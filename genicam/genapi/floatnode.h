#pragma once

#include "genapi/floatbase.h"

namespace GenApi {

/// Float: a value of its own or another node's, with limits of its own or that node's.
class CFloatNode final : public CFloatBase
{
public:
    using CFloatBase::CFloatBase;

    double ReadFloat(bool ignoreCache) override { return value_.Read(ignoreCache); }
    void WriteFloat(double value) override { Store(value_, value); }
    double MinFloat() override;
    double MaxFloat() override;
    std::optional<double> IncFloat() override;
    gcstring Unit() const override { return Look().Unit(value_.Reference()); }
    ERepresentation Representation() const override { return Look().Representation(value_.Reference()); }

    bool TakeElement(ElementReader& element) override;
    void Finish(ElementReader& own) override;

protected:
    EAccessMode BaseMode() const override { return ModeOf(value_.Reference()); }

private:
    FloatSource value_;
    FloatSource min_;
    FloatSource max_;
    FloatSource inc_;
};

}  // namespace GenApi
