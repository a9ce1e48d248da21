#pragma once

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "genapi/inode.h"
#include "genapi/iselector.h"
#include "genapi/ivalue.h"
#include "genapi/number.h"

namespace GenApi {

class CEnumerationNode;
class CNodeMap;
class CPortNode;
class CStringBase;
class ElementReader;
class NodeBuilder;

/// A node kind of the description: its element's name and the interface it is known by.
struct NodeKind
{
    const char* element;
    EInterfaceType principal;
};

/// What a node is born with.
struct NodeOrigin
{
    CNodeMap& map;
    gcstring name;
    const NodeKind& kind;
};

/// The three things that can be asked of a node. They depend on different nodes: two widths may well be each
/// other's limits, and still have values that can be read.
enum class Aspect : uint8_t
{
    Value,
    Limits,
    Mode
};
constexpr std::size_t aspectCount = 3;

/// Base of all nodes: the facts common to all kinds, the access mode, the callbacks and the node's place in the
/// net of dependencies.
///
/// A node is made with its name only; the builder then hands it its elements one by one (TakeElement) and tells
/// it when there are no more (Finish). From then on nothing changes but values, caches and callbacks.
/// Operations whose names differ from INode's run under the map's lock and inside a CNodeMap::Operate.
class CNodeBase : public INode
{
public:
    explicit CNodeBase(NodeOrigin origin);
    CNodeBase(const CNodeBase&) = delete;
    CNodeBase& operator=(const CNodeBase&) = delete;

    EAccessMode GetAccessMode() const override;
    gcstring GetName(bool fullQualified) const override;
    ENameSpace GetNameSpace() const override { return nameSpace_; }
    EVisibility GetVisibility() const override { return visibility_; }
    void InvalidateNode() override;
    bool IsCachable() const override { return caching_ != NoCache; }
    ECachingMode GetCachingMode() const override { return caching_; }
    int64_t GetPollingTime() const override { return pollingTime_; }
    gcstring GetToolTip() const override { return toolTip_; }
    gcstring GetDescription() const override { return description_; }
    gcstring GetDisplayName() const override { return displayName_.empty() ? name_ : displayName_; }
    gcstring GetDeviceName() const override;
    gcstring GetDocuURL() const override { return docuUrl_; }
    gcstring GetEventID() const override { return eventId_; }
    bool IsDeprecated() const override { return deprecated_; }
    bool IsStreamable() const override { return streamable_; }
    bool IsFeature() const override { return feature_; }
    void GetChildren(NodeList_t& children) const override;
    void GetParents(NodeList_t& parents) const override;
    INode* GetAlias() const override { return alias_; }
    INode* GetCastAlias() const override { return castAlias_; }
    INodeMap* GetNodeMap() const override;
    EInterfaceType GetPrincipalInterfaceType() const override { return kind_.principal; }
    CallbackHandleType RegisterCallback(NodeCallback callback) override;
    bool DeregisterCallback(CallbackHandleType handle) override;

    CNodeMap& Map() const { return map_; }
    const gcstring& Name() const { return name_; }
    const char* Kind() const { return kind_.element; }
    /// GetAccessMode under the lock: the kind's own mode, narrowed by the imposed mode and the predicates.
    EAccessMode Mode() const;
    void RequireReadable() const;
    void RequireWritable() const;
    /// Raises what the nodes named by pError report after a write of this one, whose value then is not cached.
    void CheckErrors();

    /// Null unless a reference may take the node's number, or text.
    virtual INumber* AsNumber() { return nullptr; }
    virtual CStringBase* AsString() { return nullptr; }
    virtual CPortNode* AsPort() { return nullptr; }
    /// The kind's value interface; null for Node and Port.
    virtual IValue* AsValue() { return nullptr; }

    /// Takes one element of the description; false for one that means nothing to it.
    virtual bool TakeElement(ElementReader& element);
    /// All elements are taken; `own` is the node's own. Refuses what is missing or contradicts itself.
    virtual void Finish(ElementReader& own);

    /// Forgets what the node itself has cached.
    virtual void DropCache() {}
    virtual bool CacheValid() const;
    /// False while polling would be of no use.
    virtual bool WantsPolling() { return true; }
    /// Counts polling time; true when it has run out and a poll is wanted.
    bool PollIsDue(int64_t elapsedMs);

    void AppendCallbacks(std::vector<std::pair<INode*, std::shared_ptr<const NodeCallback>>>& calls);

protected:
    /// What the kind itself allows, without predicates.
    virtual EAccessMode BaseMode() const { return RO; }
    /// The mode of a value that another node may hold.
    static EAccessMode ModeOf(const NumberRef& reference) { return reference ? reference.Node().Mode() : RW; }
    /// Writes to `source`, and invalidates and checks as a write of this node demands.
    template <typename Number>
    void Store(Source<Number>& source, Number value)
    {
        source.Write(value);
        Stored(!source.Reference());
    }
    void Stored(bool ownValue);
    /// A write is about to go to so many nodes. RuntimeException if the operation writes too much.
    void CountCopies(std::size_t copies) const;
    bool HasDisplayName() const { return !displayName_.empty(); }
    void LimitCaching(ECachingMode mode) { caching_ = std::min(caching_, mode); }
    const std::vector<CNodeBase*>& Selected() const { return selected_; }
    const std::vector<CNodeBase*>& Selecting() const { return selecting_; }

private:
    friend class CNodeMap;
    friend class NetCheck;
    friend class NodeBuilder;

    struct Callback
    {
        CallbackHandleType handle;
        std::shared_ptr<const NodeCallback> function;
    };

    bool TakeReference(ElementReader& element);
    EAccessMode PredicateMode() const;

    CNodeMap& map_;
    const gcstring name_;
    const NodeKind& kind_;
    ENameSpace nameSpace_ = Custom;
    EVisibility visibility_ = Beginner;
    EAccessMode imposed_ = RW;
    ECachingMode caching_ = WriteThrough;
    bool deprecated_ = false;
    bool streamable_ = false;
    bool feature_ = false;
    int64_t pollingTime_ = -1;
    int64_t polledFor_ = 0;
    gcstring toolTip_;
    gcstring description_;
    gcstring displayName_;
    gcstring docuUrl_;
    gcstring eventId_;
    std::optional<uint64_t> eventNumber_;
    // Several of one kind: all must say implemented and available, none locked.
    std::vector<NumberRef> implemented_;
    std::vector<NumberRef> available_;
    std::vector<NumberRef> locked_;
    NumberRef blockPolling_;
    std::vector<CEnumerationNode*> errors_;
    CNodeBase* alias_ = nullptr;
    CNodeBase* castAlias_ = nullptr;

    // The net. A change of this node reaches its followers' own caches, and what its dependants (by pInvalidator
    // and pSelected) take their values from.
    std::vector<CNodeBase*> children_;
    std::vector<CNodeBase*> valueSources_;
    std::vector<CNodeBase*> followers_;
    std::vector<CNodeBase*> dependants_;
    std::vector<CNodeBase*> selected_;
    std::vector<CNodeBase*> selecting_;

    /// To compute this node's `of`, that node's `from` must be computed.
    struct Dependency
    {
        CNodeBase* on;
        Aspect of;
        Aspect from;
    };
    // Good until NetCheck is through.
    std::vector<Dependency> dependencies_;
    std::array<int, aspectCount> chainLengths_{};  // of each aspect; 0 until NetCheck has been there

    // Marks of the invalidation under way, see CNodeMap::Invalidate.
    uint64_t reached_ = 0;
    uint64_t emptied_ = 0;

    std::vector<Callback> callbacks_;
    CallbackHandleType lastHandle_ = 0;
    bool callbackPending_ = false;
};

/// Base of the nodes with a value: text, selection.
class CValueNode : public CNodeBase, public virtual IValue, public ISelector
{
public:
    using CNodeBase::CNodeBase;

    gcstring ToString(bool verify, bool ignoreCache) override;
    void FromString(const gcstring& text, bool verify) override;
    bool IsValueCacheValid() const override;
    bool IsSelector() const override { return !Selected().empty(); }
    void GetSelectedFeatures(FeatureList_t& features) const override;
    void GetSelectingFeatures(FeatureList_t& features) const override;
    IValue* AsValue() override { return this; }

    bool TakeElement(ElementReader& element) override;

protected:
    virtual gcstring ReadText(bool verify, bool ignoreCache) = 0;
    virtual void WriteText(const gcstring& text, bool verify) = 0;
    /// Raises InvalidArgumentException: the text is no value of this node.
    [[noreturn]] void RefuseText(const gcstring& text, const char* expected) const;
};

}  // namespace GenApi
