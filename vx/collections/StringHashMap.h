#pragma once

#include "vx/Object.h"
#include "vx/Reference.h"
#include "vx/String.h"
#include "vx/collections/detail/HashTable.h"

#include <cstdint>
#include <iterator>
#include <string_view>
#include <utility>

namespace vx::util {
class PropertySet;
}

namespace vx::collections {

template <class T>
class Set;

/// Maps texts to objects, which may be null. Keys are compared with regard to case. Growth and load factor are those of
/// `vorb::HashMap`, and a call that fails leaves the map as it was. One thread at a time.
///
/// The hash is that of `String`, which reads at most 63 units of a key. Keys that differ only in the other units share
/// a bucket, and are then found in logarithmic time.
class VX_API StringHashMap : public Object {
    struct Item {
        String key;
        Reference<Object> value;

        friend void swap(Item& left, Item& right) noexcept
        {
            left.key.swap(right.key);
            left.value.swap(right.value);
        }
    };
    struct KeyOrder {
        static bool areOrdered(const Item&, const Item&) noexcept { return true; }
        static bool isOrdered(const Item&, std::u16string_view) noexcept { return true; }
        static bool mayMeet(const Item&, std::u16string_view) noexcept { return true; }
        static int compare(const Item& left, const Item& right);
        static int compare(const Item& left, std::u16string_view right);
        static std::uint32_t tagOf(const Item& item);
        static std::uint32_t tagOf(std::u16string_view key) noexcept;
    };
    using Table = detail::HashTable<Item, KeyOrder>;

public:
    static constexpr int DEFAULT_CAPACITY = Table::DEFAULT_CAPACITY;
    static constexpr float DEFAULT_LOAD = Table::DEFAULT_LOAD;

    /// The capacity of a map that is filled with `size` entries.
    static int calcCapacity(int size);

    /// A `capacity` below 1 is taken as 1; a `load` below 0.001, and one that is NaN, as the default.
    explicit StringHashMap(int capacity = DEFAULT_CAPACITY, float load = DEFAULT_LOAD);
    StringHashMap(const StringHashMap&) = delete;
    StringHashMap& operator=(const StringHashMap&) = delete;
    ~StringHashMap() noexcept(false) override;

    /// Keeps the capacity.
    virtual void clear();
    /// Returns null both for a missing key and for a value that is null. A `length` of -1 means a zero-terminated text.
    virtual Reference<Object> get(const char16_t* chars, int length = -1) const;
    virtual Reference<Object> get(const String& key) const;
    virtual int getSize() const;
    /// False for a key whose value is null.
    virtual bool containsKey(const char16_t* chars, int length = -1) const;
    virtual bool containsKey(const String& key) const;
    virtual bool isEmpty() const;
    /// Returns the old value, null if the key is new. The map shares the buffer of a new key.
    virtual Reference<Object> put(const String& key, Object* value);
    /// Returns the value, null if the key is missing.
    virtual Reference<Object> remove(const String& key);
    /// The keys at this moment, in a new set.
    virtual Reference<const Set<String>> createKeySet() const;

    /// The element of a range-for: `for (const auto [key, value] : map)`. The value has no reference added.
    struct KeyAndValue {
        const String& key;
        Object* value;
    };
    struct ToKeyAndValue {
        KeyAndValue operator()(std::uint32_t, const Item& item) const noexcept { return {item.key, item.value.get()}; }
    };
    /// From bucket 0 up. If a key was added or removed, the next step throws an Exception without a message.
    Table::Walk<ToKeyAndValue> begin() const noexcept { return Table::Walk<ToKeyAndValue>(m_table); }
    Table::Walk<ToKeyAndValue> end() const noexcept { return {}; }

private:
    friend class util::PropertySet; // searches several maps for one key

    struct Place {
        std::uint32_t hash;
        Table::Index index;
    };
    Place find(const char16_t* chars, int length) const;
    Place find(const String& key) const;
    /// `hash` is that of the key.
    Table::Index find(std::uint32_t hash, std::u16string_view key) const;

    Table m_table;
};

} // namespace vx::collections
