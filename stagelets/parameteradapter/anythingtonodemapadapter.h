#pragma once

#include "genapi/nodemapref.h"

#include "parameteradapter/anythingtonodemapadapterbase.h"

namespace AnythingToNodeMapAdapter {

/// Turns parameter ports into a live node map. The map holds no value: every read reaches a port's getter, every
/// write its setter, and a port that reports a change has what clients read from the map invalidated.
class CAnythingToNodeMapAdapter : public CAnythingToNodeMapAdapterBase
{
public:
    CAnythingToNodeMapAdapter();
    /// Disconnects the map; references to it that are still held then find no port behind it.
    ~CAnythingToNodeMapAdapter() override;

    /// Makes a new map of the ports added so far and connects it; a map built earlier loses its connection.
    /// The map works under `lock`, which must outlive all references to it, or with null under a lock of its own.
    /// An empty `portName` gives every parameter a port of its own. Failures of the GenICam family pass on, such
    /// as a RuntimeException for a description that the runtime refuses; the earlier map then stays in use as
    /// a map, its ports may be placed anew.
    GenApi::CNodeMapRef buildNodeMap(GenApi::CLock* lock, const GenICam::gcstring& portName,
                                     const GenICam::gcstring& prefix);

    /// The map built last; an empty map before the first build.
    GenApi::CNodeMapRef getNodeMap() const;

private:
    class CAnythingToNodeMapAdapterImpl;
    CAnythingToNodeMapAdapterImpl& impl() const;
};

}  // namespace AnythingToNodeMapAdapter
