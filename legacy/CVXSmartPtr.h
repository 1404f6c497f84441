#pragma once

#include "vx/Reference.h"

#include <concepts>

/// The smart pointer of the older generation. It is a `vx::Reference<T>` under another name: each can be used where the
/// other is expected.
template <class T>
class CVXSmartPtr : public vx::Reference<T> {
public:
    using vx::Reference<T>::Reference;
    using vx::Reference<T>::operator=;
    constexpr CVXSmartPtr() noexcept = default;
    template <class Derived>
    requires std::convertible_to<Derived*, T*> CVXSmartPtr(const vx::Reference<Derived>& other)
    noexcept
        : vx::Reference<T>(other)
    {
    }
};
