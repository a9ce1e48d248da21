#include "genapi/portimpl.h"

#include "genapi/inodemap.h"

namespace GenApi {

CPortImpl::~CPortImpl()
{
    if (!node_) return;
    try {
        node_->GetNodeMap()->Connect(nullptr, node_->GetName());
    } catch (...) {
        // The port is disconnected all the same; a callback's failure has no caller to go to from here.
        node_ = nullptr;
    }
}

void CPortImpl::SetPortImpl(IPort* portNode)
{
    node_ = dynamic_cast<INode*>(portNode);
}

bool CPortImpl::GetSwapEndianess()
{
    return false;
}

void CPortImpl::Replay(IPortWriteList* list, bool invalidate)
{
    list->Replay(this);
    if (invalidate) InvalidateNode();
}

void CPortImpl::InvalidateNode()
{
    if (node_) node_->InvalidateNode();
}

}  // namespace GenApi
