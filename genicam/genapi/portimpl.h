#pragma once

#include "genapi/iport.h"

namespace GenApi {

/// Base of the ports that an application connects to a map. A derived class gives the three pure operations;
/// they run under the lock of the map that asks.
///
/// The port must be disconnected before what its operations need goes away. Its destructor disconnects it if that
/// was forgotten, provided no other thread uses the map at that moment. It knows one Port node, the last it was
/// connected to: a port that serves several must be disconnected from the others.
class GENICAM_API CPortImpl : public IPortConstruct
{
public:
    CPortImpl() = default;
    CPortImpl(const CPortImpl&) = delete;
    CPortImpl& operator=(const CPortImpl&) = delete;
    ~CPortImpl() override;

    EAccessMode GetAccessMode() const override = 0;
    void Read(void* buffer, int64_t address, int64_t length) override = 0;
    void Write(const void* buffer, int64_t address, int64_t length) override = 0;
    void SetPortImpl(IPort* portNode) override;
    bool GetSwapEndianess() override;
    void Replay(IPortWriteList* list, bool invalidate = true) override;

    /// Drops what the map has cached of this port; nothing while it is not connected.
    void InvalidateNode();

private:
    INode* node_ = nullptr;
};

}  // namespace GenApi
