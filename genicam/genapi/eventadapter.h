#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "genapi/inodemap.h"

namespace GenApi {

class CNodeMap;

/// Hands events of the device to a node map.
///
/// Every node with the event's EventID is invalidated, and so is what depends on it; their callbacks run. A Port
/// with that EventID reads the event's data from then on, until the next event of that id: address 0 is the first
/// byte that DeliverEvent was given. Such ports are read-only, and NA before their first event. A port that the
/// application connected keeps reading there.
///
/// Any thread may deliver: the call holds the map's lock while it copies and invalidates, and calls the callbacks
/// afterwards, on the delivering thread. Two events delivered at once may thus both show the data of the later one
/// in their callbacks; deliver from one thread if that matters. The adapter keeps the map alive.
class GENICAM_API CEventAdapter
{
public:
    explicit CEventAdapter(INodeMap& map);

    /// Copies `size` bytes at `data` (null only for none). The number of nodes with that EventID; 0 means that the
    /// map does not know the event and nothing happened. What callbacks throw passes.
    std::size_t DeliverEvent(uint64_t eventId, const uint8_t* data, std::size_t size);

private:
    const std::shared_ptr<CNodeMap> map_;
};

}  // namespace GenApi
