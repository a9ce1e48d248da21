#pragma once

#include <algorithm>

#include "gcbase/exception.h"

#include "base/handlerlist.h"

namespace Nivex {

/// Marks a call under way.
template <typename Handler>
class HandlerList<Handler>::Call
{
public:
    Call(HandlerList& list, Registration& registration)
        : list_(list), registration_(registration), entered_(list.Enter(registration))
    {}
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;
    ~Call()
    {
        if (entered_) list_.Leave(registration_);
    }
    explicit operator bool() const { return entered_; }

private:
    HandlerList& list_;
    Registration& registration_;
    const bool entered_;
};

template <typename Handler>
auto HandlerList<Handler>::Find(const Handler* handler, const GenICam::gcstring* nodeName) const -> Pointer
{
    const auto found = std::find_if(registrations_->begin(), registrations_->end(), [&](const Pointer& entry) {
        return entry->handler.get() == handler && (!nodeName || entry->nodeName == *nodeName);
    });
    return found == registrations_->end() ? nullptr : *found;
}

template <typename Handler>
auto HandlerList<Handler>::Make(Handler* handler, ECleanup cleanup, const GenICam::gcstring& nodeName,
                                std::intptr_t id) -> Pointer
{
    if (!handler) GENICAM_THROW(InvalidArgumentException, "A handler to be registered is a null pointer.");
    auto registration = std::make_shared<Registration>();
    registration->nodeName = nodeName;
    registration->id = id;
    const std::lock_guard lock(mutex_);
    // A handler that is there for another node has its owner already.
    if (const Pointer other = Find(handler, nullptr))
        registration->handler = other->handler;
    else if (cleanup == ECleanup::Delete)
        registration->handler.reset(handler);
    else
        registration->handler.reset(handler, [](Handler*) {});
    return registration;
}

template <typename Handler>
void HandlerList<Handler>::Add(const Pointer& registration)
{
    const std::lock_guard lock(mutex_);
    if (Find(registration->handler.get(), &registration->nodeName))
        GENICAM_THROW(InvalidArgumentException, "A handler%s%s is registered already.",
                      registration->nodeName.empty() ? "" : " for ", registration->nodeName.c_str());
    auto longer = std::make_shared<Registrations>(*registrations_);
    longer->push_back(registration);
    registrations_ = std::move(longer);
}

template <typename Handler>
void HandlerList<Handler>::Withdraw(Registration& registration, std::unique_lock<std::mutex>& lock)
{
    registration.isRemoved = true;
    const auto& callers = registration.callers;
    if (std::find(callers.begin(), callers.end(), std::this_thread::get_id()) != callers.end()) return;
    left_.wait(lock, [&] { return callers.empty(); });
}

template <typename Handler>
auto HandlerList<Handler>::Remove(const Handler* handler, const GenICam::gcstring& nodeName) -> Pointer
{
    std::unique_lock lock(mutex_);
    Pointer removed = Find(handler, &nodeName);
    if (!removed) return nullptr;
    auto shorter = std::make_shared<Registrations>(*registrations_);
    std::erase(*shorter, removed);
    registrations_ = std::move(shorter);
    Withdraw(*removed, lock);
    return removed;
}

template <typename Handler>
auto HandlerList<Handler>::RemoveAll() -> std::vector<Pointer>
{
    std::unique_lock lock(mutex_);
    Registrations removed = *registrations_;
    registrations_ = std::make_shared<const Registrations>();
    for (const Pointer& registration : removed)
        Withdraw(*registration, lock);
    return removed;
}

template <typename Handler>
template <typename Action>
void HandlerList<Handler>::ForEach(const Action& call)
{
    std::shared_ptr<const Registrations> present;
    {
        const std::lock_guard lock(mutex_);
        present = registrations_;
    }
    for (const Pointer& registration : *present)
        if (const Call underWay(*this, *registration); underWay) call(*registration);
}

template <typename Handler>
bool HandlerList<Handler>::Enter(Registration& registration)
{
    const std::lock_guard lock(mutex_);
    if (registration.isRemoved) return false;
    registration.callers.push_back(std::this_thread::get_id());
    return true;
}

template <typename Handler>
void HandlerList<Handler>::Leave(Registration& registration)
{
    const std::lock_guard lock(mutex_);
    auto& callers = registration.callers;
    callers.erase(std::find(callers.begin(), callers.end(), std::this_thread::get_id()));
    if (registration.isRemoved) left_.notify_all();
}

}  // namespace Nivex
