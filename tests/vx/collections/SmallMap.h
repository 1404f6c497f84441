#pragma once

#include "vx/Exceptions.h"
#include "vx/collections/vorb/AbstractMap.h"
#include "vx/collections/vorb/AbstractSet.h"
#include "vx/collections/vorb/Iterator.h"
#include "vx/collections/vorb/MapEntry.h"

#include <vector>

namespace vx::collections::vorb {

/// The least that a map can be: its entries in their order, equal keys included.
class SmallMap : public AbstractMap {
public:
    using AbstractMap::AbstractMap;

    void append(IVXUnknown* key, IVXUnknown* value) { m_entries.emplace_back(new Entry(key, value)); }

    Reference<const Set> createEntrySet() const override { return new EntrySet(const_cast<SmallMap*>(this)); }
    Reference<Set> createEntrySet() override { return new EntrySet(this); }

private:
    class Entry : public ComObject, public virtual MapEntry {
    public:
        Entry(IVXUnknown* key, IVXUnknown* value)
            : m_key(key)
            , m_value(value)
        {
        }
        VX_OBJECT_UNKNOWN(ComObject)

        int compareTo(const Object&) const override { return 0; }
        bool equals(const Object&) const override { return true; }
        Reference<IVXUnknown> getKey() const override { return m_key; }
        Reference<IVXUnknown> getValue() const override { return m_value; }
        std::uint32_t hashCode() const override { return 0x90000000U; }
        Reference<IVXUnknown> setValue(IVXUnknown* value) override
        {
            Reference<IVXUnknown> old(value);
            m_value.swap(old);
            return old;
        }

    private:
        Reference<IVXUnknown> m_key, m_value;
    };

    class EntryIterator : public ComObject, public virtual Iterator {
    public:
        explicit EntryIterator(SmallMap* map)
            : m_map(map)
        {
        }
        VX_OBJECT_UNKNOWN(ComObject)

        bool hasNext() override { return m_next < m_map->m_entries.size(); }
        Reference<IVXUnknown> next() override { return m_map->m_entries[m_next++]->GetUnknown(); }
        void remove() override
        {
            --m_next;
            m_map->m_entries.erase(m_map->m_entries.begin() + static_cast<std::ptrdiff_t>(m_next));
        }

    private:
        Reference<SmallMap> m_map;
        std::size_t m_next = 0;
    };

    class EntrySet : public AbstractSet {
    public:
        explicit EntrySet(SmallMap* map)
            : m_map(map)
        {
        }
        Reference<Iterator> createIterator() override { return new EntryIterator(m_map.get()); }
        Reference<ConstIterator> createConstIterator() const override { return new EntryIterator(m_map.get()); }
        int getSize() const override { return static_cast<int>(m_map->m_entries.size()); }

    private:
        Reference<SmallMap> m_map;
    };

    std::vector<Reference<Entry>> m_entries;
};

} // namespace vx::collections::vorb
