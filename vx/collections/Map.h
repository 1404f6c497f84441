#pragma once

#include "vx/Object.h"
#include "vx/Reference.h"
#include "vx/collections/Set.h"
#include "vx/collections/detail/Element.h"
#include "vx/collections/detail/Walk.h"
#include "vx/collections/vorb/Map.h"

#include <cstdint>
#include <initializer_list>
#include <utility>

namespace vx::collections {

/// Gives a map of components static key and value types, classes derived from Object. As with Collection, everything
/// except the types is that of the wrapped map.
template <class K, class V>
class VX_API Map : public Object {
public:
    /// The element of a range-for: `for (const auto& [key, value] : map)`.
    struct Entry {
        Reference<K> key;
        Reference<V> value;
    };

    explicit Map(vorb::Map* map)
        : m_map(map)
    {
    }
    /// A key and a value for `put`. Each is a pointer, a reference, or a value of which an object is made.
    struct Given {
        detail::Given<K> key;
        detail::Given<V> value;
    };
    /// Puts the entries into the map, one after another.
    Map(vorb::Map* map, std::initializer_list<Given> entries)
        : Map(map)
    {
        for (const Given& entry : entries)
            put(entry.key.get(), entry.value.get());
    }

    // Object
    int compareTo(const Object& other) const override { return m_map->compareTo(other); }
    bool equals(const Object& other) const override { return m_map->equals(other); }
    std::uint32_t hashCode() const override { return m_map->hashCode(); }

    void clear() { m_map->clear(); }
    bool containsKey(const K* key) const { return m_map->containsKey(detail::toElement(key)); }
    Reference<V> get(const K* key) const { return detail::fromElement<V>(m_map->get(detail::toElement(key))); }
    int getSize() const { return m_map->getSize(); }
    bool isEmpty() const { return m_map->getSize() == 0; }
    Reference<V> put(K* key, V* value)
    {
        return detail::fromElement<V>(m_map->put(detail::toElement(key), detail::toElement(value)));
    }
    Reference<V> remove(const K* key) { return detail::fromElement<V>(m_map->remove(detail::toElement(key))); }
    Reference<Set<K>> createKeySet() { return new Set<K>(m_map->createKeySet().get()); }

    /// The wrapped map. Adds no reference.
    vorb::Map* getMap() const noexcept { return m_map.get(); }

    /// To elements that `ToEntry` takes.
    Reference<vorb::ConstIterator> createEntryIterator() const
    {
        const Reference<const vorb::Set> entries = std::as_const(*m_map).createEntrySet();
        return entries->createConstIterator();
    }
    struct ToEntry {
        Entry operator()(const Reference<IVXUnknown>& element) const
        {
            const vorb::MapEntry& entry = vorb::MapEntry::of(element.get());
            return {detail::fromElement<K>(entry.getKey()), detail::fromElement<V>(entry.getValue())};
        }
    };
    using Walk = detail::Walk<vorb::ConstIterator, ToEntry>;
    Walk begin() const { return Walk(createEntryIterator()); }
    Walk end() const noexcept { return {}; }

private:
    Reference<vorb::Map> m_map;
};

} // namespace vx::collections
