#pragma once

#include "genapi/integerbase.h"
#include "genapi/registerof.h"

namespace GenApi {

/// IntReg: a whole register of 1 to 8 bytes as an integer. An unsigned register of 8 bytes counts up to 2^63-1;
/// larger contents show as the negative number of the same bits.
class CIntRegNode : public CRegisterOf<CIntegerBase>
{
public:
    explicit CIntRegNode(NodeOrigin origin) : CRegisterOf(std::move(origin), WriteThrough) {}

    int64_t ReadInteger(bool ignoreCache) override;
    void WriteInteger(int64_t value) override;
    int64_t MinInteger() override;
    int64_t MaxInteger() override;
    int64_t IncInteger() override { return 1; }
    gcstring Unit() const override { return Look().Unit({}); }
    ERepresentation Representation() const override { return Look().Representation({}); }

    bool TakeElement(ElementReader& element) override;
    void Finish(ElementReader& own) override;

protected:
    /// The bits of the register that are the value, counted from the least significant one.
    struct Field
    {
        unsigned shift;
        unsigned width;
    };
    virtual Field ValueField(int64_t length) const { return {0, static_cast<unsigned>(8 * length)}; }
    /// The register's content around the value, which a write must keep.
    virtual uint64_t Surroundings(int64_t /*length*/, int64_t /*address*/) { return 0; }
    virtual void Written(uint64_t /*word*/, int64_t /*address*/) {}

    uint64_t ReadWord(int64_t length, bool ignoreCache);
    EEndianess Endianess() const { return endianess_; }

private:
    ESign sign_ = Unsigned;
    EEndianess endianess_ = LittleEndian;
};

/// MaskedIntReg: some bits of a register. A write reads the other bits first; those of a register that cannot be
/// read are taken from what was last written to it through its masked nodes, at first zero.
class CMaskedIntRegNode final : public CIntRegNode
{
public:
    using CIntRegNode::CIntRegNode;

    bool TakeElement(ElementReader& element) override;
    void Finish(ElementReader& own) override;

protected:
    Field ValueField(int64_t length) const override;
    uint64_t Surroundings(int64_t length, int64_t address) override;
    void Written(uint64_t word, int64_t address) override;

private:
    /// Why there is no such field in a register of that many bytes, if so.
    std::optional<std::string> FieldFault(int64_t length) const;

    std::optional<int64_t> lsb_;
    std::optional<int64_t> msb_;
};

}  // namespace GenApi
