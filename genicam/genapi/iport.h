#pragma once

#include "genapi/inode.h"

namespace GenApi {

/// A way to a device's bytes. The Port nodes of a map have it, and so has whatever is connected to them.
/// A read must fill, and a write must take, exactly `length` bytes, or raise an exception.
class GENICAM_API IPort : public virtual IBase
{
public:
    virtual void Read(void* buffer, int64_t address, int64_t length) = 0;
    virtual void Write(const void* buffer, int64_t address, int64_t length) = 0;

    ~IPort() override;
};

/// A record of port writes that can be repeated.
class GENICAM_API IPortWriteList
{
public:
    virtual void Write(const void* buffer, int64_t address, int64_t length) = 0;
    virtual void Replay(IPort* port) = 0;

    virtual ~IPortWriteList();
};

/// A port that wants to know which Port node it serves.
class GENICAM_API IPortConstruct : public virtual IPort
{
public:
    /// Called by the map when the port is connected, and with null when it is disconnected or the map ends.
    virtual void SetPortImpl(IPort* portNode) = 0;
    virtual bool GetSwapEndianess() = 0;
    /// Has `list` repeat its writes on this port; with `invalidate` the Port node is invalidated afterwards.
    virtual void Replay(IPortWriteList* list, bool invalidate = true) = 0;

    ~IPortConstruct() override;
};

}  // namespace GenApi
