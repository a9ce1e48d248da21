#pragma once

#include <memory>
#include <string_view>

#include "threading/recursivemutex.h"
#include "utils/propertyinfo.h"
#include "utils/signal.h"

namespace Nivex::DataProcessing::Utils {

namespace Detail {

template <typename T>
struct PointedTo
{
    using Type = T;
};
template <typename T>
struct PointedTo<COWPtr<T>>
{
    using Type = T;
};

}  // namespace Detail

/// A value that can be read without knowledge of its type. Properties may be used from any thread.
class GENICAM_API IReadOnlyProperty
{
public:
    virtual ~IReadOnlyProperty() = default;

    /// The type that the property is declared with; empty if it takes any.
    virtual TypeInfo getType() const = 0;
    /// The value, shared. Raises PropertyException if there is none.
    virtual Variant getVariant() const = 0;
    /// A part of the value by its path, as in "Center.X". Raises as getVariant() and PropertyInfo::getValue do.
    virtual Variant getSubProperty(std::string_view path) const = 0;
    /// Fired after every change, on the thread that made it, without a lock of the property.
    virtual ISignal<void()>& getChangedSignal() = 0;
};

/// A value that can be written.
class GENICAM_API IProperty : public virtual IReadOnlyProperty
{
public:
    /// Shares the variant's value. Raises InvalidArgumentException for an empty variant or a value of another
    /// type.
    virtual void setVariant(const Variant& value) = 0;
    /// Writes a part of the value, leaving sharers of it as they are. Raises PropertyException if there is no
    /// value, and as PropertyInfo::setValue does.
    virtual void setSubProperty(std::string_view path, const Variant& value) = 0;
    /// Takes over what another property holds, also if that is nothing. On itself it does nothing.
    virtual void assign(const IReadOnlyProperty& other) = 0;
};

/// A value that may be absent.
class GENICAM_API IResettableProperty : public virtual IProperty
{
public:
    virtual bool hasValue() const = 0;
    virtual void reset() = 0;
};

/// @tparam T is the value's type or a COWPtr of it.
template <typename T>
class IReadOnlyPropertyT : public virtual IReadOnlyProperty
{
public:
    using Element = typename Detail::PointedTo<T>::Type;

    /// Raises PropertyException if there is no value.
    virtual T getValue() const = 0;
    /// The value itself, without a copy; valid until the property is changed.
    virtual const Element& getReference() const = 0;
};

template <typename T>
class IPropertyT : public virtual IReadOnlyPropertyT<T>, public virtual IProperty
{
public:
    /// Raises InvalidArgumentException for an empty COWPtr.
    virtual void setValue(const T& value) = 0;
};

template <typename T>
class IResettablePropertyT : public virtual IPropertyT<T>, public virtual IResettableProperty
{};

/// The part of resettable properties that doesn't know the type: nothing or a value, a lock of its own and the
/// change signal.
class GENICAM_API ResettablePropertyBase : public virtual IResettableProperty
{
public:
    Variant getVariant() const override;
    Variant getSubProperty(std::string_view path) const override;
    ISignal<void()>& getChangedSignal() override { return changed_; }
    void setVariant(const Variant& value) override;
    void setSubProperty(std::string_view path, const Variant& value) override;
    void assign(const IReadOnlyProperty& other) override;
    bool hasValue() const override;
    void reset() override;

    ResettablePropertyBase(const ResettablePropertyBase&) = delete;

protected:
    /// @param required is what every value must be readable as; empty for no demand.
    explicit ResettablePropertyBase(TypeInfo required);
    ResettablePropertyBase& operator=(const ResettablePropertyBase& other);

    TypeInfo getRequired() const { return required_; }
    /// Puts a valid value, or nothing, in place of the present one and fires the signal.
    void replace(Variant value);

private:
    const TypeInfo required_;
    mutable Threading::RecursiveMutex lock_;
    Variant value_;
    Signal<void(), VoidCombiner> changed_;
};

/// The value of one pin: nothing, or a value of type T.
/// @tparam T is a registered type or a COWPtr of one; with either, values are shared, not copied.
template <typename T>
class ResettableProperty : public ResettablePropertyBase, public IResettablePropertyT<T>
{
public:
    using Element = typename Detail::PointedTo<T>::Type;

    /// Raises RuntimeException if T isn't registered.
    ResettableProperty();
    /// As assign().
    ResettableProperty& operator=(const ResettableProperty& other) = default;

    TypeInfo getType() const override { return TypeInfo::get<T>(); }
    T getValue() const override;
    const Element& getReference() const override { return *getCOWPtr(); }
    /// Shares the value.
    COWPtr<Element> getCOWPtr() const { return getVariant().template getCOWPtr<Element>(); }

    void setValue(const T& value) override;
    /// Shares or takes over an object. Raise InvalidArgumentException for null.
    void setCOWPtr(COWPtr<Element> value);
    void setPointer(std::unique_ptr<Element> value);
};

/// A resettable property for values of any registered type, or of all types that convert to one.
class GENICAM_API VariantProperty : public ResettablePropertyBase
{
public:
    /// @param type is what the values must convert to; empty for any.
    explicit VariantProperty(TypeInfo type = {}) : ResettablePropertyBase(type) {}
    VariantProperty& operator=(const VariantProperty& other) = default;

    TypeInfo getType() const override { return getRequired(); }
};

}  // namespace Nivex::DataProcessing::Utils

#include "utils/property_impl.h"
