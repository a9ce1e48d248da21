#pragma once

#include <memory>
#include <mutex>

namespace Nivex::DataProcessing::Threading {

/// Holds a lockable for the length of a scope, and may let go of it and take it again on the way. The lockable
/// must outlive it. Though the lockable is recursive, one UniqueLock takes it once at most. For one thread.
/// @tparam L offers lock() and unlock().
template <typename L>
class UniqueLock
{
public:
    UniqueLock() noexcept = default;
    /// Takes the lock.
    explicit UniqueLock(L& lockable);
    /// Leaves the lock alone until lock().
    UniqueLock(L& lockable, std::defer_lock_t) noexcept;
    /// Takes the lock; a null pointer gives a UniqueLock without lockable. The pointer is not kept.
    explicit UniqueLock(const std::shared_ptr<L>& lockable);
    ~UniqueLock();

    UniqueLock(UniqueLock&& other) noexcept;
    UniqueLock& operator=(UniqueLock&& other) noexcept;
    UniqueLock(const UniqueLock&) = delete;
    UniqueLock& operator=(const UniqueLock&) = delete;

    /// Raises RuntimeException without a lockable or if it is owned already.
    void lock();
    /// Raises RuntimeException without a lockable or if it is not owned.
    void unlock();

    bool ownsLock() const noexcept { return owned_; }
    L* getLockable() const noexcept { return lockable_; }

private:
    L* lockable_ = nullptr;
    bool owned_ = false;
};

}  // namespace Nivex::DataProcessing::Threading

#include "threading/uniquelock_impl.h"
