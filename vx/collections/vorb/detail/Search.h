#pragma once

#include "vx/Reference.h"
#include "vx/collections/vorb/detail/TextElements.h"
#include "vx/detail/StringLocks.h"
#include "vx/detail/TextScan.h"

#include <string_view>
#include <typeinfo>

namespace vx::collections::vorb::detail {

enum class Equality { NO, YES, UNKNOWN };

/// Compares two objects of one class, whose addresses are those of the whole objects. UNKNOWN if that would take a lock
/// of a caller's buffer.
using AreEqual = Equality (*)(const void* left, const void* right);

/// For exactly the classes of texts, number boxes and plain objects, null for any other type.
AreEqual equalityOf(const std::type_info& type) noexcept;

/// An element that is looked for. The library's own comparator is not called for two texts, two number boxes of one
/// class or two plain objects: no caller can see the calls that it would make.
class Wanted {
public:
    /// Neither is counted.
    Wanted(const IVXComparator& comparator, const IVXUnknown* element) noexcept;
    Wanted(const Wanted&) = delete;
    Wanted& operator=(const Wanted&) = delete;

    /// Whether the comparator finds `stored` equal. If it is called, `stored` is kept for that time.
    bool isEqualTo(IVXUnknown* stored) const;

private:
    using PlainBuffer = vx::detail::PlainBuffer;

    void readUnits() const noexcept
    {
        m_hasUnits = m_type == &typeid(String) && PlainBuffer::read(*static_cast<const String*>(m_object), &m_units);
    }

    const IVXComparator& m_comparator;
    const IVXUnknown* m_element;
    const std::type_info* m_type = nullptr;
    AreEqual m_areEqual = nullptr;
    const void* m_object = nullptr;
    mutable std::u16string_view m_units; ///< of a text, until a comparator of a caller may change it
    mutable bool m_hasUnits = false;
};

inline Wanted::Wanted(const IVXComparator& comparator, const IVXUnknown* element) noexcept
    : m_comparator(comparator)
    , m_element(element)
{
    if (element == nullptr || !isOwnComparator(&comparator))
        return;
    m_type = &typeid(*element);
    m_areEqual = equalityOf(*m_type);
    m_object = dynamic_cast<const void*>(element);
    readUnits();
}

inline bool Wanted::isEqualTo(IVXUnknown* stored) const
{
    if (m_areEqual != nullptr && stored != nullptr && &typeid(*stored) == m_type) {
        const void* const object = dynamic_cast<const void*>(stored);
        std::u16string_view units;
        if (m_hasUnits && PlainBuffer::read(*static_cast<const String*>(object), &units))
            return units.size() == m_units.size()
                && vx::detail::equalUnits(units.data(), m_units.data(), static_cast<int>(units.size()));
        const Equality equality = m_areEqual(object, m_object);
        if (equality != Equality::UNKNOWN)
            return equality == Equality::YES;
    }
    const Reference<IVXUnknown> kept(stored);
    const int order = compareElements(m_comparator, stored, m_element);
    readUnits();
    return order == 0;
}

} // namespace vx::collections::vorb::detail
