#pragma once

#include "gcbase/exception.h"

#include "threading/conditionvariable.h"

namespace Nivex::DataProcessing::Threading {

template <typename L>
L& ConditionVariableAny::lockableOf(UniqueLock<L>& lock)
{
    if (!lock.getLockable()) GENICAM_THROW(RuntimeException, "Passed unique lock does not own a lockable.");
    if (!lock.ownsLock()) GENICAM_THROW(RuntimeException, "Lockable is not owned by this unique lock.");
    return *lock.getLockable();
}

template <typename L>
void ConditionVariableAny::wait(UniqueLock<L>& lock)
{
    waitInternal(lockableOf(lock));
}

template <typename L, typename Predicate>
void ConditionVariableAny::wait(UniqueLock<L>& lock, Predicate predicate)
{
    L& lockable = lockableOf(lock);
    while (!predicate())
        waitInternal(lockable);
}

template <typename L>
bool ConditionVariableAny::waitFor(UniqueLock<L>& lock, Clock::duration duration)
{
    return waitInternal(lockableOf(lock), Clock::now() + duration);
}

template <typename L, typename Predicate>
bool ConditionVariableAny::waitFor(UniqueLock<L>& lock, Clock::duration duration, Predicate predicate)
{
    L& lockable = lockableOf(lock);
    const Clock::time_point deadline = Clock::now() + duration;
    while (!predicate()) {
        if (!waitInternal(lockable, deadline)) return predicate();
    }
    return true;
}

}  // namespace Nivex::DataProcessing::Threading
