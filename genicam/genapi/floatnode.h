#pragma once

#include "genapi/floatbase.h"
#include "genapi/valuesource.h"

namespace GenApi {

/// Float: a value of its own or another node's, with limits of its own or that node's.
class CFloatNode final : public CFloatBase
{
public:
    using CFloatBase::CFloatBase;

    double ReadFloat(bool ignoreCache) override { return value_.Read(ignoreCache); }
    void WriteFloat(double value) override;
    double MinFloat() override;
    double MaxFloat() override;
    std::optional<double> IncFloat() override;
    gcstring Unit() const override { return Look().Unit(value_.Fixed()); }
    ERepresentation Representation() const override { return Look().Representation(value_.Fixed()); }

    bool TakeElement(ElementReader& element) override;
    void Finish(ElementReader& own) override;

protected:
    EAccessMode BaseMode() const override { return value_.Mode(); }

private:
    const NumberRef& Value() const { return value_.Current().Reference(); }

    ValueSource<double> value_;
    FloatSource min_;
    FloatSource max_;
    FloatSource inc_;
};

}  // namespace GenApi
