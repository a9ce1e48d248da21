#include "threading/recursiveclock.h"

namespace Nivex::DataProcessing::Threading {

void RecursiveCLock::lock()
{
    lock_.Lock();
}

void RecursiveCLock::unlock()
{
    lock_.Unlock();
}

bool RecursiveCLock::tryLock()
{
    return lock_.TryLock();
}

}  // namespace Nivex::DataProcessing::Threading
