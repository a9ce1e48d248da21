#include "base/cameraevents.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <unordered_set>

#include "gcbase/exception.h"

#include "base/handlerlist_impl.h"

namespace Nivex {

namespace {

std::optional<std::uint64_t> eventIdOf(const GenApi::INode& node)
{
    const GenICam::gcstring digits = node.GetEventID();
    std::uint64_t id = 0;
    const char* end = digits.c_str() + digits.size();
    const auto [stop, error] = std::from_chars(digits.c_str(), end, id, 16);
    if (error != std::errc{} || stop != end || digits.empty()) return std::nullopt;
    return id;
}

/// The ids of the events that `start`, or something that its value comes from, is told of.
std::vector<std::uint64_t> eventIdsBehind(GenApi::INode& start)
{
    std::vector<std::uint64_t> ids;
    GenApi::NodeList_t open = {&start};
    std::unordered_set<const GenApi::INode*> seen = {&start};
    while (!open.empty()) {
        const GenApi::INode& node = *open.back();
        open.pop_back();
        if (const auto id = eventIdOf(node)) ids.push_back(*id);
        GenApi::NodeList_t children;
        node.GetChildren(children);
        std::copy_if(children.begin(), children.end(), std::back_inserter(open),
                     [&](const GenApi::INode* child) { return seen.insert(child).second; });
    }
    return ids;
}

}  // namespace

void CameraEvents::Open(const GenApi::NodeMapPtr& nodeMap)
{
    auto target = std::make_shared<Target>(nodeMap);
    const std::lock_guard lock(mutex_);
    target_ = std::move(target);
}

void CameraEvents::Close()
{
    const std::lock_guard lock(mutex_);
    target_.reset();
}

const CameraEvents::Shown& CameraEvents::Resolve(Target& target, const GenICam::gcstring& nodeName)
{
    const auto known = std::find_if(target.shown.begin(), target.shown.end(),
                                    [&](const Shown& shown) { return shown.nodeName == nodeName; });
    if (known != target.shown.end()) return *known;
    GenApi::INode* node = target.map->GetNode(nodeName);
    return target.shown.emplace_back(
        Shown{nodeName, node, node ? eventIdsBehind(*node) : std::vector<std::uint64_t>{}});
}

std::shared_ptr<CameraEvents::Target> CameraEvents::PresentTarget()
{
    const std::lock_guard lock(mutex_);
    return target_;
}

void CameraEvents::ForEachShowing(Target& target, std::uint64_t eventId,
                                  const std::function<void(const std::string&)>& report,
                                  const std::function<void(Handlers::Registration&, GenApi::INode*)>& call)
{
    handlers_.ForEach([&](Handlers::Registration& registration) {
        const Shown& shown = Resolve(target, registration.nodeName);
        if (std::find(shown.eventIds.begin(), shown.eventIds.end(), eventId) == shown.eventIds.end()) return;
        GenApi::INode* const node = shown.node;
        try {
            call(registration, node);
        } catch (...) {
            report(GenICam::describeCurrentException());
        }
    });
}

void CameraEvents::Deliver(std::uint64_t eventId, const std::uint8_t* data, std::size_t size,
                           const std::function<void(const std::string&)>& report)
{
    const std::shared_ptr<Target> target = PresentTarget();
    try {
        if (!target || target->adapter.DeliverEvent(eventId, data, size) == 0) {
            ++unknown_;
            return;
        }
    } catch (...) {
        // A callback of some node failed; the data has arrived all the same.
        report(GenICam::describeCurrentException());
    }
    ForEachShowing(*target, eventId, report, [this](Handlers::Registration& registration, GenApi::INode* node) {
        registration.handler->OnCameraEvent(camera_, registration.id, node);
    });
}

void CameraEvents::DeliverLost(std::uint64_t eventId, std::uint64_t count,
                               const std::function<void(const std::string&)>& report)
{
    const std::shared_ptr<Target> target = PresentTarget();
    if (!target) return;
    ForEachShowing(*target, eventId, report, [&](Handlers::Registration& registration, GenApi::INode* node) {
        registration.handler->OnCameraEventsLost(camera_, registration.id, node, count);
    });
}

}  // namespace Nivex
