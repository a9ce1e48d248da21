#pragma once

#include "genapi/lock.h"

#include "threading/irecursivelockable.h"

namespace Nivex::DataProcessing::Threading {

/// A recursive lock that a node shares with its node maps: both sides lock the one GenApi::CLock in it.
class GENICAM_API RecursiveCLock : public IRecursiveLockable
{
public:
    RecursiveCLock() = default;
    RecursiveCLock(const RecursiveCLock&) = delete;
    RecursiveCLock& operator=(const RecursiveCLock&) = delete;

    void lock() override;
    void unlock() override;
    bool tryLock() override;

    /// The lock itself, valid as long as this object.
    GenApi::CLock& getLock() { return lock_; }

private:
    GenApi::CLock lock_;
};

}  // namespace Nivex::DataProcessing::Threading
