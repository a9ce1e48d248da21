#pragma once

#include "genapi/iboolean.h"
#include "genapi/nodebase.h"

namespace GenApi {

/// Boolean: true if the number behind it is the on-value, false for any other.
class CBooleanNode final : public CValueNode, public IBoolean, public INumber
{
public:
    using CValueNode::CValueNode;

    void SetValue(bool value, bool verify) override;
    bool GetValue(bool verify, bool ignoreCache) override;

    int64_t ReadInteger(bool ignoreCache) override { return Read(ignoreCache) ? 1 : 0; }
    double ReadFloat(bool ignoreCache) override { return Read(ignoreCache) ? 1 : 0; }
    bool ReadTruth() override { return Read(false); }
    void WriteInteger(int64_t value) override { Write(value != 0); }
    void WriteFloat(double value) override { Write(value != 0); }
    bool IsIntegral() const override { return true; }
    int64_t MinInteger() override { return 0; }
    int64_t MaxInteger() override { return 1; }
    int64_t IncInteger() override { return 1; }
    double MinFloat() override { return 0; }
    double MaxFloat() override { return 1; }
    std::optional<double> IncFloat() override { return 1; }
    gcstring Unit() const override { return {}; }
    ERepresentation Representation() const override { return Boolean; }
    INumber* AsNumber() override { return this; }

    bool TakeElement(ElementReader& element) override;
    void Finish(ElementReader& own) override;

protected:
    EAccessMode BaseMode() const override { return ModeOf(value_.Reference()); }
    gcstring ReadText(bool verify, bool ignoreCache) override;
    void WriteText(const gcstring& text, bool verify) override;

private:
    bool Read(bool ignoreCache) const { return value_.Read(ignoreCache) == on_; }
    void Write(bool value) { Store(value_, value ? on_ : off_); }

    IntegerSource value_;
    std::optional<bool> initial_;
    int64_t on_ = 1;
    int64_t off_ = 0;
};

}  // namespace GenApi
