#pragma once

#include "vx/ComObject.h"
#include "vx/Reference.h"

#include <concepts>
#include <type_traits>
#include <utility>

// Converts between an object of a known class and the component pointer that collections store. The pointer is always
// that of the object's identity, so that the conversion back needs no check.

namespace vx::collections::detail {

/// Adds no reference. Null becomes null.
template <class T>
IVXUnknown* toElement(T* object) noexcept
{
    return static_cast<ComObject*>(object);
}

template <class T>
const IVXUnknown* toElement(const T* object) noexcept
{
    return static_cast<const ComObject*>(object);
}

/// The caller guarantees that the element is a `T`. The type is checked only if the class has a virtual base.
template <class T>
Reference<T> fromElement(Reference<IVXUnknown> element)
{
    auto* object = static_cast<ComObject*>(element.get());
    if constexpr (requires { static_cast<T*>(object); }) {
        Reference<T> result;
        result.attach(static_cast<T*>(object));
        static_cast<void>(element.detach());
        return result;
    } else {
        return Reference<T>(dynamic_cast<T*>(object));
    }
}

/// A reference to a `T`, or the argument of a constructor. Unlike `std::constructible_from`, also for a class whose
/// destructor may throw.
template <class Value, class T>
concept MakesElement = std::convertible_to<Value, Reference<T>> || requires(Value&& value)
{
    new T(std::forward<Value>(value));
};

/// An element of an initializer list for objects of the class `T`: a pointer, a reference, or a value. A value of a class
/// that derives from `T` is copied, any other one is passed to a constructor of `T`.
template <class T>
class Given {
public:
    template <MakesElement<T> Value>
    Given(Value&& value) // NOLINT(bugprone-forwarding-reference-overload): not for a Given
        : m_object(objectOf(std::forward<Value>(value)))
    {
    }

    T* get() const noexcept { return m_object.get(); }

private:
    template <class Value>
    static Reference<T> objectOf(Value&& value)
    {
        using Plain = std::remove_cvref_t<Value>;
        if constexpr (std::convertible_to<Value, Reference<T>>)
            return std::forward<Value>(value);
        else if constexpr (std::derived_from<Plain, T>)
            return new Plain(std::forward<Value>(value));
        else
            return new T(std::forward<Value>(value));
    }

    Reference<T> m_object;
};

template <class T>
struct FromElement {
    Reference<T> operator()(Reference<IVXUnknown> element) const { return fromElement<T>(std::move(element)); }
};

} // namespace vx::collections::detail
