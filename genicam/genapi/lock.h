#pragma once

#include <mutex>

#include "gcbase/export.h"

namespace GenApi {

/// A recursive lock. A node map takes the one it was made with for the length of every operation on it.
/// Any thread may call any operation; the thread that locked it must unlock it.
class GENICAM_API CLock
{
public:
    CLock() = default;
    CLock(const CLock&) = delete;
    CLock& operator=(const CLock&) = delete;

    void Lock() { mutex_.lock(); }
    void Unlock() { mutex_.unlock(); }
    bool TryLock() { return mutex_.try_lock(); }

    // The standard's names for the same operations, for std::lock_guard and the like.
    void lock() { Lock(); }
    void unlock() { Unlock(); }
    bool try_lock() { return TryLock(); }

private:
    std::recursive_mutex mutex_;
};

/// Holds a CLock for the length of a scope.
using AutoLock = std::lock_guard<CLock>;

}  // namespace GenApi
