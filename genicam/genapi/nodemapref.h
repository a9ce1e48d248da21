#pragma once

#include "genapi/inodemap.h"

namespace GenApi {

/// A shared reference to a node map, or to none yet. Copies refer to the same map and keep it alive.
/// Without a map every operation but GetDeviceName, IsValid, Attach and Release raises AccessException
/// "Feature not present (reference not valid)". A reference itself is not synchronised; the map is.
class GENICAM_API CNodeMapRef
{
public:
    explicit CNodeMapRef(gcstring deviceName = "Device");
    /// Takes over the map's device name if there is a map.
    explicit CNodeMapRef(NodeMapPtr map, gcstring deviceName = "Device");

    /// Lets go of the present map and refers to `map`, whose device name becomes the reference's; null only lets
    /// go.
    void Attach(NodeMapPtr map);
    void Release() noexcept;
    bool IsValid() const noexcept { return map_ != nullptr; }
    explicit operator bool() const noexcept { return IsValid(); }
    /// The map's name, or the one given to the reference.
    const gcstring& GetDeviceName() const noexcept { return deviceName_; }
    /// The shared map itself; null without one.
    const NodeMapPtr& GetNodeMap() const noexcept { return map_; }

    void GetNodes(NodeList_t& nodes) const;
    INode* GetNode(const gcstring& name) const;
    void InvalidateNodes() const;
    bool Connect(IPort* port, const gcstring& portName) const;
    bool Connect(IPort* port) const;
    void Poll(int64_t elapsedMs) const;
    CLock& GetLock() const;
    uint64_t GetNumNodes() const;

    friend bool operator==(const CNodeMapRef& a, const CNodeMapRef& b) noexcept { return a.map_ == b.map_; }

private:
    INodeMap& Map() const;

    NodeMapPtr map_;
    gcstring deviceName_;
};

}  // namespace GenApi
