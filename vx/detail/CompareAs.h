#pragma once

#include "vx/Exceptions.h"
#include "vx/Object.h"

namespace vx::detail {

/// The body of a `compareTo`: `compare` with `other` as an object of its class, 0 for the object itself. Throws
/// CastFailedException if `other` is of another class.
template <class Wanted, class Compare>
int compareAs(const Object& self, const Object& other, Compare compare)
{
    if (&other == &self)
        return 0;
    const auto* wanted = dynamic_cast<const Wanted*>(&other);
    if (wanted == nullptr)
        throw CastFailedException();
    return compare(*wanted);
}

} // namespace vx::detail
