#include "parameteradapter/multiparameterportdemultiplexer.h"

#include <algorithm>
#include <cstring>

namespace AnythingToNodeMapAdapter::Detail {

void CMultiParameterPortDemultiplexer::connect(CBasicNodeMapPort* port)
{
    if (!port || sorted_) return;
    entries_.push_back({port->baseAddress(), port->blockLength(), port});
}

void CMultiParameterPortDemultiplexer::disconnect(const CBasicNodeMapPort* port)
{
    for (Entry& entry : entries_) {
        if (entry.port == port) entry.port = nullptr;
    }
}

void CMultiParameterPortDemultiplexer::sort()
{
    std::sort(entries_.begin(), entries_.end(),
              [](const Entry& a, const Entry& b) { return a.address < b.address; });
    sorted_ = true;
}

void CMultiParameterPortDemultiplexer::clear()
{
    entries_.clear();
    sorted_ = false;
}

void CMultiParameterPortDemultiplexer::read(void* buffer, std::int64_t address, std::int64_t length) const
{
    if (const Entry* entry = find(address, length)) {
        entry->port->read(buffer, address - entry->address, length);
    } else if (length > 0) {
        std::memset(buffer, 0, static_cast<std::size_t>(length));
    }
}

void CMultiParameterPortDemultiplexer::write(const void* buffer, std::int64_t address, std::int64_t length) const
{
    if (const Entry* entry = find(address, length)) entry->port->write(buffer, address - entry->address, length);
}

const CMultiParameterPortDemultiplexer::Entry* CMultiParameterPortDemultiplexer::find(std::int64_t address,
                                                                                      std::int64_t length) const
{
    if (!sorted_) return nullptr;
    for (const Entry& entry : entries_) {
        if (entry.covers(address, length)) return entry.port ? &entry : nullptr;
    }
    return nullptr;
}

}  // namespace AnythingToNodeMapAdapter::Detail
