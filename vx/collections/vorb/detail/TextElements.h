#pragma once

#include "vx/collections/vorb/detail/Compare.h"
#include "vx/detail/StringLocks.h"
#include "vx/detail/TextHash.h"
#include "vx/detail/TextScan.h"
#include "vx/util/Comparator.h"

#include <cstdint>

// How maps ask a comparator. Text, by far the most frequent key, goes the short way where the comparator is the library's
// own, which would come to the same result through the component view of each string.

namespace vx::collections::vorb::detail {

/// True for the comparator that collections have by default, and for any other object of its class.
inline bool isOwnComparator(const IVXComparator* comparator) noexcept
{
    return comparator != nullptr && vx::detail::isExactly<util::Comparator>(*comparator);
}

/// Null for anything but exactly a `String`.
inline const String* asText(const IVXUnknown* element) noexcept
{
    if (element == nullptr || !vx::detail::isExactly<String>(*element))
        return nullptr;
    return static_cast<const String*>(dynamic_cast<const void*>(element));
}

inline std::uint32_t hashOf(const IVXComparator& comparator, bool isOwn, const IVXUnknown* element)
{
    const String* text = isOwn ? asText(element) : nullptr;
    if (text == nullptr)
        return hashElement(comparator, element);
    const vx::detail::StringReadLock lock(*text);
    return vx::detail::hashText(lock.data(), lock.length(), false);
}

inline bool areEqual(const IVXComparator& comparator, bool isOwn, const IVXUnknown* stored, const IVXUnknown* other)
{
    const String* storedText = isOwn ? asText(stored) : nullptr;
    const String* otherText = isOwn ? asText(other) : nullptr;
    if (storedText == nullptr || otherText == nullptr)
        return compareElements(comparator, stored, other) == 0;
    if (storedText == otherText)
        return true;
    const vx::detail::StringReadLock left(*storedText);
    const vx::detail::StringReadLock right(*otherText);
    return left.length() == right.length() && vx::detail::equalUnits(left.data(), right.data(), left.length());
}

} // namespace vx::collections::vorb::detail
