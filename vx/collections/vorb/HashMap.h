#pragma once

#include "vx/collections/detail/Failures.h"
#include "vx/collections/detail/HashTable.h"
#include "vx/collections/vorb/AbstractMap.h"
#include "vx/collections/vorb/HashMapEntry.h"
#include "vx/detail/Hidden.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <utility>

namespace vx::collections::vorb {

/// The map for keys of any kind. The bucket of a key is its hash modulo the capacity. Each call computes the hash of
/// its key once.
///
/// @code
/// collections::Map<String, Integer32> ages(new collections::vorb::HashMap); // gives the map static types
/// ages.put(new String(u"Ida"), new Integer32(41));
/// ages.put(new String(u"Ole"), new Integer32(7));
/// const String ida(u"Ida");
/// assert(*ages.get(&ida) == 41 && ages.getSize() == 2);
/// for (const auto& [name, age] : ages)
///     assert(ages.get(name.get()) == age);
/// @endcode
///
/// Iteration visits the buckets from the last to the first, and in a bucket the newest entry first. If there are
/// already as many entries as capacity times load factor, a new entry first makes n buckets become 2n + 1, which
/// reverses the order within buckets. The capacity never shrinks. A call that fails leaves the map as it was.
///
/// In a bucket with many entries, keys of one of these classes are found in logarithmic time under the default comparator,
/// if they are not changed while they are keys: texts (`String`), numbers, byte buffers, registry keys and query keys. The
/// bucket may also have null and up to five keys of other classes, if their hashes are different from that of the key. For
/// all other keys and comparators the time grows with the number of entries of the bucket: the comparator is called for
/// each entry that has the hash of the key.
///
/// A comparator or a key that changes the map while it is called makes that call throw an Exception without a message.
class VX_API HashMap : public AbstractMap {
    class Item;
    /// Orders the keys for which no comparator is called: texts, and number boxes of one class.
    struct KeyOrder {
        bool areOrdered(const Item& left, const Item& right) const;
        bool isOrdered(const Item& item, const IVXUnknown* key) const;
        static bool mayMeet(const Item& item, const IVXUnknown* key) noexcept;
        static int compare(const Item& left, const Item& right);
        static int compare(const Item& item, const IVXUnknown* key);
        static std::uint32_t tagOf(const Item& item);
        static std::uint32_t tagOf(const IVXUnknown* key);

        bool hasOwnComparator;
    };
    using Table = collections::detail::HashTable<Item, KeyOrder>;

public:
    static constexpr int DEFAULT_CAPACITY = Table::DEFAULT_CAPACITY;
    static constexpr float DEFAULT_LOAD = Table::DEFAULT_LOAD;

    /// The capacity of a map that is filled from one of `size` entries.
    static int calcCapacity(int size);

    /// A `capacity` below 1 is taken as 1; a `load` below 0.001, and one that is NaN, as the default.
    explicit HashMap(int capacity = DEFAULT_CAPACITY, float load = DEFAULT_LOAD);
    /// Neither comparator is null.
    HashMap(const IVXComparator* key, const IVXComparator* value, int capacity, float load);
    /// With the default comparators, whichever ones `map` has.
    explicit HashMap(const Map& map, float load = DEFAULT_LOAD);
    HashMap(const Map& map, const IVXComparator* key, const IVXComparator* value, float load = DEFAULT_LOAD);
    /// Comparators, capacity and load factor are those of `other`; keys and values are shared.
    HashMap(const HashMap& other);
    ~HashMap() noexcept(false) override;

    // Map
    /// Keeps the capacity.
    void clear() override;
    bool containsKey(const IVXUnknown* key) const override;
    bool containsValue(const IVXUnknown* value) const override;
    Reference<const Set> createEntrySet() const override;
    Reference<Set> createEntrySet() override;
    Reference<IVXUnknown> get(const IVXUnknown* key) const override;
    int getSize() const override;
    /// A new value for an existing key leaves iterators valid.
    Reference<IVXUnknown> put(IVXUnknown* key, IVXUnknown* value) override;
    Reference<IVXUnknown> remove(const IVXUnknown* key) override;

    /// The element of a range-for: `for (const auto [key, value] : map)`. Adds no references.
    struct KeyAndValue {
        IVXUnknown* key;
        IVXUnknown* value;
    };
    class Walk;
    /// The fastest iteration over the map, on which it keeps no reference. As with iterators, the step after a change
    /// throws.
    Walk begin() const;
    Walk end() const noexcept;

private:
    friend class ArrayList;
    friend class HashMapEntrySet;
    friend class HashMapIterator;

    using Index = Table::Index;
    static constexpr Index NONE = Table::NONE;

    bool containsEntry(const IVXUnknown* element) const;
    std::uint32_t getKeyHashCode(const IVXUnknown* key) const;
    bool keysEqual(const IVXUnknown* stored, const IVXUnknown* other) const;
    bool valuesEqual(const IVXUnknown* stored, const IVXUnknown* other) const;
    bool areEqual(const IVXComparator& comparator, bool isOwn, const IVXUnknown* stored, const IVXUnknown* other) const;

    /// Whether it contains a text. Nothing if that would call code of a program, such as a comparator.
    VX_HIDDEN std::optional<bool> containsText(const IVXUnknown* key) const;

    Index find(const IVXUnknown* key) const { return find(key, getKeyHashCode(key)); }
    Index find(const IVXUnknown* key, std::uint32_t hash) const;
    Reference<IVXUnknown> removeItem(Index index);
    /// Throws if the map has changed since `expectedCount` was its modification count.
    void check(std::uint32_t expectedCount) const
    {
        if (expectedCount != m_modificationCount)
            collections::detail::throwChanged();
    }

    Table m_table;
    bool m_hasOwnKeyComparator; ///< the library's own comparator, which need not be called for texts
    bool m_hasOwnValueComparator;
};

/// A key with its value. The entry object is created when it is first asked for, and then owns both.
class HashMap::Item {
public:
    Item() noexcept = default;
    Item(IVXUnknown* key, IVXUnknown* value) noexcept;
    Item(Item&& other) noexcept { swap(*this, other); }
    ~Item();

    friend void swap(Item& left, Item& right) noexcept
    {
        std::swap(left.m_key, right.m_key);
        std::swap(left.m_value, right.m_value);
        std::swap(left.m_entry, right.m_entry);
    }

    IVXUnknown* key() const noexcept { return m_key; }
    IVXUnknown* value() const noexcept
    {
        const HashMapEntry* entry = madeEntry().load(std::memory_order_acquire);
        return entry != nullptr ? entry->m_value.get() : m_value;
    }
    /// Returns the old value.
    Reference<IVXUnknown> exchangeValue(Reference<IVXUnknown> value) noexcept;
    /// The value of an item that is being removed. An entry object keeps it as well.
    Reference<IVXUnknown> takeValue() noexcept;
    /// Adds no reference. Readers under a shared lock may call this at the same time and get the same object.
    HashMapEntry* entry() const;
    /// Prefetches the reference counts of key and value, which the caller is about to increment.
    void prefetch() const noexcept
    {
        __builtin_prefetch(m_key, FOR_WRITE);
        prefetchValue();
    }
    void prefetchValue() const noexcept
    {
        __builtin_prefetch(m_value, FOR_WRITE);
        if (const HashMapEntry* entry = madeEntry().load(std::memory_order_relaxed))
            __builtin_prefetch(entry, FOR_WRITE);
    }

private:
    static constexpr int FOR_WRITE = 1;

    std::atomic_ref<HashMapEntry*> madeEntry() const noexcept { return std::atomic_ref<HashMapEntry*>(m_entry); }

    IVXUnknown* m_key = nullptr;
    IVXUnknown* m_value = nullptr; ///< valid as long as there is no entry object
    mutable HashMapEntry* m_entry = nullptr; ///< owned by reference; null until it is asked for
};

class HashMap::Walk {
public:
    using iterator_concept = std::input_iterator_tag;
    using iterator_category = std::input_iterator_tag;
    using difference_type = std::ptrdiff_t;
    using value_type = KeyAndValue;
    using reference = KeyAndValue;
    using pointer = void;

    /// The end of any map.
    Walk() noexcept = default;
    explicit Walk(const HashMap& map) noexcept
        : m_map(&map)
        , m_expectedCount(map.m_modificationCount)
        , m_chains(map.m_table)
        , m_index(m_chains.next(map.m_table))
    {
    }

    KeyAndValue operator*() const noexcept
    {
        const Item& item = m_map->m_table.item(m_index);
        return {item.key(), item.value()};
    }
    Walk& operator++();
    Walk operator++(int) { return std::exchange(*this, std::next(*this)); }

    bool isAtEnd() const noexcept { return m_index == NONE; }
    bool operator==(const Walk& other) const noexcept { return m_index == other.m_index; }
    bool operator==(std::default_sentinel_t) const noexcept { return isAtEnd(); }
    operator std::default_sentinel_t() const noexcept { return {}; }

private:
    const HashMap* m_map = nullptr;
    std::uint32_t m_expectedCount = 0;
    Table::Chains m_chains;
    Index m_index = NONE;
};

inline auto HashMap::Walk::operator++() -> Walk&
{
    m_map->check(m_expectedCount);
    m_index = m_map->m_table.next(m_index);
    if (m_index == NONE)
        m_index = m_chains.next(m_map->m_table);
    return *this;
}

inline HashMap::Walk HashMap::begin() const
{
    return Walk(*this);
}

inline HashMap::Walk HashMap::end() const noexcept
{
    return {};
}

} // namespace vx::collections::vorb
