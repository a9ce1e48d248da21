#pragma once

#include "parameteradapter/anythingtonodemapadapterbase.h"

namespace AnythingToNodeMapAdapter {

/// Offers parameters to a node map that lives elsewhere, such as in another process: it gives the description
/// from which the other side builds the map, and serves the register accesses that come back. It has no map of
/// its own, so changes of parameters reach the other side at its next read.
class CAnythingToNodeMapAdapterRemote : public CAnythingToNodeMapAdapterBase
{
public:
    CAnythingToNodeMapAdapterRemote();
    ~CAnythingToNodeMapAdapterRemote() override;

    /// Gives the description and from then on serves its registers, for the parameters added so far. All share
    /// the port of that name: raises InvalidArgumentException for an empty one, since Read and Write have one
    /// address space.
    void connect(GenICam::gcstring& text, const GenICam::gcstring& portName, const GenICam::gcstring& prefix);

    /// Register access by address; see Detail::CMultiParameterPortDemultiplexer. Zeros and nothing before
    /// `connect`. The caller holds the node's lock.
    void Read(void* buffer, std::int64_t address, std::int64_t length) const;
    void Write(const void* buffer, std::int64_t address, std::int64_t length) const;

private:
    class CAnythingToNodeMapAdapterRemoteImpl;
    CAnythingToNodeMapAdapterRemoteImpl& impl() const;
};

}  // namespace AnythingToNodeMapAdapter
