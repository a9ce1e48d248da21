#pragma once

#include <cstdint>
#include <vector>

#include "parameteradapter/basicnodemapport.h"

namespace AnythingToNodeMapAdapter::Detail {

/// Finds the block of registers behind an address of a shared port. It is filled, then sorted, and serves reads
/// and writes from then on. A request that no block holds wholly reads as zeros and writes nothing.
class CMultiParameterPortDemultiplexer
{
public:
    virtual ~CMultiParameterPortDemultiplexer() = default;

    /// Adds the block of `port`, which must live until it is disconnected. Ignored for null, and once sorted.
    void connect(CBasicNodeMapPort* port);
    /// The addresses of the block read as zeros from now on.
    void disconnect(const CBasicNodeMapPort* port);
    void sort();
    void clear();

    void read(void* buffer, std::int64_t address, std::int64_t length) const;
    void write(const void* buffer, std::int64_t address, std::int64_t length) const;

private:
    struct Entry
    {
        std::int64_t address;
        std::int64_t length;
        CBasicNodeMapPort* port;

        bool covers(std::int64_t first, std::int64_t count) const
        {
            return first >= address && count >= 0 && count <= length && first - address <= length - count;
        }
    };
    const Entry* find(std::int64_t address, std::int64_t length) const;

    bool sorted_ = false;
    std::vector<Entry> entries_;
};

}  // namespace AnythingToNodeMapAdapter::Detail
