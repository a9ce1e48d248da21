#pragma once

#include <atomic>
#include <concepts>
#include <cstddef>
#include <memory>
#include <type_traits>
#include <utility>

#include "gcbase/export.h"

namespace Nivex::DataProcessing::Utils {

/// Copies an object by its copy constructor.
template <typename Stored>
struct DefaultCloner
{
    std::unique_ptr<std::remove_const_t<Stored>> operator()(const Stored& object) const
    {
        return std::make_unique<std::remove_const_t<Stored>>(object);
    }
};

/// The part of COWPtr that doesn't know the type: a counted handle on an object wrapper. The count is atomic, so
/// copies of one handle may live and die on different threads; one handle is for one thread at a time.
class GENICAM_API COWPtrBase
{
public:
    /// Holds one object and the count of its sharers.
    class GENICAM_API IObjectWrapper
    {
    public:
        virtual ~IObjectWrapper();
        IObjectWrapper(const IObjectWrapper&) = delete;
        IObjectWrapper& operator=(const IObjectWrapper&) = delete;

        /// True when the object must not be written to, even by its only user.
        virtual bool isConst() const = 0;
        /// A new wrapper around a copy of the object, which is never const; null if there is none to be had.
        virtual std::unique_ptr<IObjectWrapper> clone() const = 0;

    protected:
        IObjectWrapper() = default;

    private:
        friend class COWPtrBase;
        std::atomic<std::size_t> sharers_{0};
    };

    /// The wrapper as users of type Exposed see it.
    template <typename Exposed>
    class GENICAM_API IObjectWrapperOf : public IObjectWrapper
    {
    public:
        virtual const Exposed* getConstPointer() const = 0;
        /// Null for a const object.
        virtual Exposed* getPointer() = 0;
    };

    /// Owns an object of type Stored (maybe const) and shows it as Exposed.
    template <typename Stored, typename Exposed = std::remove_const_t<Stored>,
              typename Deleter = std::default_delete<Stored>, typename Cloner = DefaultCloner<Stored>>
    class ObjectWrapper;

    /// True if no other handle shares the object.
    bool isUnique() const noexcept;

protected:
    COWPtrBase() noexcept = default;
    explicit COWPtrBase(std::unique_ptr<IObjectWrapper> wrapper) noexcept;
    COWPtrBase(const COWPtrBase& other) noexcept;
    COWPtrBase(COWPtrBase&& other) noexcept : wrapper_(std::exchange(other.wrapper_, nullptr)) {}
    COWPtrBase& operator=(const COWPtrBase& other) noexcept;
    COWPtrBase& operator=(COWPtrBase&& other) = delete;
    ~COWPtrBase();

    IObjectWrapper* getWrapper() const noexcept { return wrapper_; }
    void swapWrapper(COWPtrBase& other) noexcept { std::swap(wrapper_, other.wrapper_); }

private:
    void release() noexcept;

    IObjectWrapper* wrapper_ = nullptr;
};

/// Shares one object among its copies; who writes to a shared object gets a copy of its own first. Reading never
/// copies. An object that came in as const is copied at the first write even if nobody shares it.
/// @tparam T is not const, and copied by DefaultCloner if no other cloner is given.
template <typename T>
class COWPtr : public COWPtrBase
{
    static_assert(!std::is_const_v<T> && !std::is_reference_v<T>, "COWPtr shares plain types; drop const and &");

public:
    using Element = T;
    using Wrapper = COWPtrBase::IObjectWrapperOf<T>;

    COWPtr() noexcept = default;
    COWPtr(std::nullptr_t) noexcept {}  // NOLINT: like every pointer
    /// Takes the object over. Raises InvalidArgumentException for null.
    explicit COWPtr(T* object);
    /// Takes the object over and never writes to it.
    explicit COWPtr(const T* object);
    explicit COWPtr(std::unique_ptr<T> object);
    template <typename Deleter, typename Cloner>
    COWPtr(T* object, Deleter deleter, Cloner cloner);
    /// Puts a copy of the value into a new object.
    explicit COWPtr(const T& value);
    explicit COWPtr(T&& value);
    /// Shares through a wrapper of the caller's. Raises InvalidArgumentException for null or an empty wrapper.
    explicit COWPtr(std::unique_ptr<Wrapper> wrapper);

    COWPtr(const COWPtr&) noexcept = default;
    COWPtr(COWPtr&& other) noexcept;
    COWPtr& operator=(const COWPtr&) noexcept = default;
    COWPtr& operator=(COWPtr&& other) noexcept;
    ~COWPtr() = default;

    template <typename... Args>
    static COWPtr make(Args&&... args)
    {
        return COWPtr(std::make_unique<T>(std::forward<Args>(args)...));
    }

    /// Read access. Raises RuntimeException when empty.
    const T& operator*() const;
    const T* operator->() const;
    /// Null when empty. Valid until this handle is written to or changed.
    const T* get() const noexcept { return object_; }
    explicit operator bool() const noexcept { return object_ != nullptr; }
    /// True when a write would copy because the object came in as const.
    bool isConst() const noexcept { return constObject_; }

    /// Write access: copies the object first if it is shared or const. The reference is for writes at once, and
    /// no longer to be used when this handle has been copied. Raises RuntimeException when empty or if the copy
    /// is unusable, BadAllocException if there is none; the handle then stays as it was.
    T& write();

    void reset() noexcept { *this = COWPtr(); }

    /// True when both share one object.
    friend bool operator==(const COWPtr& a, const COWPtr& b) noexcept { return a.object_ == b.object_; }

private:
    void clone();

    const T* object_ = nullptr;
    bool constObject_ = false;
};

}  // namespace Nivex::DataProcessing::Utils

#include "utils/cowptr_impl.h"
