#pragma once

#include "genapi/ifloat.h"
#include "genapi/nodebase.h"
#include "genapi/numberlook.h"

namespace GenApi {

/// Base of the float nodes: the checks around a value and limits that each kind finds in its own way.
class CFloatBase : public CValueNode, public IFloat, public INumber
{
public:
    using CValueNode::CValueNode;

    void SetValue(double value, bool verify) override;
    double GetValue(bool verify, bool ignoreCache) override;
    double GetMin() override;
    double GetMax() override;
    bool HasInc() override;
    double GetInc() override;
    ERepresentation GetRepresentation() override { return Representation(); }
    gcstring GetUnit() override { return Unit(); }
    EDisplayNotation GetDisplayNotation() override { return notation_; }
    int64_t GetDisplayPrecision() override { return precision_; }

    int64_t ReadInteger(bool ignoreCache) override { return RoundToInteger(ReadFloat(ignoreCache)); }
    bool ReadTruth() override { return ReadFloat(false) != 0; }
    void WriteInteger(int64_t value) override { WriteFloat(static_cast<double>(value)); }
    bool IsIntegral() const override { return false; }
    int64_t ReadTruncated(bool ignoreCache) override;
    int64_t MinInteger() override;
    int64_t MaxInteger() override;
    int64_t IncInteger() override;
    INumber* AsNumber() override { return this; }

    bool TakeElement(ElementReader& element) override;

protected:
    gcstring ReadText(bool verify, bool ignoreCache) override;
    void WriteText(const gcstring& text, bool verify) override;
    /// What Min and Max do not tell about a value; OutOfRangeException.
    virtual void CheckFurther(double /*value*/) {}
    const NumberLook& Look() const { return look_; }

private:
    void CheckLimits(double value);
    double Read(bool verify, bool ignoreCache);
    void Write(double value, bool verify);

    NumberLook look_;
    EDisplayNotation notation_ = fnAutomatic;
    int64_t precision_ = 6;
};

}  // namespace GenApi
