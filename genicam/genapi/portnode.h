#pragma once

#include <span>
#include <unordered_map>
#include <vector>

#include "genapi/iport.h"
#include "genapi/nodebase.h"

namespace GenApi {

class RegisterAccess;

/// Port: the way from the map's registers to the port that an application connected. Not available while none is.
/// It knows which registers on it cache, since registers may share bytes: what one writes the others must forget.
class CPortNode final : public CNodeBase, public IPort
{
public:
    using CNodeBase::CNodeBase;

    void Read(void* buffer, int64_t address, int64_t length) override;
    void Write(const void* buffer, int64_t address, int64_t length) override;

    /// Takes `port`, or none for null, in place of the one before. All registers are invalidated.
    void Connect(IPort* port);
    /// Tells the connected port that the map ends.
    void LetGo();

    void ReadBytes(std::span<uint8_t> bytes, int64_t address);
    /// Also drops what registers have cached of these bytes, and invalidates what depends on those.
    void WriteBytes(std::span<const uint8_t> bytes, int64_t address);
    /// What masked nodes last wrote to a register that cannot be read; zero at first.
    uint64_t& WrittenWord(int64_t address) { return writtenWords_[address]; }

    void AddRegister(RegisterAccess& reg);
    /// All registers are added.
    void SealRegisters();

    CPortNode* AsPort() override { return this; }
    bool TakeElement(ElementReader& element) override;

protected:
    EAccessMode BaseMode() const override { return connected_ ? connected_->GetAccessMode() : NA; }

private:
    // Registers up to this long with a fixed place are found by their address; the few others are all asked.
    static constexpr int64_t maxIndexedLength = 64;

    struct Indexed
    {
        int64_t address;
        RegisterAccess* reg;
    };

    void CheckLength(int64_t length) const;
    IPort& Connected() const;
    void ForgetBytes(int64_t address, int64_t length);
    void Forget(RegisterAccess& reg, int64_t address, int64_t length);

    IPort* connected_ = nullptr;
    IPortConstruct* informed_ = nullptr;  // the same port, if it wants to know its node
    std::vector<Indexed> indexed_;
    std::vector<RegisterAccess*> others_;
    std::unordered_map<int64_t, uint64_t> writtenWords_;
};

}  // namespace GenApi
