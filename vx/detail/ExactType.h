#pragma once

#include <typeinfo>

namespace vx::detail {

/// Compares addresses, which is fast. A type with two type records is not recognised, and only takes more time.
template <class Exact, class Base>
bool isExactly(const Base& object) noexcept
{
    return &typeid(object) == &typeid(Exact);
}

} // namespace vx::detail
