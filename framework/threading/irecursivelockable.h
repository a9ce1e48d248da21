#pragma once

#include "gcbase/export.h"

namespace Nivex::DataProcessing::Threading {

/// A lock that its owner may take again. Each lock() of a thread needs an unlock() by the same thread.
/// Any thread may call any operation.
class GENICAM_API IRecursiveLockable
{
public:
    virtual ~IRecursiveLockable() = default;

    virtual void lock() = 0;
    virtual void unlock() = 0;
    /// Takes the lock if that needs no waiting; false if not.
    virtual bool tryLock() = 0;

protected:
    IRecursiveLockable() = default;
    IRecursiveLockable(const IRecursiveLockable&) = default;
    IRecursiveLockable& operator=(const IRecursiveLockable&) = default;
};

}  // namespace Nivex::DataProcessing::Threading
