#include "threading/recursivemutex.h"

namespace Nivex::DataProcessing::Threading {

void RecursiveMutex::lock()
{
    mutex_.lock();
}

void RecursiveMutex::unlock()
{
    mutex_.unlock();
}

bool RecursiveMutex::tryLock()
{
    return mutex_.try_lock();
}

}  // namespace Nivex::DataProcessing::Threading
