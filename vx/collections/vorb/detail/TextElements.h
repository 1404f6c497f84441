#pragma once

#include "vx/collections/vorb/detail/Compare.h"
#include "vx/detail/StringLocks.h"
#include "vx/detail/TextHash.h"
#include "vx/detail/TextScan.h"
#include "vx/util/Comparator.h"

#include <cstdint>
#include <span>
#include <string_view>
#include <typeinfo>

// How maps call a comparator. The library's own comparator is not called for texts, by far the most frequent keys: it
// would come to the same result through the component view of each text.

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

/// For texts with buffers of a program, which may release the stored one when they are read.
bool areLockedTextsEqual(const String& stored, const String& other);

inline bool areEqual(const IVXComparator& comparator, bool isOwn, const IVXUnknown* stored, const IVXUnknown* other)
{
    const String* storedText = isOwn ? asText(stored) : nullptr;
    const String* otherText = isOwn ? asText(other) : nullptr;
    if (storedText == nullptr || otherText == nullptr)
        return compareElements(comparator, stored, other) == 0;
    if (storedText == otherText)
        return true;
    std::u16string_view left;
    std::u16string_view right;
    if (!vx::detail::PlainBuffer::read(*storedText, &left) || !vx::detail::PlainBuffer::read(*otherText, &right))
        return areLockedTextsEqual(*storedText, *otherText);
    return left.size() == right.size()
        && vx::detail::equalUnits(left.data(), right.data(), static_cast<int>(left.size()));
}

/// A class whose `compareTo` orders all objects of exactly that class.
struct OrderedClass {
    const std::type_info* type;
    int (*compare)(const void* left, const void* right); ///< takes the addresses of whole objects
};

template <class Key>
constexpr OrderedClass orderedClass() noexcept
{
    return {&typeid(Key), [](const void* left, const void* right) {
                const auto* const leftKey = static_cast<const Key*>(left);
                const auto* const rightKey = static_cast<const Key*>(right);
                const auto keptLeft = keepIfCounted(leftKey);
                const auto keptRight = keepIfCounted(rightKey);
                return leftKey->Key::compareTo(*rightKey);
            }};
}

/// Makes further classes known. The library's start calls this: the classes belong to rooms that include this one. The
/// array must live as long as the library.
void setOrderedClasses(std::span<const OrderedClass> classes) noexcept;

/// Whether both are texts, numbers of one class of the library, or of one of those further classes. The library's own
/// comparator finds such keys equal exactly if `compareForIndex` gives 0 for them; a NaN alone is equal to no number there.
bool areOrdered(const IVXUnknown* left, const IVXUnknown* right) noexcept;

/// Below, equal to or above 0, for two keys of one kind. Keys of different kinds are ordered by kind.
int compareForIndex(const IVXUnknown* left, const IVXUnknown* right);

/// Equal for two keys for which `compareForIndex` gives 0. Depends on the units of a text, and on nothing of other keys.
std::uint32_t tagForIndex(const IVXUnknown* key);

} // namespace vx::collections::vorb::detail
