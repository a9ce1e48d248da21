#pragma once

#include "genapi/iinteger.h"
#include "genapi/nodebase.h"
#include "genapi/numberlook.h"

namespace GenApi {

/// Base of the integer nodes: the checks around a value and limits that each kind finds in its own way.
class CIntegerBase : public CValueNode, public IInteger, public INumber
{
public:
    using CValueNode::CValueNode;

    void SetValue(int64_t value, bool verify) override;
    int64_t GetValue(bool verify, bool ignoreCache) override;
    int64_t GetMin() override;
    int64_t GetMax() override;
    int64_t GetInc() override;
    ERepresentation GetRepresentation() override { return Representation(); }
    gcstring GetUnit() override { return Unit(); }

    double ReadFloat(bool ignoreCache) override { return static_cast<double>(ReadInteger(ignoreCache)); }
    bool ReadTruth() override { return ReadInteger(false) != 0; }
    void WriteFloat(double value) override { WriteInteger(RoundToInteger(value)); }
    bool IsIntegral() const override { return true; }
    double MinFloat() override { return static_cast<double>(MinInteger()); }
    double MaxFloat() override { return static_cast<double>(MaxInteger()); }
    std::optional<double> IncFloat() override { return static_cast<double>(IncInteger()); }
    INumber* AsNumber() override { return this; }

    bool TakeElement(ElementReader& element) override;

protected:
    gcstring ReadText(bool verify, bool ignoreCache) override;
    void WriteText(const gcstring& text, bool verify) override;
    /// What Min, Max and Inc do not tell about a value; OutOfRangeException.
    virtual void CheckFurther(int64_t /*value*/) {}
    const NumberLook& Look() const { return look_; }

private:
    void CheckLimits(int64_t value);
    int64_t Read(bool verify, bool ignoreCache);
    void Write(int64_t value, bool verify);

    NumberLook look_;
};

}  // namespace GenApi
