#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "genapi/eventadapter.h"

#include "base/handlerlist.h"

namespace Nivex {

/// The way of a camera's events to those registered for a node that shows them.
class CameraEvents
{
public:
    using Handlers = HandlerList<CCameraEventHandler>;

    explicit CameraEvents(CInstantCamera& camera) : camera_(camera) {}

    Handlers& List() { return handlers_; }

    /// Events go to that map from now on.
    void Open(const GenApi::NodeMapPtr& nodeMap);
    void Close();
    /// Hands the data to the map and calls the handlers of the nodes that show it. One call at a time. What
    /// handlers and callbacks throw goes to `report`, as text.
    void Deliver(std::uint64_t eventId, const std::uint8_t* data, std::size_t size,
                 const std::function<void(const std::string&)>& report);
    /// Tells the handlers of the nodes that would have shown them of events that were lost. Otherwise as Deliver.
    void DeliverLost(std::uint64_t eventId, std::uint64_t count,
                     const std::function<void(const std::string&)>& report);
    std::uint64_t UnknownCount() const { return unknown_; }

private:
    /// The nodes of an open camera that show an event, by registered name.
    struct Shown
    {
        GenICam::gcstring nodeName;
        GenApi::INode* node;  ///< Null if the map has none of that name.
        std::vector<std::uint64_t> eventIds;
    };
    struct Target
    {
        explicit Target(const GenApi::NodeMapPtr& nodeMap) : map(nodeMap), adapter(*nodeMap) {}

        GenApi::NodeMapPtr map;
        GenApi::CEventAdapter adapter;
        std::vector<Shown> shown;  ///< Of the thread that delivers.
    };

    std::shared_ptr<Target> PresentTarget();
    /// Calls the handlers, each with its node, whose nodes show the event.
    void ForEachShowing(Target& target, std::uint64_t eventId,
                        const std::function<void(const std::string&)>& report,
                        const std::function<void(Handlers::Registration&, GenApi::INode*)>& call);
    static const Shown& Resolve(Target& target, const GenICam::gcstring& nodeName);

    CInstantCamera& camera_;
    Handlers handlers_;
    std::atomic<std::uint64_t> unknown_ = 0;
    std::mutex mutex_;
    std::shared_ptr<Target> target_;  ///< Guarded by mutex_; null while closed.
};

}  // namespace Nivex
