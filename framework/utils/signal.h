#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <vector>

#include "threading/recursivemutex.h"
#include "utils/connection.h"
#include "utils/slotresult.h"

namespace Nivex::DataProcessing::Utils {

template <typename Signature>
class ISignal;
template <typename Signature, typename Combiner>
class Signal;

/// The listeners' side of a signal. Any thread may connect and disconnect at any time, also from within a slot.
template <typename... Args>
class ISignal<void(Args...)>
{
public:
    using Slot = std::function<void(Args...)>;

    virtual ~ISignal() = default;

    /// Adds a slot at the end of the list. A slot connected during an emission is first called in the next one.
    /// @param lockable is taken for the length of each call of the slot. Null: InvalidArgumentException.
    /// @param trackable is not kept alive; the connection ends with it, and it stays alive during a call.
    ///     Null: BadAllocException.
    /// Raises BadAllocException if the connection can't be made.
    virtual Connection connect(std::shared_ptr<Threading::IRecursiveLockable> lockable, Slot slot,
                               const std::shared_ptr<const void>& trackable) = 0;
    /// The same for a slot that is called without lock and isn't tied to an object.
    virtual Connection connect(Slot slot) = 0;
};

/// Calls its slots one after another, in the order in which they were connected, on the emitting thread and
/// without holding the list's lock. Several threads may emit at once. A slot that was disconnected during the
/// emission and not yet called is skipped. What a slot raises is kept while the others run and then handed to the
/// combiner. Emitting without slots costs a load and a branch.
template <typename... Args, typename Combiner>
class Signal<void(Args...), Combiner> : public ISignal<void(Args...)>
{
public:
    using typename ISignal<void(Args...)>::Slot;

    Signal();
    /// `lockable` guards the slot list, for moments only. Raises InvalidArgumentException for null.
    explicit Signal(std::shared_ptr<Threading::IRecursiveLockable> lockable);
    ~Signal() override;
    Signal(const Signal&) = delete;
    Signal& operator=(const Signal&) = delete;

    Connection connect(std::shared_ptr<Threading::IRecursiveLockable> lockable, Slot slot,
                       const std::shared_ptr<const void>& trackable) override;
    Connection connect(Slot slot) override;

    /// The emission. Raises BadAllocException if what a slot raised can't be kept, and what the combiner raises.
    void operator()(Args... args) const;

private:
    class SlotConnection;
    class SlotList;

    Connection add(Slot slot, std::shared_ptr<Threading::IRecursiveLockable> lockable,
                   const std::shared_ptr<const void>& trackable);

    std::shared_ptr<SlotList> slots_;
    Combiner combiner_;
};

}  // namespace Nivex::DataProcessing::Utils

#include "utils/signal_impl.h"
