#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "genapi/inodemap.h"

namespace GenApi {

class CNodeMap;

/// Lets the chunk ports of a node map read the chunks of a received buffer.
///
/// A buffer of chunks is a row of {data, 32-bit chunk id, 32-bit length of the data}; it is walked from its end.
/// Each Port with a ChunkID (or pChunkID) reads the chunk of that id: address 0 is its first byte. Chunk ports are
/// read-only. While no buffer is attached, or its chunks have not that id, the registers on the port are NA; so
/// are registers that lie beyond the end of their chunk.
///
///     CChunkAdapter chunks(*map);
///     chunks.AttachBuffer(frame, received, CChunkAdapter::ByteOrder::BigEndian);
///     dynamic_cast<IInteger&>(*map->GetNode("ChunkFrameID")).GetValue();
///     chunks.DetachBuffer();  // before the frame goes away
///
/// Attaching and detaching only invalidate what depends on the ports concerned, and allocate nothing once warm
/// (but for ports with pChunkID and CacheChunkData): a map that is kept and attached anew for each buffer costs
/// microseconds. Any thread may call anything: each call holds the map's lock, and callbacks of the nodes it
/// invalidated run afterwards on the same thread. The adapter keeps the map alive; one adapter for a map.
class GENICAM_API CChunkAdapter
{
public:
    enum class ByteOrder
    {
        LittleEndian,
        BigEndian
    };

    explicit CChunkAdapter(INodeMap& map);
    CChunkAdapter(const CChunkAdapter&) = delete;
    CChunkAdapter& operator=(const CChunkAdapter&) = delete;
    /// Detaches.
    ~CChunkAdapter();

    /// Attaches the `received` bytes at `data`, whose trailers have the byte order `trailer`, in place of the
    /// buffer before. They must stay unchanged until the next AttachBuffer or DetachBuffer has ended; only ports
    /// with CacheChunkData take a copy. Chunks whose id no port has are skipped; of several with one id the last
    /// counts. InvalidArgumentException for a buffer that CheckBufferLayout refuses; then nothing is attached.
    void AttachBuffer(const uint8_t* data, std::size_t received, ByteOrder trailer);
    /// Lets go of the buffer. Ports with CacheChunkData go on with their copy until the next AttachBuffer.
    void DetachBuffer();

    /// True if the bytes are one or more whole chunks, and nothing else.
    static bool CheckBufferLayout(const uint8_t* data, std::size_t size, ByteOrder trailer);

private:
    const std::shared_ptr<const CNodeMap> map_;
};

}  // namespace GenApi
