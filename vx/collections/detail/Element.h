#pragma once

#include "vx/ComObject.h"
#include "vx/Reference.h"

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

template <class T>
struct FromElement {
    Reference<T> operator()(Reference<IVXUnknown> element) const { return fromElement<T>(std::move(element)); }
};

} // namespace vx::collections::detail
