#include "core/value.h"

#include "gcbase/exception.h"

namespace Nivex::DataProcessing::Core {

ValueBase::ValueBase(std::shared_ptr<IError> error)
{
    keepError(std::move(error));
}

bool ValueBase::hasError(bool) const
{
    return error_ != nullptr;
}

std::shared_ptr<IError> ValueBase::getError(bool) const
{
    return error_;
}

void ValueBase::keepError(std::shared_ptr<IError> error)
{
    if (!error) GENICAM_THROW(InvalidArgumentException, "Invalid error pointer passed.");
    error_ = std::move(error);
}

void ValueBase::throwInErrorState(const char* className)
{
    GENICAM_THROW(RuntimeException, "%s is in error state.", className);
}

}  // namespace Nivex::DataProcessing::Core
