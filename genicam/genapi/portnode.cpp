#include "genapi/portnode.h"

#include <algorithm>
#include <limits>

#include "gcbase/exception.h"
#include "genapi/nodebuilder.h"
#include "genapi/nodemap_impl.h"
#include "genapi/registeraccess.h"

namespace GenApi {

void CPortNode::Read(void* buffer, int64_t address, int64_t length)
{
    Map().Operate([&] {
        RequireReadable();
        CheckLength(length);
        Connected().Read(buffer, address, length);
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
    Map().Invalidate(*this, true);
}

void CPortNode::LetGo()
{
    connected_ = nullptr;
    if (auto* informed = std::exchange(informed_, nullptr)) informed->SetPortImpl(nullptr);
}

void CPortNode::ReadBytes(std::span<uint8_t> bytes, int64_t address)
{
    Connected().Read(bytes.data(), address, static_cast<int64_t>(bytes.size()));
}

void CPortNode::WriteBytes(std::span<const uint8_t> bytes, int64_t address)
{
    const auto length = static_cast<int64_t>(bytes.size());
    try {
        Connected().Write(bytes.data(), address, length);
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
    for (; entry != indexed_.end() && (entry->address <= address || entry->address - address < length); ++entry)
        Forget(*entry->reg, address, length);
    for (RegisterAccess* reg : others_)
        Forget(*reg, address, length);
}

void CPortNode::Forget(RegisterAccess& reg, int64_t address, int64_t length)
{
    if (reg.HasCached(address, length)) Map().Invalidate(reg.Owner(), false);
}

bool CPortNode::TakeElement(ElementReader& element)
{
    if (element.IsOneOf({"ChunkID", "pChunkID"})) element.RefuseUnsupported();
    if (element.Is("SwapEndianess") && element.YesNo()) element.RefuseUnsupported();
    return CNodeBase::TakeElement(element);
}

}  // namespace GenApi
