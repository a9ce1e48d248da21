#include "genapi/chunkadapter.h"

#include <span>

#include "gcbase/exception.h"
#include "genapi/nodemap_impl.h"
#include "genapi/portnode.h"

namespace GenApi {

namespace {

using ByteOrder = CChunkAdapter::ByteOrder;

constexpr std::size_t trailerSize = 8;

uint32_t wordAt(const uint8_t* bytes, ByteOrder order)
{
    uint32_t word = 0;
    for (unsigned i = 0; i < 4; ++i)
        word |= uint32_t{bytes[i]} << 8U * (order == ByteOrder::LittleEndian ? i : 3 - i);
    return word;
}

struct Chunk
{
    uint32_t id;
    std::span<const uint8_t> data;
};

/// Calls `visit` with each chunk, the last one first; gives the number of bytes at the front that are none.
/// `stated` then is the length that the chunk they belong to claims.
std::size_t walk(std::span<const uint8_t> bytes, ByteOrder order, uint32_t& stated, const auto& visit)
{
    while (bytes.size() >= trailerSize) {
        const std::span<const uint8_t> before = bytes.first(bytes.size() - trailerSize);
        const uint8_t* trailer = before.data() + before.size();
        stated = wordAt(trailer + 4, order);
        if (stated > before.size()) break;
        visit(Chunk{wordAt(trailer, order), before.last(stated)});
        bytes = before.first(before.size() - stated);
    }
    return bytes.size();
}

void requireLayout(std::span<const uint8_t> bytes, ByteOrder order)
{
    uint32_t stated = 0;
    const std::size_t left = walk(bytes, order, stated, [](const Chunk&) {});
    if (left >= trailerSize)
        GENICAM_THROW(
            InvalidArgumentException,
            "A buffer of %zu bytes: the chunk that ends at byte %zu claims %u bytes, more than there are.",
            bytes.size(), left, stated);
    if (left > 0 || bytes.empty())
        GENICAM_THROW(InvalidArgumentException,
                      "A buffer of %zu bytes: its first %zu bytes are no chunk; a chunk has at least %zu.",
                      bytes.size(), left, trailerSize);
}

std::span<const uint8_t> bytesOf(const uint8_t* data, std::size_t size)
{
    if (!data) GENICAM_THROW(InvalidArgumentException, "A buffer of chunks is a null pointer.");
    return {data, size};
}

}  // namespace

CChunkAdapter::CChunkAdapter(INodeMap& map) : map_(CNodeMap::Of(map).shared_from_this()) {}

CChunkAdapter::~CChunkAdapter()
{
    try {
        DetachBuffer();
    } catch (...) {
        // The buffer is detached all the same; a callback's failure has no caller to go to from here.
        return;
    }
}

void CChunkAdapter::AttachBuffer(const uint8_t* data, std::size_t received, ByteOrder trailer)
{
    map_->Operate([&] {
        for (CPortNode* port : map_->ChunkPorts())
            port->DropChunk();
        const std::span<const uint8_t> bytes = bytesOf(data, received);
        requireLayout(bytes, trailer);
        for (CPortNode* port : map_->ChunkPorts())
            port->LearnChunkId();
        uint32_t stated = 0;
        walk(bytes, trailer, stated, [&](const Chunk& chunk) {
            for (CPortNode* port : map_->ChunkPorts())
                port->OfferChunk(chunk.id, chunk.data);
        });
    });
}

void CChunkAdapter::DetachBuffer()
{
    map_->Operate([&] {
        for (CPortNode* port : map_->ChunkPorts())
            port->ReleaseChunk();
    });
}

bool CChunkAdapter::CheckBufferLayout(const uint8_t* data, std::size_t size, ByteOrder trailer)
{
    uint32_t stated = 0;
    return data && size > 0 && walk({data, size}, trailer, stated, [](const Chunk&) {}) == 0;
}

}  // namespace GenApi
