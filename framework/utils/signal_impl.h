#pragma once

#include <algorithm>
#include <new>

#include "gcbase/exception.h"

#include "threading/uniquelock.h"
#include "utils/signal.h"

namespace Nivex::DataProcessing::Utils {

/// The slots of a signal. The vector is never changed once it is seen by an emission; changes replace it.
template <typename... Args, typename Combiner>
class Signal<void(Args...), Combiner>::SlotList
{
public:
    using Slots = std::vector<std::shared_ptr<SlotConnection>>;
    using Lock = Threading::UniqueLock<Threading::IRecursiveLockable>;

    explicit SlotList(std::shared_ptr<Threading::IRecursiveLockable> lockable) : lockable_(std::move(lockable)) {}

    bool isEmpty() const noexcept { return count_.load(std::memory_order_acquire) == 0; }

    std::shared_ptr<const Slots> get() const
    {
        const Lock lock(lockable_);
        return slots_;
    }

    void add(std::shared_ptr<SlotConnection> slot)
    {
        change([&](Slots& slots) { slots.push_back(std::move(slot)); });
    }

    /// Takes out the slots that are no longer connected.
    void prune()
    {
        change([](Slots& slots) { std::erase_if(slots, [](const auto& slot) { return !slot->isConnected(); }); });
    }

private:
    template <typename Change>
    void change(const Change& apply)
    {
        std::shared_ptr<const Slots> previous;  // Slots may own much; they die without the lock.
        const Lock lock(lockable_);
        auto changed = slots_ ? std::make_shared<Slots>(*slots_) : std::make_shared<Slots>();
        apply(*changed);
        count_.store(changed->size(), std::memory_order_release);
        previous = std::exchange(slots_, std::move(changed));
    }

    std::shared_ptr<Threading::IRecursiveLockable> lockable_;
    std::shared_ptr<const Slots> slots_;
    std::atomic<std::size_t> count_{0};
};

template <typename... Args, typename Combiner>
class Signal<void(Args...), Combiner>::SlotConnection final : public IConnection
{
public:
    SlotConnection(const std::shared_ptr<SlotList>& list, Slot slot,
                   std::shared_ptr<Threading::IRecursiveLockable> lockable,
                   const std::shared_ptr<const void>& trackable)
        : list_(list),
          slot_(std::move(slot)),
          lockable_(std::move(lockable)),
          trackable_(trackable),
          tracks_(trackable != nullptr)
    {}

    bool isConnected() const noexcept override
    {
        return connected_.load(std::memory_order_acquire) && !list_.expired() &&
               (!tracks_ || !trackable_.expired());
    }

    void disconnect() noexcept override
    {
        if (!connected_.exchange(false, std::memory_order_acq_rel)) return;
        try {
            if (const auto list = list_.lock()) list->prune();
        } catch (const std::bad_alloc&) {
            // Stays in the list, is skipped by emissions and pruned by the next disconnect.
        }
    }

    void call(Args... args) const
    {
        const std::shared_ptr<const void> alive = trackable_.lock();
        const Threading::UniqueLock<Threading::IRecursiveLockable> lock(lockable_);
        if (connected_.load(std::memory_order_acquire) && (!tracks_ || alive)) slot_(args...);
    }

private:
    std::weak_ptr<SlotList> list_;
    Slot slot_;
    std::shared_ptr<Threading::IRecursiveLockable> lockable_;
    std::weak_ptr<const void> trackable_;
    bool tracks_;
    std::atomic<bool> connected_{true};
};

template <typename... Args, typename Combiner>
Signal<void(Args...), Combiner>::Signal() : Signal(std::make_shared<Threading::RecursiveMutex>())
{}

template <typename... Args, typename Combiner>
Signal<void(Args...), Combiner>::Signal(std::shared_ptr<Threading::IRecursiveLockable> lockable)
{
    if (!lockable) GENICAM_THROW(InvalidArgumentException, "No lockable passed.");
    slots_ = std::make_shared<SlotList>(std::move(lockable));
}

template <typename... Args, typename Combiner>
Signal<void(Args...), Combiner>::~Signal() = default;

template <typename... Args, typename Combiner>
Connection Signal<void(Args...), Combiner>::connect(std::shared_ptr<Threading::IRecursiveLockable> lockable,
                                                    Slot slot, const std::shared_ptr<const void>& trackable)
{
    if (!lockable) GENICAM_THROW(InvalidArgumentException, "No lockable passed.");
    if (!trackable) GENICAM_THROW(BadAllocException, "Invalid trackable object passed.");
    return add(std::move(slot), std::move(lockable), trackable);
}

template <typename... Args, typename Combiner>
Connection Signal<void(Args...), Combiner>::connect(Slot slot)
{
    return add(std::move(slot), nullptr, nullptr);
}

template <typename... Args, typename Combiner>
Connection Signal<void(Args...), Combiner>::add(Slot slot, std::shared_ptr<Threading::IRecursiveLockable> lockable,
                                                const std::shared_ptr<const void>& trackable)
{
    if (!slot) GENICAM_THROW(InvalidArgumentException, "No slot passed.");
    try {
        auto connection =
            std::make_shared<SlotConnection>(slots_, std::move(slot), std::move(lockable), trackable);
        slots_->add(connection);
        return Connection(std::move(connection));
    } catch (const std::bad_alloc&) {
        GENICAM_THROW(BadAllocException, "Could not allocate connection.");
    }
}

template <typename... Args, typename Combiner>
void Signal<void(Args...), Combiner>::operator()(Args... args) const
{
    if (slots_->isEmpty()) return;
    const auto slots = slots_->get();
    SlotResults<void> results;
    for (const auto& slot : *slots) {
        try {
            slot->call(args...);
        } catch (...) {
            try {
                results.push_back(std::make_unique<ExceptionResult<void>>(std::current_exception()));
            } catch (const std::bad_alloc&) {
                GENICAM_THROW(BadAllocException, "Could not allocate slot result.");
            }
        }
    }
    combiner_(results);
}

}  // namespace Nivex::DataProcessing::Utils
