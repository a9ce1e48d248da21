#pragma once

#include <memory>
#include <span>
#include <vector>

#include "genapi/nodemapref.h"

#include "core/inodemapcontainer.h"
#include "parameteradapter/anythingtonodemapadapter.h"
#include "parameteradapter/parameterportrelay.h"
#include "threading/recursiveclock.h"

namespace Plugin::NivexStageletPackageBase {

using AnythingToNodeMapAdapter::FloatRange;
using AnythingToNodeMapAdapter::IntegerRange;
using AnythingToNodeMapAdapter::PortFlags;
using AnythingToNodeMapAdapter::PortTexts;

/// One entry of an enumeration as data.
/// @tparam E is the enumeration's type or an integer.
template <typename E>
struct EnumEntryRow
{
    E value;
    const char* name;
    const char* displayName;
    const char* toolTip;
    const char* description;
};

/// What the parameters of every node of this package need: the lock that node and map share, the adapter, and the
/// node map that comes out. Parameters stand in the category "Root" in the order in which they are added.
///
/// To be used under the node's lock while the node is constructed; the relays that are added must not outlive
/// the node, so the node (or its private record) owns this object. getNodeMap may be called from any thread.
class StageletNodeMapBase
{
public:
    /// The identifier of a node's own map.
    static constexpr const char* identifier = "@Stagelet";

    StageletNodeMapBase();
    virtual ~StageletNodeMapBase();
    StageletNodeMapBase(const StageletNodeMapBase&) = delete;
    StageletNodeMapBase& operator=(const StageletNodeMapBase&) = delete;

    /// The lock to install with NodeBase::setLock.
    const std::shared_ptr<Nivex::DataProcessing::Threading::RecursiveCLock>& getLock() const { return lock_; }

    /// Adds a port of any kind as a member of "Root" and returns it.
    template <typename Port>
    std::shared_ptr<Port> addFeature(std::shared_ptr<Port> port);

    /// Adds entries, in order, to an enumeration that was added before.
    template <typename E>
    void addEntries(const char* enumName, std::span<const EnumEntryRow<E>> rows);

    /// Says that the value of `selected` belongs to what `selector` selects.
    void addSelected(const char* selector, const char* selected);
    void addLink(const char* linkKey, const char* from, const char* to) { adapter_.addLink(linkKey, from, to); }

    /// Builds the map, under the node's lock, from what was added; once, or again after more was added.
    void build();

    /// The map built last. The reference also keeps the lock alive, so that it may outlive the node, which leaves
    /// the map without port.
    GenApi::CNodeMapRef getNodeMap() const;
    /// The map if `mapIdentifier` is that of the node's own map, else a reference without map.
    GenApi::CNodeMapRef getNodeMap(const GenICam::gcstring& mapIdentifier) const;

    AnythingToNodeMapAdapter::CAnythingToNodeMapAdapter& adapter() { return adapter_; }

private:
    std::shared_ptr<Nivex::DataProcessing::Threading::RecursiveCLock> lock_;
    AnythingToNodeMapAdapter::CAnythingToNodeMapAdapter adapter_;
};

template <typename Port>
std::shared_ptr<Port> StageletNodeMapBase::addFeature(std::shared_ptr<Port> port)
{
    adapter_.addParameter(port);
    adapter_.addLink(AnythingToNodeMapAdapter::LinkKey::feature, "Root", port->getName());
    return port;
}

template <typename E>
void StageletNodeMapBase::addEntries(const char* enumName, std::span<const EnumEntryRow<E>> rows)
{
    for (const EnumEntryRow<E>& row : rows) {
        adapter_.addEnumEntry(enumName, std::make_shared<AnythingToNodeMapAdapter::EnumEntryParameterPort<E>>(
                                            row.value, PortTexts{.name = row.name,
                                                                 .displayName = row.displayName,
                                                                 .toolTip = row.toolTip,
                                                                 .description = row.description}));
    }
}

}  // namespace Plugin::NivexStageletPackageBase
