#include "genapi/nodebase.h"

#include <algorithm>

#include "gcbase/exception.h"
#include "genapi/enumerationnode.h"
#include "genapi/nodebuilder.h"
#include "genapi/nodemap.h"
#include "genapi/nodemap_impl.h"
#include "genapi/textconversion.h"

namespace GenApi {

namespace {

constexpr Word<EVisibility> visibilities[] = {
    {"Beginner", Beginner}, {"Expert", Expert}, {"Guru", Guru}, {"Invisible", Invisible}};

bool isTrue(const NumberRef& predicate, bool ifUnreadable)
{
    return predicate.IsReadable() ? predicate->ReadTruth() : ifUnreadable;
}

void appendValues(const std::vector<CNodeBase*>& nodes, FeatureList_t& features)
{
    for (CNodeBase* node : nodes)
        if (IValue* value = node->AsValue()) features.push_back(value);
}

}  // namespace

CNodeBase::CNodeBase(NodeOrigin origin) : map_(origin.map), name_(std::move(origin.name)), kind_(origin.kind) {}

EAccessMode CNodeBase::GetAccessMode() const
{
    return map_.Operate([this] { return Mode(); });
}

gcstring CNodeBase::GetName(bool fullQualified) const
{
    if (!fullQualified) return name_;
    return (nameSpace_ == Standard ? "Std::" : "Cust::") + name_;
}

void CNodeBase::InvalidateNode()
{
    map_.Operate([this] { map_.Invalidate(*this, true); });
}

gcstring CNodeBase::GetDeviceName() const
{
    return map_.GetDeviceName();
}

void CNodeBase::GetChildren(NodeList_t& children) const
{
    children.insert(children.end(), children_.begin(), children_.end());
}

void CNodeBase::GetParents(NodeList_t& parents) const
{
    parents.insert(parents.end(), followers_.begin(), followers_.end());
}

INodeMap* CNodeBase::GetNodeMap() const
{
    return &map_;
}

CallbackHandleType CNodeBase::RegisterCallback(NodeCallback callback)
{
    if (!callback)
        GENICAM_THROW(InvalidArgumentException, "Node \"%s\": a callback must not be empty.", name_.c_str());
    return map_.Operate([&] {
        callbacks_.push_back({++lastHandle_, std::make_shared<const NodeCallback>(std::move(callback))});
        return lastHandle_;
    });
}

bool CNodeBase::DeregisterCallback(CallbackHandleType handle)
{
    return map_.Operate([&] {
        return std::erase_if(callbacks_, [&](const Callback& entry) { return entry.handle == handle; }) != 0;
    });
}

EAccessMode CNodeBase::Mode() const
{
    map_.CountStep(*this);
    const EAccessMode predicates = PredicateMode();
    if (predicates == NI) return NI;
    return Combine(Combine(BaseMode(), imposed_), predicates);
}

EAccessMode CNodeBase::PredicateMode() const
{
    for (const NumberRef& predicate : implemented_)
        if (!isTrue(predicate, false)) return NI;
    for (const NumberRef& predicate : available_)
        if (!isTrue(predicate, false)) return NA;
    for (const NumberRef& predicate : locked_)
        if (isTrue(predicate, true)) return RO;
    return RW;
}

void CNodeBase::RequireReadable() const
{
    const EAccessMode mode = Mode();
    if (!IsReadable(mode))
        GENICAM_THROW(AccessException, "Node \"%s\" is not readable (access mode %s).", name_.c_str(),
                      ToText(mode));
}

void CNodeBase::RequireWritable() const
{
    const EAccessMode mode = Mode();
    if (!IsWritable(mode))
        GENICAM_THROW(AccessException, "Node \"%s\" is not writable (access mode %s).", name_.c_str(),
                      ToText(mode));
}

void CNodeBase::CheckErrors()
{
    for (CEnumerationNode* error : errors_) {
        error->RequireReadable();
        if (error->ReadInteger(true) == 0) continue;
        const INode& entry = error->CurrentEntry(true);
        map_.Invalidate(*this, true);
        GENICAM_THROW(RuntimeException, "Writing node \"%s\" failed: %s reports %s. %s", name_.c_str(),
                      error->Name().c_str(), entry.GetDisplayName().c_str(), entry.GetToolTip().c_str());
    }
}

bool CNodeBase::TakeElement(ElementReader& element)
{
    if (element.Is("ToolTip")) return element.TakeProse(toolTip_);
    if (element.Is("Description")) return element.TakeProse(description_);
    if (element.Is("DisplayName")) return element.TakeProse(displayName_);
    if (element.Is("DocuURL")) return element.TakeProse(docuUrl_);
    if (element.Is("Visibility"))
        visibility_ = element.AnyWordOf(visibilities, Beginner);
    else if (element.Is("Streamable"))
        streamable_ = element.YesNo();
    else if (element.Is("IsDeprecated"))
        deprecated_ = element.YesNo();
    else if (element.Is("EventID")) {
        eventId_ = gcstring(WithoutHexPrefix(element.Text()));
        eventNumber_ = element.HexDigits();
    } else if (element.Is("ImposedAccessMode"))
        imposed_ = element.AccessMode(imposed_);
    else if (element.Is("PollingTime"))
        pollingTime_ = std::max<int64_t>(element.Integer(), 0);
    else
        return TakeReference(element);
    return true;
}

bool CNodeBase::TakeReference(ElementReader& element)
{
    if (element.Is("pIsAvailable"))
        available_.push_back(element.Number(Link::Predicate));
    else if (element.Is("pIsLocked"))
        locked_.push_back(element.Number(Link::Predicate));
    else if (element.Is("pIsImplemented"))
        implemented_.push_back(element.Number(Link::Predicate));
    else if (element.Is("pBlockPolling"))
        blockPolling_ = element.Number(Link::Parameter);
    else if (element.Is("pError"))
        errors_.push_back(&element.Enumeration(Link::Parameter));
    else if (element.Is("pInvalidator"))
        element.Node(Link::Invalidator);
    else if (element.Is("pAlias"))
        alias_ = &element.Node(Link::Hint);
    else if (element.Is("pCastAlias"))
        castAlias_ = &element.Node(Link::Hint);
    else
        return false;
    return true;
}

void CNodeBase::Finish(ElementReader& own)
{
    nameSpace_ = own.Attribute("NameSpace") == "Standard" ? Standard : Custom;
}

bool CNodeBase::CacheValid() const
{
    map_.CountStep(*this);
    return std::all_of(valueSources_.begin(), valueSources_.end(),
                       [](const CNodeBase* source) { return source->CacheValid(); });
}

bool CNodeBase::PollIsDue(int64_t elapsedMs)
{
    polledFor_ += elapsedMs;
    if (polledFor_ < pollingTime_) return false;
    polledFor_ = 0;
    return !(blockPolling_ && isTrue(blockPolling_, false)) && WantsPolling();
}

void CNodeBase::AppendCallbacks(std::vector<std::pair<INode*, std::shared_ptr<const NodeCallback>>>& calls)
{
    for (const Callback& callback : callbacks_)
        calls.emplace_back(this, callback.function);
}

void CNodeBase::Stored(bool ownValue)
{
    if (ownValue) map_.Invalidate(*this, false);
    CheckErrors();
}

void CNodeBase::CountCopies(std::size_t copies) const
{
    // Each may invalidate all nodes of the map.
    constexpr std::size_t stepsOfWrite = 50;
    map_.CountStep(*this, static_cast<int>(copies * stepsOfWrite));
}

gcstring CValueNode::ToString(bool verify, bool ignoreCache)
{
    return Map().Operate([&] {
        RequireReadable();
        return ReadText(verify, ignoreCache);
    });
}

void CValueNode::FromString(const gcstring& text, bool verify)
{
    Map().Operate([&] {
        if (verify) RequireWritable();
        WriteText(text, verify);
    });
}

bool CValueNode::IsValueCacheValid() const
{
    return Map().Operate([&] { return CacheValid(); });
}

void CValueNode::GetSelectedFeatures(FeatureList_t& features) const
{
    appendValues(Selected(), features);
}

void CValueNode::GetSelectingFeatures(FeatureList_t& features) const
{
    appendValues(Selecting(), features);
}

bool CValueNode::TakeElement(ElementReader& element)
{
    if (!element.Is("pSelected")) return CNodeBase::TakeElement(element);
    element.Node(Link::Selected);
    return true;
}

void CValueNode::RefuseText(const gcstring& text, const char* expected) const
{
    GENICAM_THROW(InvalidArgumentException, "Node \"%s\": \"%s\" is not %s.", Name().c_str(), text.c_str(),
                  expected);
}

}  // namespace GenApi
