#pragma once

#include "vxsys/Lock.h"
#include "vxsys/Result.h"
#include "vxsys/detail/Deadline.h"
#include "vxsys/detail/LockOrder.h"
#include "vxsys/detail/Steps.h"

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <type_traits>
#include <utility>

namespace vxsys::detail {

enum class HandleKind { MUTEX, EVENT, GATE, RW_LOCK, SEMAPHORE, CONDITION };

} // namespace vxsys::detail

/// Base of every object that has a handle.
struct VXHandleTag {
    explicit VXHandleTag(vxsys::detail::HandleKind handleKind) noexcept
        : kind(handleKind)
    {
    }
    VXHandleTag(const VXHandleTag&) = delete;
    VXHandleTag& operator=(const VXHandleTag&) = delete;
    virtual ~VXHandleTag()
    {
        if (vxsys::detail::LockOrder::isChecked())
            vxsys::detail::LockOrder::destroyed(this);
        std::free(label);
    }

    /// Copies the label, which may be null. Returns a native error or 0.
    int setLabel(const char* text) noexcept
    {
        label = text != nullptr ? ::strdup(text) : nullptr;
        return text != nullptr && label == nullptr ? ENOMEM : 0;
    }

    const vxsys::detail::HandleKind kind;
    char* label = nullptr; ///< shown by reports and debuggers; null for none
};

namespace vxsys::detail {

/// Base of the objects of one kind. A call with a handle of another kind fails.
template <HandleKind ownKind>
struct HandleOf : VXHandleTag {
    static constexpr HandleKind KIND = ownKind;

    HandleOf() noexcept
        : VXHandleTag(KIND)
    {
    }
};

/// The object of `handle` as a `T`, or null if it is of another kind.
template <class T>
T* objectOf(VXHandle handle) noexcept
{
    return handle != nullptr && handle->kind == T::KIND ? static_cast<T*>(handle) : nullptr;
}

/// Creates the object of a create function. `*handle` becomes null first, and is set on success.
template <class T, class... Arguments>
std::int32_t createHandle(VXHandle* handle, const char* name, Arguments&&... arguments) noexcept
{
    if (handle == nullptr)
        return VXResultFromNative(EINVAL);
    *handle = nullptr;
    auto* object = new (std::nothrow) T;
    if (object == nullptr)
        return VXResultFromNative(ENOMEM);
    const int error = inOrder(
        [&] { return object->setLabel(name); }, [&] { return object->init(std::forward<Arguments>(arguments)...); });
    if (error != 0) {
        delete object;
        return VXResultFromNative(error);
    }
    *handle = object;
    return results::RESULT_OK;
}

/// Runs `work` on the object of kind `T` and converts its native error to a result.
template <class T, class Work>
std::int32_t onHandle(VXHandle handle, Work&& work) noexcept
{
    T* object = objectOf<T>(handle);
    const int error = object != nullptr ? work(*object) : EINVAL;
    return error == 0 ? results::RESULT_OK : VXResultFromNative(error);
}

/// The class of an operation; only for type deduction.
template <class T, class... Parameters>
T* classOf(int (T::*)(Parameters...) noexcept) noexcept;

/// The same for one operation of the object: `onHandle<&Event::signal>(handle)`.
template <auto operation, class... Arguments>
std::int32_t onHandle(VXHandle handle, Arguments&&... arguments) noexcept
{
    using Object = std::remove_pointer_t<decltype(classOf(operation))>;
    return onHandle<Object>(
        handle, [&](Object& object) { return (object.*operation)(std::forward<Arguments>(arguments)...); });
}

/// Acquires a lock by its operation `acquire`, which takes a deadline.
template <auto acquire>
std::int32_t acquireUntil(VXHandle lock, std::uint32_t milliseconds) noexcept
{
    return acquireInOrder(lock, milliseconds, [&] { return onHandle<acquire>(lock, Deadline::in(milliseconds)); });
}

/// Destroys an object. Fails if its `destroyable` returns an error, because it is in use.
template <class T>
std::int32_t destroyHandle(VXHandle handle) noexcept
{
    return onHandle<T>(handle, [](T& object) {
        const int error = object.destroyable();
        if (error == 0)
            delete &object;
        return error;
    });
}

/// A semaphore of this process, or one that processes share by name. Each operation returns a native error or 0.
struct SemaphoreHandle : HandleOf<HandleKind::SEMAPHORE> {
    explicit SemaphoreHandle(bool named) noexcept
        : isNamed(named)
    {
    }

    /// Whether `VXNamedSemClose` ends it, not `VXSemaphoreDestroy`.
    const bool isNamed;

    /// ETIMEDOUT if the count is still 0 at the deadline.
    virtual int wait(const Deadline& deadline) noexcept = 0;
    virtual int post() noexcept = 0;
    virtual int value(std::int32_t& count) noexcept = 0;
};

} // namespace vxsys::detail
