#pragma once

#include <memory>
#include <type_traits>

#include "utils/cowptr.h"
#include "utils/typeinfo.h"

namespace Nivex::DataProcessing::Utils {

template <typename T>
inline constexpr bool isCOWPtr = false;
template <typename T>
inline constexpr bool isCOWPtr<COWPtr<T>> = true;

/// A slot that holds a value of a registered type, or nothing. Copies share the value; it is never changed under
/// another's copy. Copying costs one counter. Different variants, also copies of one, may be used on different
/// threads; one variant is for one thread at a time.
///
/// A variant made from a T and one made from a COWPtr<T> are of the same type, T's, and can be read as either.
/// The library that registered the value's type must stay loaded while the value lives.
class GENICAM_API Variant
{
public:
    class GENICAM_API IDataWrapper
    {
    public:
        virtual ~IDataWrapper() = default;

        virtual const TypeInfo::ITypeInfoData* getType() const noexcept = 0;
        /// The address of the value as that type; null if it can't be cast.
        virtual const void* get(const TypeInfo::ITypeInfoData* type) const noexcept = 0;
        /// A wrapper that shares the value.
        virtual std::shared_ptr<IDataWrapper> copy() const = 0;
        /// The value for writing, made this wrapper's own first.
        virtual void* write() = 0;
    };

    template <typename T>
    class DataWrapper;

    Variant() noexcept = default;
    /// Holds a copy of the value. Raises RuntimeException if T isn't registered, BadAllocException.
    template <typename T>
    requires(!std::is_same_v<std::remove_cvref_t<T>, Variant> &&
             !isCOWPtr<std::remove_cvref_t<T>>) explicit Variant(T&& value);
    /// Shares the object. Raises InvalidArgumentException if there is none, and as above.
    template <typename T>
    explicit Variant(COWPtr<T> value);
    /// A default-made value of the type. Raises InvalidArgumentException if the type has none.
    static Variant makeDefault(const TypeInfo& type);

    bool isValid() const noexcept { return data_ != nullptr; }
    /// The type of the value: T, also for a value that came in as COWPtr<T>. Empty for an empty variant.
    TypeInfo getValueType() const noexcept { return data_ ? TypeInfo(data_->getType()) : TypeInfo(); }

    /// The address of the value as `type`, which may be the value's type, one of its bases, or the COWPtr of the
    /// value's type. If there is no such value: null, or with `throwOnError` RuntimeException. Valid while this
    /// variant holds the value.
    const void* get(const TypeInfo& type, bool throwOnError = true) const;

    /// The value as T, found as by get(). Raises RuntimeException if it can't be cast.
    template <typename T>
    const T& getValue() const;
    /// The value as T; null if it can't be cast.
    template <typename T>
    const T* tryGet() const noexcept;
    /// A handle that shares the value, whose type is T exactly. Raises RuntimeException if it can't be cast.
    template <typename T>
    COWPtr<T> getCOWPtr() const;

    /// The value, of exactly that type, for writing; copied first if it is shared. Raises RuntimeException if it
    /// is of another type.
    void* write(const TypeInfo& type);

    void reset() noexcept { data_.reset(); }

private:
    std::shared_ptr<IDataWrapper> data_;
};

}  // namespace Nivex::DataProcessing::Utils

#include "utils/variant_impl.h"
