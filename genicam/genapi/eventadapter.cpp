#include "genapi/eventadapter.h"

#include "gcbase/exception.h"
#include "genapi/nodemap_impl.h"
#include "genapi/portnode.h"

namespace GenApi {

CEventAdapter::CEventAdapter(INodeMap& map) : map_(CNodeMap::Of(map).shared_from_this()) {}

std::size_t CEventAdapter::DeliverEvent(uint64_t eventId, const uint8_t* data, std::size_t size)
{
    if (!data && size > 0)
        GENICAM_THROW(InvalidArgumentException, "Event 0x%llx: its %zu bytes of data are a null pointer.",
                      static_cast<unsigned long long>(eventId), size);
    return map_->Operate([&] {
        const std::vector<CNodeBase*>& nodes = map_->EventNodes(eventId);
        for (CNodeBase* node : nodes)
            if (CPortNode* port = node->AsPort()) port->TakeEventData({data, size});
        map_->Invalidate(nodes, true);
        return nodes.size();
    });
}

}  // namespace GenApi
