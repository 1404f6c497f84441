#pragma once

#include "vx/Object.h"
#include "vx/Reference.h"
#include "vx/collections/detail/HashTable.h"

#include <cstdint>
#include <iterator>

namespace vx {
class Integer32;
}

namespace vx::collections {

template <class T>
class Set;

/// Maps numbers to objects, which may be null. A number is its own hash. Growth and load factor are those of
/// `vorb::HashMap`, and a call that fails leaves the map as it was. One thread at a time.
class VX_API IntegerHashMap : public Object {
    /// Numbers with one hash are equal.
    struct KeyOrder {
        static bool areOrdered(const Reference<Object>&, const Reference<Object>&) noexcept { return true; }
        static bool isOrdered(const Reference<Object>&, int) noexcept { return true; }
        static bool mayMeet(const Reference<Object>&, int) noexcept { return true; }
        static int compare(const Reference<Object>&, const Reference<Object>&) noexcept { return 0; }
        static int compare(const Reference<Object>&, int) noexcept { return 0; }
        static std::uint32_t tagOf(const Reference<Object>&) noexcept { return 0; }
        static std::uint32_t tagOf(int) noexcept { return 0; }
    };
    using Table = detail::HashTable<Reference<Object>, KeyOrder>;

public:
    static constexpr int DEFAULT_CAPACITY = Table::DEFAULT_CAPACITY;
    static constexpr float DEFAULT_LOAD = Table::DEFAULT_LOAD;

    /// The capacity of a map that is filled with `size` entries.
    static int calcCapacity(int size);

    /// A `capacity` below 1 is taken as 1; a `load` below 0.001, and one that is NaN, as the default.
    explicit IntegerHashMap(int capacity = DEFAULT_CAPACITY, float load = DEFAULT_LOAD);
    IntegerHashMap(const IntegerHashMap&) = delete;
    IntegerHashMap& operator=(const IntegerHashMap&) = delete;
    ~IntegerHashMap() noexcept(false) override;

    /// Keeps the capacity.
    virtual void clear();
    /// Returns null both for a missing key and for a value that is null.
    virtual Reference<Object> get(int key) const;
    virtual int getSize() const;
    virtual bool isEmpty() const;
    /// Returns the old value, null if the key is new.
    virtual Reference<Object> put(int key, Object* value);
    /// Returns the value, null if the key is missing.
    virtual Reference<Object> remove(int key);
    /// The keys at this moment, in a new set.
    virtual Reference<const Set<Integer32>> createKeySet() const;

    /// The element of a range-for: `for (const auto [key, value] : map)`. The value has no reference added.
    struct KeyAndValue {
        int key;
        Object* value;
    };
    struct ToKeyAndValue {
        KeyAndValue operator()(std::uint32_t hash, const Reference<Object>& value) const noexcept
        {
            return {static_cast<int>(hash), value.get()};
        }
    };
    /// From bucket 0 up. If a key was added or removed, the next step throws an Exception without a message.
    Table::Walk<ToKeyAndValue> begin() const noexcept { return Table::Walk<ToKeyAndValue>(m_table); }
    Table::Walk<ToKeyAndValue> end() const noexcept { return {}; }

private:
    Table::Index find(int key) const noexcept;

    Table m_table;
};

} // namespace vx::collections
