#pragma once

#include <functional>

#include "genapi/types.h"

namespace GenApi {

class INodeMap;

/// Names one registered callback of one node.
using CallbackHandleType = std::intptr_t;
/// What runs after a node's value may have changed; the argument is the node.
using NodeCallback = std::function<void(INode*)>;

/// What every node and every port has. The interfaces of one node are reached from each other by
/// `dynamic_cast`: `dynamic_cast<IInteger*>(map.GetNode("Gain"))`.
class GENICAM_API IBase
{
public:
    /// What is possible now: the device's mode, the port's and the node's predicates taken together.
    virtual EAccessMode GetAccessMode() const = 0;
    virtual ~IBase();
};

/// One node of a map. The map owns it: a pointer is good as long as the map lives.
/// Any thread may call anything; each call holds the map's lock while it runs.
class GENICAM_API INode : public virtual IBase
{
public:
    /// The name, which is unique in the map; with `fullQualified` "Std::Name" or "Cust::Name".
    virtual gcstring GetName(bool fullQualified = false) const = 0;
    virtual ENameSpace GetNameSpace() const = 0;
    virtual EVisibility GetVisibility() const = 0;
    /// Drops what is cached of the node's value and of everything that depends on it, and has the callbacks of all
    /// these nodes called. A port drops all its registers.
    virtual void InvalidateNode() = 0;
    virtual bool IsCachable() const = 0;
    /// The least that the node and the nodes its value comes from allow.
    virtual ECachingMode GetCachingMode() const = 0;
    /// Milliseconds after which Poll drops the value, or -1.
    virtual int64_t GetPollingTime() const = 0;
    virtual gcstring GetToolTip() const = 0;
    virtual gcstring GetDescription() const = 0;
    /// The caption; the node's name if the description has none.
    virtual gcstring GetDisplayName() const = 0;
    virtual gcstring GetDeviceName() const = 0;
    virtual gcstring GetDocuURL() const = 0;
    /// The event that invalidates the node, as bare hexadecimal digits, or empty.
    virtual gcstring GetEventID() const = 0;
    virtual bool IsDeprecated() const = 0;
    /// True for a node that belongs to what a settings file holds.
    virtual bool IsStreamable() const = 0;
    /// True for a node that stands directly in a category.
    virtual bool IsFeature() const = 0;
    /// The nodes that this node's value, limits, address and access mode are taken from.
    virtual void GetChildren(NodeList_t& children) const = 0;
    /// The nodes whose value, limits, address or access mode are taken from this one.
    virtual void GetParents(NodeList_t& parents) const = 0;
    /// The node that shows the same feature in another way, or null.
    virtual INode* GetAlias() const = 0;
    virtual INode* GetCastAlias() const = 0;
    virtual INodeMap* GetNodeMap() const = 0;
    virtual EInterfaceType GetPrincipalInterfaceType() const = 0;

    /// Has `callback` called after an operation that wrote or invalidated the node or something it depends on:
    /// once for each outermost operation, on that operation's thread, after the operation let go of the map's
    /// lock. What it throws reaches the caller of that operation, unless the operation failed itself.
    /// InvalidArgumentException for an empty function.
    virtual CallbackHandleType RegisterCallback(NodeCallback callback) = 0;
    /// False if the handle is not, or no longer, registered here. A call already under way on another thread
    /// may still end after this.
    virtual bool DeregisterCallback(CallbackHandleType handle) = 0;

    ~INode() override;
};

}  // namespace GenApi
