#pragma once

#include "vx/NumberBoxes.h"
#include "vx/Reference.h"
#include "vx/String.h"
#include "vx/collections/List.h"
#include "vx/collections/Map.h"
#include "vx/collections/detail/Walk.h"
#include "vx/collections/vorb/ArrayList.h"
#include "vx/collections/vorb/HashMap.h"

#include <algorithm>
#include <compare>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <iterator>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

// Lists and maps of plain values. They store a box for each value, in the collections of objects.

namespace vx::collections {

namespace detail {

/// The class of the objects that hold a `T`.
template <class T>
struct BoxOf;

template <class Box, class Primitive, class T>
struct NumberBoxOf {
    using Class = Box;
    static Reference<Class> box(T value) { return new Class(static_cast<Primitive>(value)); }
    static T unbox(const Class& object) { return static_cast<T>(static_cast<Primitive>(object)); }
};

template <class T>
requires(std::integral<T> || std::is_enum_v<T>)
    && (sizeof(T) < sizeof(std::int32_t) || std::is_same_v<T, std::int32_t>)struct BoxOf<T>
    : NumberBoxOf<Integer32, std::int32_t, T> {
};

template <class T>
requires(std::integral<T> || std::is_enum_v<T>) && (sizeof(T) >= sizeof(std::int32_t))
    && (sizeof(T) <= sizeof(std::int64_t))
    && (!std::is_same_v<T, std::int32_t>)struct BoxOf<T> : NumberBoxOf<Integer64, std::int64_t, T> {
}; // which keeps all bits of an unsigned one

template <std::floating_point T>
requires(sizeof(T) <= sizeof(double)) struct BoxOf<T> : NumberBoxOf<Double, double, T> {
};

template <>
struct BoxOf<std::u16string> {
    using Class = String;
    static Reference<Class> box(const std::u16string& value) { return new String(value); }
    static std::u16string unbox(const Class& object) { return std::u16string(object.view()); }
};

template <>
struct BoxOf<String> {
    using Class = String;
    static Reference<Class> box(const String& value) { return new String(value); }
    static String unbox(const Class& object) { return object; }
};

template <class T>
concept Boxed = requires
{
    typename BoxOf<T>::Class;
};

} // namespace detail

/// A list of plain values: integers, floating-point numbers, enumerations, `std::u16string` and `String`, in an array list
/// of boxes. Numbers have at most 64 bits. A copy shares nothing with the original. One thread at a time.
///
/// @code
/// collections::ValueList<int> numbers {3, 1, 2};
/// numbers.add(5);
/// numbers.sort();
/// assert(std::vector<int>(numbers.begin(), numbers.end()) == (std::vector<int> {1, 2, 3, 5}));
/// assert(std::ranges::find(numbers, 2) - numbers.begin() == 1);
/// @endcode
template <detail::Boxed T>
class ValueList {
    using Box = detail::BoxOf<T>;

public:
    using Class = typename Box::Class;

    /// By index, to values. Changes of the list do not matter to it, as long as its index exists.
    class Iterator {
    public:
        using iterator_concept = std::random_access_iterator_tag;
        using iterator_category = std::input_iterator_tag; // it gives values, not references
        using value_type = T;
        using difference_type = std::ptrdiff_t;
        using reference = T;
        using pointer = void;

        Iterator() noexcept = default;

        T operator*() const { return m_list->get(m_index); }
        T operator[](difference_type offset) const { return *(*this + offset); }
        Iterator& operator++() noexcept { return *this += 1; }
        Iterator operator++(int) noexcept { return std::exchange(*this, *this + 1); }
        Iterator& operator--() noexcept { return *this -= 1; }
        Iterator operator--(int) noexcept { return std::exchange(*this, *this - 1); }
        Iterator& operator+=(difference_type offset) noexcept
        {
            m_index += static_cast<int>(offset);
            return *this;
        }
        Iterator& operator-=(difference_type offset) noexcept { return *this += -offset; }
        friend Iterator operator+(Iterator place, difference_type offset) noexcept { return place += offset; }
        friend Iterator operator+(difference_type offset, Iterator place) noexcept { return place += offset; }
        friend Iterator operator-(Iterator place, difference_type offset) noexcept { return place -= offset; }
        friend difference_type operator-(const Iterator& left, const Iterator& right) noexcept
        {
            return left.m_index - right.m_index;
        }
        friend bool operator==(const Iterator& left, const Iterator& right) noexcept
        {
            return left.m_index == right.m_index;
        }
        friend std::strong_ordering operator<=>(const Iterator& left, const Iterator& right) noexcept
        {
            return left.m_index <=> right.m_index;
        }

    private:
        friend class ValueList;

        Iterator(const ValueList& list, int index) noexcept
            : m_list(&list)
            , m_index(index)
        {
        }

        const ValueList* m_list = nullptr;
        int m_index = 0;
    };

    ValueList()
        : m_list(new vorb::ArrayList)
    {
    }
    ValueList(std::initializer_list<T> values)
        : ValueList()
    {
        for (const T& value : values)
            add(value);
    }
    ValueList(const ValueList& other)
        : ValueList()
    {
        for (const T& value : other)
            add(value);
    }
    /// `other` is empty then.
    ValueList(ValueList&& other)
        : ValueList()
    {
        swap(other);
    }
    ValueList& operator=(ValueList other) noexcept
    {
        swap(other);
        return *this;
    }
    void swap(ValueList& other) noexcept { std::swap(m_list, other.m_list); }

    void add(const T& value) { m_list.add(Box::box(value).get()); }
    void add(int index, const T& value) { m_list.add(index, Box::box(value).get()); }
    /// These throw RangeErrorException for an index that does not exist.
    T get(int index) const { return Box::unbox(*m_list.get(index)); }
    void set(int index, const T& value) { m_list.set(index, Box::box(value).get()); }
    T remove(int index) { return Box::unbox(*m_list.remove(index)); }
    /// -1 for none.
    int indexOf(const T& value) const { return m_list.indexOf(Box::box(value).get()); }
    bool contains(const T& value) const { return indexOf(value) >= 0; }
    int getSize() const { return m_list.getSize(); }
    bool isEmpty() const { return m_list.isEmpty(); }
    void clear() { m_list.clear(); }

    /// Stable. A failure leaves the list as it was.
    template <class Less = std::less<>>
    void sort(Less less = Less())
    {
        std::vector<T> values(begin(), end());
        std::stable_sort(values.begin(), values.end(), less);
        std::vector<Reference<Class>> boxes;
        boxes.reserve(values.size());
        for (const T& value : values)
            boxes.push_back(Box::box(value));
        for (int index = 0; const Reference<Class>& box : boxes)
            m_list.set(index++, box.get());
    }

    Iterator begin() const noexcept { return {*this, 0}; }
    Iterator end() const { return {*this, getSize()}; }

    /// The list of boxes.
    List<Class>& getList() noexcept { return m_list; }
    const List<Class>& getList() const noexcept { return m_list; }

private:
    List<Class> m_list;
};

/// A hash map between plain values, of the kinds that `ValueList` takes, in a hash map of boxes. A copy shares nothing with
/// the original. One thread at a time.
///
/// @code
/// collections::ValueMap<std::u16string, int> ages {{u"Ada", 36}, {u"Ole", 7}};
/// ages.put(u"Ole", 8);
/// assert(ages.get(u"Ole") == 8 && !ages.get(u"Ida"));
/// assert(ages.update(u"Ida", [](int age) { return age + 1; }) == 1);
/// int sum = 0;
/// for (const auto& [name, age] : ages)
///     sum += age;
/// assert(sum == 36 + 8 + 1);
/// @endcode
template <detail::Boxed K, detail::Boxed V>
class ValueMap {
    using KeyBox = detail::BoxOf<K>;
    using ValueBox = detail::BoxOf<V>;

public:
    using Objects = Map<typename KeyBox::Class, typename ValueBox::Class>;

    struct ToPair {
        std::pair<K, V> operator()(const Reference<IVXUnknown>& element) const
        {
            const auto [key, value] = typename Objects::ToEntry()(element);
            return {KeyBox::unbox(*key), ValueBox::unbox(*value)};
        }
    };
    /// To pairs of key and value, in one pass. A step after a change of the map throws Exception, unless no entry is left.
    using Iterator = detail::Walk<vorb::ConstIterator, ToPair>;

    ValueMap()
        : m_map(new vorb::HashMap)
    {
    }
    ValueMap(std::initializer_list<std::pair<K, V>> entries)
        : ValueMap()
    {
        for (const auto& [key, value] : entries)
            put(key, value);
    }
    ValueMap(const ValueMap& other)
        : ValueMap()
    {
        other.forEach([this](const K& key, const V& value) { put(key, value); });
    }
    /// `other` is empty then.
    ValueMap(ValueMap&& other)
        : ValueMap()
    {
        swap(other);
    }
    ValueMap& operator=(ValueMap other) noexcept
    {
        swap(other);
        return *this;
    }
    void swap(ValueMap& other) noexcept { std::swap(m_map, other.m_map); }

    /// Replaces the value of a key that exists.
    void put(const K& key, const V& value) { m_map.put(KeyBox::box(key).get(), ValueBox::box(value).get()); }
    /// Nothing for a key that does not exist.
    std::optional<V> get(const K& key) const { return unboxed(m_map.get(KeyBox::box(key).get())); }
    /// Returns the value; nothing for a key that does not exist.
    std::optional<V> remove(const K& key) { return unboxed(m_map.remove(KeyBox::box(key).get())); }
    /// Replaces the value of `key` by `change(value)`, and returns that. `change` gets `V()` for a key that does not exist.
    template <std::invocable<V> Change>
    V update(const K& key, Change change)
    {
        V changed = std::invoke(change, get(key).value_or(V()));
        put(key, changed);
        return changed;
    }
    bool containsKey(const K& key) const { return m_map.containsKey(KeyBox::box(key).get()); }
    int getSize() const { return m_map.getSize(); }
    bool isEmpty() const { return m_map.isEmpty(); }
    void clear() { m_map.clear(); }

    /// Calls `take(key, value)` with each entry, in the order of the hash map. `take` must not change the map.
    template <std::invocable<K, V> Take>
    void forEach(Take take) const
    {
        for (const auto& [key, value] : m_map)
            take(KeyBox::unbox(*key), ValueBox::unbox(*value));
    }

    Iterator begin() const { return Iterator(m_map.createEntryIterator()); }
    Iterator end() const noexcept { return {}; }

    /// The map of boxes.
    Objects& getMap() noexcept { return m_map; }
    const Objects& getMap() const noexcept { return m_map; }

private:
    static std::optional<V> unboxed(const Reference<typename ValueBox::Class>& value)
    {
        return value != nullptr ? std::optional<V>(ValueBox::unbox(*value)) : std::nullopt;
    }

    Objects m_map;
};

} // namespace vx::collections
