#pragma once

#include "vx/Exception.h"
#include "vxsys/Memory.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <type_traits>
#include <utility>
#include <vector>

namespace vx::collections::detail {

/// The buckets below the hash maps. A new item becomes the head of its bucket's chain; once there are as many items as the
/// threshold says, the next one makes 2n + 1 buckets of n, and chains turn round.
///
/// Items lie side by side in one array and chains are indexes into it: an entry is no allocation of its own, and long
/// chains need no stack to go. An index stands for its item until that is removed. What fails changes nothing.
template <class Item>
class HashTable {
public:
    using Index = std::int32_t;
    /// The end of every chain.
    static constexpr Index NONE = -1;

    static constexpr int DEFAULT_CAPACITY = 101;
    static constexpr float DEFAULT_LOAD = 0.75F;
    /// Buckets for a map that is filled with `size` entries at once.
    static constexpr int calcCapacity(int size) noexcept
    {
        return size <= 5 ? 11 : size <= LARGEST / 2 ? 2 * size : LARGEST;
    }

    /// A `capacity` below 1 is taken as 1; a `load` below 0.001, and one that is no number, as the default.
    HashTable(int capacity, float load)
        : m_load(load >= LEAST_LOAD ? load : DEFAULT_LOAD)
    {
        replaceHeads(std::max(capacity, 1));
    }
    HashTable(const HashTable&) = delete;
    HashTable& operator=(const HashTable&) = delete;

    float load() const noexcept { return m_load; }
    int size() const noexcept { return m_size; }
    int capacity() const noexcept { return static_cast<int>(m_heads.size()); }

    Index head(int bucket) const noexcept { return m_heads[static_cast<std::size_t>(bucket)]; }
    Index next(Index index) const noexcept { return node(index).next; }
    Item& item(Index index) noexcept { return node(index).item; }
    const Item& item(Index index) const noexcept { return node(index).item; }

    /// The first item of its chain that `matches`, which is asked for equal hashes only.
    template <class Matches>
    Index find(std::uint32_t hash, Matches matches) const
    {
        Index index = m_heads[bucketOf(hash)];
        while (index != NONE && (node(index).hash != hash || !matches(node(index).item)))
            index = next(index);
        return index;
    }

    void insert(std::uint32_t hash, Item item)
    {
        makeRoom();
        const Index index = std::exchange(m_free, next(m_free));
        swap(node(index).item, item);
        node(index).hash = hash;
        prepend(index);
        ++m_size;
    }

    Item remove(Index index)
    {
        Index* link = &m_heads[bucketOf(node(index).hash)];
        while (*link != index)
            link = &node(*link).next;
        Item item;
        swap(node(index).item, item);
        *link = node(index).next;
        node(index).next = std::exchange(m_free, index);
        --m_size;
        return item;
    }

    /// Keeps the capacity. The table is empty before the first item goes.
    void clear() noexcept
    {
        Nodes nodes;
        nodes.swap(m_nodes);
        std::fill(m_heads.begin(), m_heads.end(), NONE);
        m_free = NONE;
        m_size = 0;
    }

    /// The head of the next chain below `bucket`, which goes down to it; NONE and 0 where there is none.
    Index headBelow(int& bucket) const noexcept
    {
        Index index = NONE;
        while (index == NONE && bucket > 0)
            index = head(--bucket);
        return index;
    }

    /// One pass for a range-for from bucket 0 up, which gives each item through `Projection`. Good for as long as no entry
    /// comes or goes.
    template <class Projection>
    class Walk {
    public:
        using iterator_concept = std::input_iterator_tag;
        using difference_type = std::ptrdiff_t;
        using value_type = std::invoke_result_t<Projection, std::uint32_t, const Item&>;

        explicit Walk(const HashTable& table) noexcept
            : m_table(&table)
        {
            findHead();
        }

        value_type operator*() const { return Projection()(m_table->node(m_index).hash, m_table->item(m_index)); }
        Walk& operator++() noexcept
        {
            m_index = m_table->next(m_index);
            findHead();
            return *this;
        }
        void operator++(int) noexcept { ++*this; }

        friend bool operator==(const Walk& walk, std::default_sentinel_t) noexcept { return walk.m_index == NONE; }

    private:
        void findHead() noexcept
        {
            while (m_index == NONE && m_bucket < m_table->capacity())
                m_index = m_table->head(m_bucket++);
        }

        const HashTable* m_table;
        int m_bucket = 0;
        Index m_index = NONE;
    };

private:
    struct Node {
        Item item;
        std::uint32_t hash = 0;
        Index next = NONE;
    };

    using Nodes = std::vector<Node, vxsys::Allocator<Node>>;
    using Heads = std::vector<Index, vxsys::Allocator<Index>>;

    static constexpr float LEAST_LOAD = 0.001F;
    static constexpr int LARGEST = std::numeric_limits<int>::max();

    Node& node(Index index) noexcept { return m_nodes[static_cast<std::size_t>(index)]; }
    const Node& node(Index index) const noexcept { return m_nodes[static_cast<std::size_t>(index)]; }

    std::size_t bucketOf(std::uint32_t hash) const noexcept
    {
        return hash % static_cast<std::uint32_t>(m_heads.size());
    }

    void prepend(Index index) noexcept
    {
        Index& head = m_heads[bucketOf(node(index).hash)];
        node(index).next = std::exchange(head, index);
    }

    /// Makes empty buckets and gives back the old ones.
    Heads replaceHeads(int capacity)
    {
        Heads heads(static_cast<std::size_t>(capacity), NONE);
        heads.swap(m_heads);
        const double threshold = static_cast<double>(capacity) * static_cast<double>(m_load);
        m_threshold = threshold < LARGEST ? static_cast<int>(threshold) : LARGEST;
        return heads;
    }

    /// A free node, and a bucket that is not too full for it.
    void makeRoom()
    {
        if (m_size == LARGEST)
            throwBadAllocation();
        if (m_free == NONE) {
            m_nodes.emplace_back();
            m_free = static_cast<Index>(m_nodes.size() - 1);
        }
        if (m_size >= m_threshold && capacity() <= (LARGEST - 1) / 2) // beyond that, chains grow instead
            rehash();
    }

    void rehash()
    {
        const Heads old = replaceHeads(2 * capacity() + 1);
        for (auto head = old.rbegin(); head != old.rend(); ++head) {
            for (Index index = *head; index != NONE;)
                prepend(std::exchange(index, next(index)));
        }
    }

    float m_load;
    int m_size = 0;
    int m_threshold = 0;
    Heads m_heads;
    Nodes m_nodes;
    Index m_free = NONE; ///< a chain of nodes without an item
};

} // namespace vx::collections::detail
