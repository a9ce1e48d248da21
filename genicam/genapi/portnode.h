#pragma once

#include <span>
#include <unordered_map>
#include <vector>

#include "genapi/iport.h"
#include "genapi/nodebase.h"
#include "genapi/portmemory.h"

namespace GenApi {

class RegisterAccess;

/// Port: the way from the map's registers to the port that an application connected, or, for a port with a ChunkID
/// or EventID, to a chunk's or event's bytes. Not available while there is neither. It knows which registers on it
/// cache, since registers may share bytes: what one writes the others must forget.
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

    bool IsChunkPort() const { return chunkId_ || chunkIdNode_; }
    const PortMemory& Memory() const { return memory_; }
    /// Forgets the chunk, and a copy of it.
    void DropChunk();
    /// Lets go of the buffer of the chunk; a copy stays.
    void ReleaseChunk();
    /// Asks the node that tells the id, if there is one.
    void LearnChunkId();
    /// Takes the data if the id is this port's and no chunk was taken before.
    void OfferChunk(uint64_t id, std::span<const uint8_t> data);
    /// Keeps a copy for reading; invalidating is the caller's.
    void TakeEventData(std::span<const uint8_t> data);

    void AddRegister(RegisterAccess& reg);
    /// All registers are added.
    void SealRegisters();

    CPortNode* AsPort() override { return this; }
    bool TakeElement(ElementReader& element) override;

protected:
    EAccessMode BaseMode() const override;

private:
    // Registers up to this long with a fixed place are found by their address; the few others are all asked.
    static constexpr int64_t maxIndexedLength = 64;

    struct Indexed
    {
        int64_t address;
        RegisterAccess* reg;
    };

    /// The 4-byte words that some bytes lie in, `lead` bytes after their start.
    struct Words
    {
        int64_t address;
        int64_t lead;
        std::size_t size;
    };

    Words WordsAround(int64_t address, int64_t length) const;
    void CheckLength(int64_t length) const;
    IPort& Connected() const;
    bool ReadsMemory() const { return memory_.IsAttached(); }
    void ReadRaw(std::span<uint8_t> bytes, int64_t address);
    void ReadSwapped(std::span<uint8_t> bytes, int64_t address);
    void WriteRaw(std::span<const uint8_t> bytes, int64_t address);
    void WriteSwapped(std::span<const uint8_t> bytes, int64_t address);
    void ForgetBytes(int64_t address, int64_t length);

    IPort* connected_ = nullptr;
    IPortConstruct* informed_ = nullptr;  // the same port, if it wants to know its node
    bool swapsWords_ = false;
    bool keepsChunk_ = false;
    std::optional<uint64_t> chunkId_;  // fixed, or what chunkIdNode_ told last
    CStringBase* chunkIdNode_ = nullptr;
    PortMemory memory_;
    std::vector<Indexed> indexed_;
    std::vector<RegisterAccess*> others_;
    std::vector<CNodeBase*> forgetful_;  // of ForgetBytes, kept for its memory
    std::unordered_map<int64_t, uint64_t> writtenWords_;
};

}  // namespace GenApi
