#pragma once

#include <mutex>

#include "threading/irecursivelockable.h"

namespace Nivex::DataProcessing::Threading {

/// The plain recursive lock.
class GENICAM_API RecursiveMutex : public IRecursiveLockable
{
public:
    RecursiveMutex() = default;
    RecursiveMutex(const RecursiveMutex&) = delete;
    RecursiveMutex& operator=(const RecursiveMutex&) = delete;

    void lock() override;
    void unlock() override;
    bool tryLock() override;

private:
    std::recursive_mutex mutex_;
};

}  // namespace Nivex::DataProcessing::Threading
