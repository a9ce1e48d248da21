#include "utils/cowptr.h"

namespace Nivex::DataProcessing::Utils {

COWPtrBase::IObjectWrapper::~IObjectWrapper() = default;

COWPtrBase::COWPtrBase(std::unique_ptr<IObjectWrapper> wrapper) noexcept : wrapper_(wrapper.release())
{
    if (wrapper_) wrapper_->sharers_.store(1, std::memory_order_relaxed);
}

COWPtrBase::COWPtrBase(const COWPtrBase& other) noexcept : wrapper_(other.wrapper_)
{
    if (wrapper_) wrapper_->sharers_.fetch_add(1, std::memory_order_relaxed);
}

COWPtrBase& COWPtrBase::operator=(const COWPtrBase& other) noexcept
{
    COWPtrBase copy(other);
    swapWrapper(copy);
    return *this;
}

COWPtrBase::~COWPtrBase()
{
    release();
}

void COWPtrBase::release() noexcept
{
    if (wrapper_ && wrapper_->sharers_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete wrapper_;
    wrapper_ = nullptr;
}

bool COWPtrBase::isUnique() const noexcept
{
    // Acquire: what the last other sharer read must be over before this one writes.
    return wrapper_ && wrapper_->sharers_.load(std::memory_order_acquire) == 1;
}

}  // namespace Nivex::DataProcessing::Utils
