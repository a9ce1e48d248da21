#pragma once

#include <utility>

#include "gcbase/exception.h"

#include "threading/uniquelock.h"

namespace Nivex::DataProcessing::Threading {

template <typename L>
UniqueLock<L>::UniqueLock(L& lockable) : lockable_(&lockable)
{
    lock();
}

template <typename L>
UniqueLock<L>::UniqueLock(L& lockable, std::defer_lock_t) noexcept : lockable_(&lockable)
{}

template <typename L>
UniqueLock<L>::UniqueLock(const std::shared_ptr<L>& lockable) : lockable_(lockable.get())
{
    if (lockable_) lock();
}

template <typename L>
UniqueLock<L>::~UniqueLock()
{
    if (owned_) lockable_->unlock();
}

template <typename L>
UniqueLock<L>::UniqueLock(UniqueLock&& other) noexcept
    : lockable_(std::exchange(other.lockable_, nullptr)), owned_(std::exchange(other.owned_, false))
{}

template <typename L>
UniqueLock<L>& UniqueLock<L>::operator=(UniqueLock&& other) noexcept
{
    UniqueLock taken(std::move(other));
    std::swap(lockable_, taken.lockable_);
    std::swap(owned_, taken.owned_);
    return *this;
}

template <typename L>
void UniqueLock<L>::lock()
{
    if (!lockable_) GENICAM_THROW(RuntimeException, "No lockable is associated with this unique lock.");
    if (owned_) GENICAM_THROW(RuntimeException, "Lockable is already owned by this unique lock.");
    lockable_->lock();
    owned_ = true;
}

template <typename L>
void UniqueLock<L>::unlock()
{
    if (!lockable_) GENICAM_THROW(RuntimeException, "No lockable is associated with this unique lock.");
    if (!owned_) GENICAM_THROW(RuntimeException, "Lockable is not owned by this unique lock.");
    lockable_->unlock();
    owned_ = false;
}

}  // namespace Nivex::DataProcessing::Threading
