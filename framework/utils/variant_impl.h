#pragma once

#include <new>

#include "gcbase/exception.h"

#include "utils/variant.h"

namespace Nivex::DataProcessing::Utils {

template <typename T>
class GENICAM_API Variant::DataWrapper final : public Variant::IDataWrapper
{
public:
    DataWrapper(const TypeInfo::ITypeInfoData* type, COWPtr<T> value) : type_(type), value_(std::move(value)) {}

    const TypeInfo::ITypeInfoData* getType() const noexcept override { return type_; }

    const void* get(const TypeInfo::ITypeInfoData* type) const noexcept override
    {
        if (type == type_) return value_.get();
        const TypeInfo::ITypeInfoData* shared = type->getValueType();
        if (shared != type) return shared == type_ ? &value_ : nullptr;
        return type_->convert(value_.get(), type);
    }

    std::shared_ptr<IDataWrapper> copy() const override { return std::make_shared<DataWrapper>(type_, value_); }
    void* write() override { return &value_.write(); }

private:
    const TypeInfo::ITypeInfoData* type_;
    COWPtr<T> value_;
};

template <typename T>
Variant::Variant(COWPtr<T> value)
{
    if (!value) GENICAM_THROW(InvalidArgumentException, "Invalid data pointer passed.");
    const TypeInfo type = TypeInfo::get<T>(false);
    if (!type.isValid()) GENICAM_THROW(RuntimeException, "Type of passed data is not registered.");
    try {
        data_ = std::make_shared<DataWrapper<T>>(type.getData(), std::move(value));
    } catch (const std::bad_alloc&) {
        GENICAM_THROW(BadAllocException, "Could not allocate data");
    }
}

template <typename T>
requires(!std::is_same_v<std::remove_cvref_t<T>, Variant> &&
         !isCOWPtr<std::remove_cvref_t<T>>) Variant::Variant(T&& value)
    : Variant(COWPtr<std::remove_cvref_t<T>>(std::forward<T>(value)))
{}

template <typename T>
const T* Variant::tryGet() const noexcept
{
    if (!data_) return nullptr;
    const TypeInfo type = TypeInfo::get<T>(false);
    return type.isValid() ? static_cast<const T*>(data_->get(type.getData())) : nullptr;
}

template <typename T>
const T& Variant::getValue() const
{
    return *static_cast<const T*>(get(TypeInfo::get<T>(false)));
}

template <typename T>
COWPtr<T> Variant::getCOWPtr() const
{
    return getValue<COWPtr<T>>();
}

}  // namespace Nivex::DataProcessing::Utils
