#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "genapi/chunkadapter.h"

#include "base/camerabackend.h"

namespace Nivex {

/// A chunk node map that is lent to one grab result after the other. A result may be asked by several threads.
class ChunkMap
{
public:
    ChunkMap(GenApi::NodeMapPtr map, ETrailerByteOrder order);

    /// The map, showing the chunks of `frame` from the first call on until Detach. RuntimeException, each time, if
    /// they are damaged.
    GenApi::NodeMapPtr Show(const SFrame& frame);
    /// The features are not available from now on. False if somebody keeps the map: it must not be shown again,
    /// lest it told him of a frame that is not his.
    bool Detach() noexcept;

private:
    enum class State
    {
        Detached,
        Attached,
        Damaged
    };

    void Attach(const SFrame& frame);

    const GenApi::NodeMapPtr map_;
    const GenApi::CChunkAdapter::ByteOrder order_;
    GenApi::CChunkAdapter adapter_;
    const long ownUses_;  ///< Of map_, when nobody else has it.

    /// Recursive, as callbacks of the map's nodes run under it. Guards what follows.
    std::recursive_mutex mutex_;
    State state_ = State::Detached;
    std::string damage_;
};

/// Makes chunk maps while a device is open. Any thread may call anything.
class ChunkMapSource
{
public:
    void Open(INivexDevice& device);
    /// Waits for a Make under way; the device may be closed afterwards.
    void Close();
    /// Null if the camera has no chunks, or none is open. Raises what the device raises.
    std::unique_ptr<ChunkMap> Make();

private:
    std::mutex mutex_;
    INivexDevice* device_ = nullptr;
};

}  // namespace Nivex
