#pragma once

#include "gcbase/exception.h"

#include "utils/cowptr.h"

namespace Nivex::DataProcessing::Utils {

template <typename Stored, typename Exposed, typename Deleter, typename Cloner>
class GENICAM_API COWPtrBase::ObjectWrapper final : public COWPtrBase::IObjectWrapperOf<Exposed>
{
public:
    explicit ObjectWrapper(Stored* object, Deleter deleter = {}, Cloner cloner = {})
        : object_(object, std::move(deleter)), cloner_(std::move(cloner))
    {}

    bool isConst() const override { return std::is_const_v<Stored>; }
    const Exposed* getConstPointer() const override { return object_.get(); }

    Exposed* getPointer() override
    {
        if constexpr (std::is_const_v<Stored>) {
            return nullptr;
        } else {
            return object_.get();
        }
    }

    std::unique_ptr<IObjectWrapper> clone() const override
    {
        using Copied = std::remove_const_t<Stored>;
        std::unique_ptr<Copied> copy = cloner_(*object_);
        using Copy = ObjectWrapper<Copied, Exposed, std::default_delete<Copied>, Cloner>;
        auto wrapper = std::make_unique<Copy>(copy.get(), std::default_delete<Copied>(), cloner_);
        static_cast<void>(copy.release());
        return wrapper;
    }

private:
    std::unique_ptr<Stored, Deleter> object_;
    Cloner cloner_;
};

template <typename T>
COWPtr<T>::COWPtr(std::unique_ptr<Wrapper> wrapper) : COWPtrBase(std::move(wrapper))
{
    if (getWrapper()) {
        object_ = static_cast<const Wrapper*>(getWrapper())->getConstPointer();
        constObject_ = getWrapper()->isConst();
    }
    if (!object_) GENICAM_THROW(InvalidArgumentException, "No object passed.");
}

template <typename T>
COWPtr<T>::COWPtr(COWPtr&& other) noexcept
    : COWPtrBase(std::move(other)),
      object_(std::exchange(other.object_, nullptr)),
      constObject_(std::exchange(other.constObject_, false))
{}

template <typename T>
COWPtr<T>& COWPtr<T>::operator=(COWPtr&& other) noexcept
{
    COWPtr taken(std::move(other));
    swapWrapper(taken);
    std::swap(object_, taken.object_);
    std::swap(constObject_, taken.constObject_);
    return *this;
}

template <typename T>
COWPtr<T>::COWPtr(T* object) : COWPtr(std::unique_ptr<T>(object))
{}

template <typename T>
COWPtr<T>::COWPtr(const T* object)
    : COWPtr(std::unique_ptr<Wrapper>(std::make_unique<ObjectWrapper<const T, T>>(object)))
{}

template <typename T>
COWPtr<T>::COWPtr(std::unique_ptr<T> object)
    : COWPtr(std::unique_ptr<Wrapper>(std::make_unique<ObjectWrapper<T>>(object.get())))
{
    static_cast<void>(object.release());
}

template <typename T>
template <typename Deleter, typename Cloner>
COWPtr<T>::COWPtr(T* object, Deleter deleter, Cloner cloner)
    : COWPtr(std::unique_ptr<Wrapper>(
          std::make_unique<ObjectWrapper<T, T, Deleter, Cloner>>(object, std::move(deleter), std::move(cloner))))
{}

template <typename T>
COWPtr<T>::COWPtr(const T& value) : COWPtr(std::make_unique<T>(value))
{}

template <typename T>
COWPtr<T>::COWPtr(T&& value) : COWPtr(std::make_unique<T>(std::move(value)))
{}

template <typename T>
const T& COWPtr<T>::operator*() const
{
    if (!object_) GENICAM_THROW(RuntimeException, "Cannot dereference a nullptr.");
    return *object_;
}

template <typename T>
const T* COWPtr<T>::operator->() const
{
    if (!object_) GENICAM_THROW(RuntimeException, "Cannot access nullptr object.");
    return object_;
}

template <typename T>
T& COWPtr<T>::write()
{
    if (!object_) GENICAM_THROW(RuntimeException, "Cannot dereference a nullptr.");
    if (constObject_ || !isUnique()) clone();
    return *static_cast<Wrapper*>(getWrapper())->getPointer();
}

template <typename T>
void COWPtr<T>::clone()
{
    std::unique_ptr<IObjectWrapper> copy = getWrapper()->clone();
    if (!copy) GENICAM_THROW(BadAllocException, "Could not clone object.");
    if (copy->isConst()) GENICAM_THROW(RuntimeException, "Cloned object is const but must not be.");
    auto* typed = dynamic_cast<Wrapper*>(copy.get());
    if (!typed) GENICAM_THROW(RuntimeException, "Cannot cast pointer of cloned object to COW pointer.");
    if (!typed->getPointer()) GENICAM_THROW(RuntimeException, "Could not get pointer of cloned object.");
    static_cast<void>(copy.release());
    *this = COWPtr(std::unique_ptr<Wrapper>(typed));
}

}  // namespace Nivex::DataProcessing::Utils
