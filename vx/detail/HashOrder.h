#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>

namespace vx::detail {

/// The buckets of a chained hash map, which decide the order in which its entries are walked.
///
/// The bucket of an entry is its hash modulo the capacity. A new entry becomes the head of its chain. An entry that would
/// exceed the threshold first makes the map grow: the old buckets are walked from the last to the first, each from its
/// head, and every entry becomes the head of its new chain. This reverses the order of entries that stay together.
///
/// The threshold is capacity times load, truncated, and the product is taken in `Product`.
template <class Product = double>
class HashOrder {
public:
    static constexpr int DEFAULT_CAPACITY = 101;
    static constexpr float DEFAULT_LOAD = 0.75F;

    /// The capacity of a map that is filled with `size` entries at once.
    static constexpr int capacityFor(int size) noexcept;

    /// A `capacity` below 1 is taken as 1; `load` is above 0.
    constexpr explicit HashOrder(int capacity = DEFAULT_CAPACITY, float load = DEFAULT_LOAD) noexcept;

    constexpr int capacity() const noexcept { return m_capacity; }
    constexpr float load() const noexcept { return m_load; }
    constexpr std::uint32_t bucketOf(std::uint32_t hash) const noexcept;

    /// Whether the map has to grow before it takes an entry beyond `size`. The largest maps let their chains grow instead.
    constexpr bool isFull(int size) const noexcept { return size >= m_threshold && m_capacity <= (LARGEST - 1) / 2; }
    constexpr HashOrder grown() const noexcept { return HashOrder(2 * m_capacity + 1, m_load); }

private:
    static constexpr int LARGEST = std::numeric_limits<int>::max();

    static constexpr int truncate(Product product) noexcept;

    int m_capacity;
    float m_load;
    int m_threshold;
};

template <class Product>
constexpr int HashOrder<Product>::capacityFor(int size) noexcept
{
    return size <= 5 ? 11 : size <= LARGEST / 2 ? 2 * size : LARGEST;
}

template <class Product>
constexpr HashOrder<Product>::HashOrder(int capacity, float load) noexcept
    : m_capacity(std::max(capacity, 1))
    , m_load(load)
    , m_threshold(truncate(static_cast<Product>(m_capacity) * static_cast<Product>(load)))
{
}

template <class Product>
constexpr std::uint32_t HashOrder<Product>::bucketOf(std::uint32_t hash) const noexcept
{
    return hash % static_cast<std::uint32_t>(m_capacity);
}

template <class Product>
constexpr int HashOrder<Product>::truncate(Product product) noexcept
{
    return product < static_cast<Product>(LARGEST) ? static_cast<int>(product) : LARGEST;
}

} // namespace vx::detail
