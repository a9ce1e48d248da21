#pragma once

#include <exception>
#include <memory>
#include <vector>

#include "gcbase/export.h"

namespace Nivex::DataProcessing::Utils {

/// The outcome of one call of a slot.
template <typename R>
class ISlotResult
{
public:
    virtual ~ISlotResult() = default;

    /// What the slot returned; raises what it raised.
    virtual R getValue() const = 0;
};

/// The outcome of a slot that raised an exception.
template <typename R>
class ExceptionResult : public ISlotResult<R>
{
public:
    /// Raises InvalidArgumentException for null.
    explicit ExceptionResult(std::exception_ptr exception);
    R getValue() const override;

private:
    std::exception_ptr exception_;
};

/// The results of one emission in the order of the calls. Null stands for a slot without anything to tell.
template <typename R>
using SlotResults = std::vector<std::unique_ptr<ISlotResult<R>>>;

/// Walks the results of an emission. A kept exception is logged at severity 4 on
/// "nivex.dataprocessing.utils.SlotCombiner" and goes no further.
class GENICAM_API SlotCombiner
{
public:
    void combine(const SlotResults<void>& results) const;
};

/// The combiner of signals whose slots return nothing.
class GENICAM_API VoidCombiner : public SlotCombiner
{
public:
    void operator()(const SlotResults<void>& results) const { combine(results); }
};

}  // namespace Nivex::DataProcessing::Utils

#include "utils/slotresult_impl.h"
