#include "threading/conditionvariable.h"

namespace Nivex::DataProcessing::Threading {

void ConditionVariableAny::notifyOne() noexcept
{
    condition_.notify_one();
}

void ConditionVariableAny::notifyAll() noexcept
{
    condition_.notify_all();
}

void ConditionVariableAny::waitInternal(IRecursiveLockable& lockable)
{
    condition_.wait(lockable);
}

void ConditionVariableAny::waitInternal(RecursiveMutex& lockable)
{
    condition_.wait(lockable);
}

bool ConditionVariableAny::waitInternal(IRecursiveLockable& lockable, Clock::time_point deadline)
{
    return condition_.wait_until(lockable, deadline) == std::cv_status::no_timeout;
}

}  // namespace Nivex::DataProcessing::Threading
