#pragma once

#include <utility>

#include "gcbase/exception.h"

#include "utils/slotresult.h"

namespace Nivex::DataProcessing::Utils {

template <typename R>
ExceptionResult<R>::ExceptionResult(std::exception_ptr exception) : exception_(std::move(exception))
{
    if (!exception_) GENICAM_THROW(InvalidArgumentException, "Invalid exception pointer passed.");
}

template <typename R>
R ExceptionResult<R>::getValue() const
{
    std::rethrow_exception(exception_);
}

}  // namespace Nivex::DataProcessing::Utils
