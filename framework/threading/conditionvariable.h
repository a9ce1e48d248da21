#pragma once

#include <chrono>
#include <condition_variable>

#include "threading/recursivemutex.h"
#include "threading/uniquelock.h"

namespace Nivex::DataProcessing::Threading {

/// Lets threads wait for a state that a recursive lock guards. A wait gives up one level of the lock only, so the
/// caller must not hold it more than once. Waits may end without a notification; use the forms with a predicate.
/// A wait raises RuntimeException for a unique lock that has no lockable or doesn't own it.
/// @note L is IRecursiveLockable or RecursiveMutex, or derived from the first.
class GENICAM_API ConditionVariableAny
{
public:
    using Clock = std::chrono::steady_clock;

    ConditionVariableAny() = default;
    ConditionVariableAny(const ConditionVariableAny&) = delete;
    ConditionVariableAny& operator=(const ConditionVariableAny&) = delete;

    void notifyOne() noexcept;
    void notifyAll() noexcept;

    template <typename L>
    void wait(UniqueLock<L>& lock);
    template <typename L, typename Predicate>
    void wait(UniqueLock<L>& lock, Predicate predicate);

    /// False if the time passed first.
    template <typename L>
    bool waitFor(UniqueLock<L>& lock, Clock::duration duration);
    /// The predicate's answer at the end.
    template <typename L, typename Predicate>
    bool waitFor(UniqueLock<L>& lock, Clock::duration duration, Predicate predicate);

private:
    template <typename L>
    static L& lockableOf(UniqueLock<L>& lock);

    void waitInternal(IRecursiveLockable& lockable);
    void waitInternal(RecursiveMutex& lockable);
    bool waitInternal(IRecursiveLockable& lockable, Clock::time_point deadline);

    std::condition_variable_any condition_;
};

}  // namespace Nivex::DataProcessing::Threading

#include "threading/conditionvariable_impl.h"
