#pragma once

#include "genapi/floatbase.h"
#include "genapi/registerof.h"

namespace GenApi {

/// FloatReg: a register of 4 or 8 bytes as an IEEE 754 number. It may round what is written, thus a write
/// drops the cache unless the description says otherwise.
class CFloatRegNode final : public CRegisterOf<CFloatBase>
{
public:
    explicit CFloatRegNode(NodeOrigin origin) : CRegisterOf(std::move(origin), WriteAround) {}

    double ReadFloat(bool ignoreCache) override;
    void WriteFloat(double value) override;
    double MinFloat() override { return -MaxFloat(); }
    double MaxFloat() override;
    std::optional<double> IncFloat() override { return std::nullopt; }
    gcstring Unit() const override { return Look().Unit({}); }
    ERepresentation Representation() const override { return Look().Representation({}); }

    bool TakeElement(ElementReader& element) override;
    void Finish(ElementReader& own) override;

private:
    std::span<uint8_t> Buffer();

    EEndianess endianess_ = LittleEndian;
    std::array<uint8_t, 8> buffer_{};
};

}  // namespace GenApi
