#pragma once

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "gcbase/gcstring.h"

#include "base/eventhandlers.h"

namespace Nivex {

/// The registered handlers of one kind, in the order of registration. They are called without a lock of the list,
/// so that a handler may register and deregister, itself too; who is deregistered is called no more, and ends, if
/// it is the list's to end, when nobody is within a call of it. Any thread may call anything.
template <typename Handler>
class HandlerList
{
public:
    struct Registration
    {
        std::shared_ptr<Handler> handler;
        GenICam::gcstring nodeName;  ///< Empty where handlers are not registered by node.
        std::intptr_t id = 0;
        // Guarded by the list's lock.
        bool isRemoved = false;
        std::vector<std::thread::id> callers;  ///< Of calls under way.
    };
    using Pointer = std::shared_ptr<Registration>;

    HandlerList() : registrations_(std::make_shared<const Registrations>()) {}

    /// A registration, not yet in the list. InvalidArgumentException for null. The first registration of a handler
    /// decides about its cleanup.
    Pointer Make(Handler* handler, ECleanup cleanup, const GenICam::gcstring& nodeName = {}, std::intptr_t id = 0);
    /// InvalidArgumentException if the handler is there already, for this node.
    void Add(const Pointer& registration);
    /// Takes it out and waits for calls under way on other threads, but not within such a call. Null if it was not
    /// there.
    Pointer Remove(const Handler* handler, const GenICam::gcstring& nodeName = {});
    /// All of them, in the same way.
    std::vector<Pointer> RemoveAll();
    /// Calls `call` with each registration; what it throws ends the walk and passes.
    template <typename Action>
    void ForEach(const Action& call);

private:
    using Registrations = std::vector<Pointer>;
    class Call;

    Pointer Find(const Handler* handler, const GenICam::gcstring* nodeName) const;
    void Withdraw(Registration& registration, std::unique_lock<std::mutex>& lock);
    bool Enter(Registration& registration);
    void Leave(Registration& registration);

    std::mutex mutex_;
    std::condition_variable left_;
    std::shared_ptr<const Registrations> registrations_;  ///< Replaced as a whole, for those who walk it.
};

}  // namespace Nivex
