#pragma once

#include "vx/Exception.h"
#include "vx/IVXComparator.h"
#include "vx/Reference.h"

#include <cstdint>

namespace vx::collections::vorb::detail {

/// Keeps an object while code of a program is called, which may release it. Null for an object on the stack, which nothing
/// may keep.
template <class Kept>
Reference<Kept> keepIfCounted(Kept* object)
{
    return Reference<Kept>(object->GetRefCount() > 0 ? object : nullptr);
}

// These call a comparator. Its failure is thrown with its result.

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
