#include "genapi/portnode.h"

#include <algorithm>
#include <limits>

#include "gcbase/exception.h"
#include "genapi/nodebuilder.h"
#include "genapi/nodemap_impl.h"
#include "genapi/registeraccess.h"
#include "genapi/stringnode.h"
#include "genapi/textconversion.h"

namespace GenApi {

namespace {

constexpr int64_t wordSize = 4;

void swapWords(std::span<uint8_t> bytes)
{
    for (auto word = bytes.begin(); word != bytes.end(); word += wordSize)
        std::reverse(word, word + wordSize);
}

}  // namespace

void CPortNode::Read(void* buffer, int64_t address, int64_t length)
{
    Map().Operate([&] {
        RequireReadable();
        CheckLength(length);
        ReadBytes({static_cast<uint8_t*>(buffer), static_cast<std::size_t>(length)}, address);
    });
}

void CPortNode::Write(const void* buffer, int64_t address, int64_t length)
{
    Map().Operate([&] {
        RequireWritable();
        CheckLength(length);
        WriteBytes({static_cast<const uint8_t*>(buffer), static_cast<std::size_t>(length)}, address);
    });
}

void CPortNode::Connect(IPort* port)
{
    LetGo();
    connected_ = port;
    informed_ = dynamic_cast<IPortConstruct*>(port);
    if (informed_) informed_->SetPortImpl(this);
    writtenWords_.clear();
    if (!IsChunkPort()) memory_.Detach();
    Map().Invalidate(*this, true);
}

void CPortNode::LetGo()
{
    connected_ = nullptr;
    if (auto* informed = std::exchange(informed_, nullptr)) informed->SetPortImpl(nullptr);
}

void CPortNode::ReadBytes(std::span<uint8_t> bytes, int64_t address)
{
    if (swapsWords_ && !ReadsMemory()) {
        ReadSwapped(bytes, address);
    } else {
        ReadRaw(bytes, address);
    }
}

void CPortNode::ReadRaw(std::span<uint8_t> bytes, int64_t address)
{
    const auto length = static_cast<int64_t>(bytes.size());
    if (!ReadsMemory()) return Connected().Read(bytes.data(), address, length);
    if (!memory_.Covers(address, length))
        GENICAM_THROW(AccessException,
                      "Port \"%s\": %lld bytes at address %lld are not among its %zu bytes of %s data.",
                      Name().c_str(), static_cast<long long>(length), static_cast<long long>(address),
                      memory_.Size(), IsChunkPort() ? "chunk" : "event");
    memory_.Read(bytes, address);
}

void CPortNode::ReadSwapped(std::span<uint8_t> bytes, int64_t address)
{
    const Words words = WordsAround(address, static_cast<int64_t>(bytes.size()));
    std::vector<uint8_t> buffer(words.size);
    ReadRaw(buffer, words.address);
    swapWords(buffer);
    std::copy_n(buffer.begin() + words.lead, bytes.size(), bytes.begin());
}

void CPortNode::WriteRaw(std::span<const uint8_t> bytes, int64_t address)
{
    if (ReadsMemory())
        GENICAM_THROW(AccessException, "Port \"%s\": %s data cannot be written.", Name().c_str(),
                      IsChunkPort() ? "chunk" : "event");
    Connected().Write(bytes.data(), address, static_cast<int64_t>(bytes.size()));
}

void CPortNode::WriteSwapped(std::span<const uint8_t> bytes, int64_t address)
{
    const Words words = WordsAround(address, static_cast<int64_t>(bytes.size()));
    std::vector<uint8_t> buffer(words.size);
    // Bytes beside the written ones, in the same words, must stay.
    if (buffer.size() != bytes.size()) ReadRaw(buffer, words.address);
    swapWords(buffer);
    std::copy(bytes.begin(), bytes.end(), buffer.begin() + words.lead);
    swapWords(buffer);
    WriteRaw(buffer, words.address);
}

CPortNode::Words CPortNode::WordsAround(int64_t address, int64_t length) const
{
    // Counted in unsigned numbers: the address may lie anywhere.
    const auto lead = static_cast<int64_t>(static_cast<uint64_t>(address) % wordSize);
    const int64_t size = (lead + length + wordSize - 1) / wordSize * wordSize;
    if (address > std::numeric_limits<int64_t>::max() - size)
        GENICAM_THROW(RuntimeException, "Port \"%s\": address %lld has no whole words behind it.", Name().c_str(),
                      static_cast<long long>(address));
    return {address - lead, lead, static_cast<std::size_t>(size)};
}

EAccessMode CPortNode::BaseMode() const
{
    if (ReadsMemory()) return RO;
    return connected_ ? connected_->GetAccessMode() : NA;
}

void CPortNode::DropChunk()
{
    if (!memory_.IsAttached()) return;
    memory_.Detach();
    Map().Invalidate(*this, true);
}

void CPortNode::ReleaseChunk()
{
    if (!memory_.IsCopy()) DropChunk();
}

void CPortNode::LearnChunkId()
{
    if (!chunkIdNode_) return;
    chunkId_.reset();
    if (IsReadable(chunkIdNode_->Mode())) chunkId_ = ParseHexDigits(chunkIdNode_->ReadString(false).view());
}

void CPortNode::OfferChunk(uint64_t id, std::span<const uint8_t> data)
{
    if (chunkId_ != id || memory_.IsAttached()) return;
    if (keepsChunk_) {
        memory_.Copy(data);
    } else {
        memory_.Attach(data);
    }
    Map().Invalidate(*this, true);
}

void CPortNode::TakeEventData(std::span<const uint8_t> data)
{
    if (!connected_) memory_.Copy(data);
}

void CPortNode::WriteBytes(std::span<const uint8_t> bytes, int64_t address)
{
    const auto length = static_cast<int64_t>(bytes.size());
    try {
        if (swapsWords_ && !ReadsMemory()) {
            WriteSwapped(bytes, address);
        } else {
            WriteRaw(bytes, address);
        }
    } catch (...) {
        ForgetBytes(address, length);
        throw;
    }
    ForgetBytes(address, length);
}

void CPortNode::CheckLength(int64_t length) const
{
    if (length < 0)
        GENICAM_THROW(InvalidArgumentException, "Port \"%s\": %lld bytes cannot be transferred.", Name().c_str(),
                      static_cast<long long>(length));
}

IPort& CPortNode::Connected() const
{
    if (!connected_) GENICAM_THROW(AccessException, "Port \"%s\" is not connected.", Name().c_str());
    return *connected_;
}

void CPortNode::AddRegister(RegisterAccess& reg)
{
    if (reg.Caching() == NoCache) return;
    if (reg.HasFixedPlace() && reg.Length() <= maxIndexedLength) {
        indexed_.push_back({reg.Address(), &reg});
    } else {
        others_.push_back(&reg);
    }
}

void CPortNode::SealRegisters()
{
    std::sort(indexed_.begin(), indexed_.end(),
              [](const Indexed& a, const Indexed& b) { return a.address < b.address; });
}

void CPortNode::ForgetBytes(int64_t address, int64_t length)
{
    const int64_t first = address < std::numeric_limits<int64_t>::min() + maxIndexedLength
                              ? std::numeric_limits<int64_t>::min()
                              : address - maxIndexedLength;
    auto entry = std::lower_bound(indexed_.begin(), indexed_.end(), first,
                                  [](const Indexed& indexed, int64_t start) { return indexed.address < start; });
    // Counted in unsigned numbers: the two may lie further apart than a signed one can say.
    const auto reaches = [&](int64_t start) {
        return start <= address ||
               static_cast<uint64_t>(start) - static_cast<uint64_t>(address) < static_cast<uint64_t>(length);
    };
    forgetful_.clear();
    const auto forget = [&](const RegisterAccess& reg) {
        if (reg.HasCached(address, length)) forgetful_.push_back(&reg.Owner());
    };
    for (; entry != indexed_.end() && reaches(entry->address); ++entry)
        forget(*entry->reg);
    for (const RegisterAccess* reg : others_)
        forget(*reg);
    if (!forgetful_.empty()) Map().Invalidate(forgetful_, false);
}

bool CPortNode::TakeElement(ElementReader& element)
{
    if (element.Is("ChunkID"))
        chunkId_ = element.HexDigits();
    else if (element.Is("pChunkID"))
        chunkIdNode_ = &element.String(Link::Parameter);
    else if (element.IsOneOf({"SwapEndianess", "SwapEndianness"}))
        swapsWords_ = element.YesNo();
    else if (element.Is("CacheChunkData"))
        keepsChunk_ = element.YesNo();
    else
        return CNodeBase::TakeElement(element);
    return true;
}

}  // namespace GenApi
