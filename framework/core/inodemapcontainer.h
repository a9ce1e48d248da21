#pragma once

#include <vector>

#include "gcbase/gcstring.h"
#include "genapi/nodemapref.h"

#include "base/infobase.h"

namespace Nivex::DataProcessing::Core {

/// Describes one node map of a node: the name shown to a person, and the identifier that asks for it. The map
/// of a node's own parameters has the identifier "@Stagelet".
class GENICAM_API NodeMapInfo : public CInfoBase
{
public:
    NodeMapInfo() = default;
    NodeMapInfo(const GenICam::gcstring& name, const GenICam::gcstring& identifier);
    ~NodeMapInfo() override;

    GenICam::gcstring GetName() const;
    GenICam::gcstring GetIdentifier() const;

private:
    GenICam::gcstring read(const char* key) const;
};

/// The way to the parameters of a node. Any thread may call it; the node takes its own lock.
class GENICAM_API INodeMapContainer
{
public:
    virtual ~INodeMapContainer() = default;
    virtual std::vector<NodeMapInfo> getNodeMapInfos() = 0;
    /// The node map of that identifier; a reference without map if the node has none such at present.
    virtual GenApi::CNodeMapRef getNodeMap(const GenICam::gcstring& identifier) = 0;
};

}  // namespace Nivex::DataProcessing::Core
