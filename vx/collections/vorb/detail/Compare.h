#pragma once

#include "vx/Exception.h"
#include "vx/IVXComparator.h"

#include <cstdint>

// These call a comparator. Its failure is thrown with its result.

namespace vx::collections::vorb::detail {

inline int compareElements(const IVXComparator& comparator, const IVXUnknown* stored, const IVXUnknown* other)
{
    int order = 0;
    throwIfFailed(comparator.Compare(stored, other, &order));
    return order;
}

inline std::uint32_t hashElement(const IVXComparator& comparator, const IVXUnknown* element)
{
    std::uint32_t hash = 0;
    throwIfFailed(comparator.Hash(element, &hash));
    return hash;
}

} // namespace vx::collections::vorb::detail
