#include "genapi/nodemapref.h"

#include <utility>

#include "gcbase/exception.h"

namespace GenApi {

CNodeMapRef::CNodeMapRef(gcstring deviceName) : deviceName_(std::move(deviceName)) {}

CNodeMapRef::CNodeMapRef(NodeMapPtr map, gcstring deviceName) : deviceName_(std::move(deviceName))
{
    Attach(std::move(map));
}

void CNodeMapRef::Attach(NodeMapPtr map)
{
    map_ = std::move(map);
    if (map_) deviceName_ = map_->GetDeviceName();
}

void CNodeMapRef::Release() noexcept
{
    map_.reset();
}

void CNodeMapRef::GetNodes(NodeList_t& nodes) const
{
    Map().GetNodes(nodes);
}

INode* CNodeMapRef::GetNode(const gcstring& name) const
{
    return Map().GetNode(name);
}

void CNodeMapRef::InvalidateNodes() const
{
    Map().InvalidateNodes();
}

bool CNodeMapRef::Connect(IPort* port, const gcstring& portName) const
{
    return Map().Connect(port, portName);
}

bool CNodeMapRef::Connect(IPort* port) const
{
    return Map().Connect(port);
}

void CNodeMapRef::Poll(int64_t elapsedMs) const
{
    Map().Poll(elapsedMs);
}

CLock& CNodeMapRef::GetLock() const
{
    return Map().GetLock();
}

uint64_t CNodeMapRef::GetNumNodes() const
{
    return Map().GetNumNodes();
}

INodeMap& CNodeMapRef::Map() const
{
    if (!map_) GENICAM_THROW(AccessException, "Feature not present (reference not valid)");
    return *map_;
}

}  // namespace GenApi
