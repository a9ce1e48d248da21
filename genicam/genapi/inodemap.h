#pragma once

#include <memory>

#include "genapi/iport.h"
#include "genapi/lock.h"

namespace GenApi {

/// The nodes of one device. Any thread may call anything: each operation, on the map or on one of its nodes,
/// holds the map's lock while it runs and gives it back before callbacks are called.
class GENICAM_API INodeMap
{
public:
    /// All nodes in the order of the description, entries of enumerations behind their enumeration.
    virtual void GetNodes(NodeList_t& nodes) const = 0;
    /// Null if there is no node of that name.
    virtual INode* GetNode(const gcstring& name) const = 0;
    /// Drops everything cached and has all callbacks called.
    virtual void InvalidateNodes() const = 0;
    /// Connects `port` to the Port node of that name, in place of the one connected before; null disconnects.
    /// The caller keeps `port` alive until then. False if the map has no such Port node.
    virtual bool Connect(IPort* port, const gcstring& portName) const = 0;
    /// The same for the Port node named "Device".
    virtual bool Connect(IPort* port) const = 0;
    virtual gcstring GetDeviceName() const = 0;
    /// Tells the map that so many milliseconds have passed: nodes whose polling time has run out are invalidated.
    /// A command asks the device whether it is done; if that fails, the others are polled before it passes.
    virtual void Poll(int64_t elapsedMs) = 0;
    virtual CLock& GetLock() const = 0;
    virtual uint64_t GetNumNodes() const = 0;
    /// The register description that the map was made from, byte for byte; empty for a map without one. Never
    /// changes.
    virtual const gcstring& GetDescriptionText() const = 0;

    virtual ~INodeMap();
};

using NodeMapPtr = std::shared_ptr<INodeMap>;

}  // namespace GenApi
