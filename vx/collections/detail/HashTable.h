#pragma once

#include "vx/collections/detail/Failures.h"
#include "vx/detail/ChainIndex.h"
#include "vx/detail/HashOrder.h"
#include "vxsys/Memory.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <optional>
#include <type_traits>
#include <utility>
#include <vector>
#if defined(__SSE2__) && !defined(VX_NO_VECTOR)
#include <emmintrin.h>
#endif

namespace vx::collections::detail {

/// The buckets and chains of the hash maps of objects, in the order that `HashOrder` describes.
///
/// Items are stored side by side in one array, and chains are indexes into it, so that an entry needs no allocation. An
/// index is valid until its item is removed. An operation that fails changes nothing. When an item is destroyed, the table
/// is consistent and no longer contains it: the destructor may use the table.
///
/// `KeyOrder` orders the keys of a long chain:
/// - `areOrdered(const Item&, const Item&)`: whether the keys of the two can be compared;
/// - `isOrdered(const Item&, key)`: whether a wanted key can be compared with that of an item;
/// - `mayMeet(const Item&, key)`: for keys of equal hash that cannot, whether they may be equal or call code of a program;
/// - `compare(const Item&, const Item&)`, `compare(const Item&, key)`: below, equal to or above 0, for keys that can be
///   compared. The result is 0 for equal keys. Apart from that, any order is allowed;
/// - `tagOf(const Item&)`, `tagOf(key)`: a number that is equal for equal keys, and better different for others.
/// `compare` and `tagOf` may call code of a program. If that changes the table, the operation throws an Exception.
template <class Item, class KeyOrder>
class HashTable {
    using Order = vx::detail::HashOrder<>;

public:
    using Index = std::int32_t;
    /// The end of every chain.
    static constexpr Index NONE = -1;

    static constexpr int DEFAULT_CAPACITY = Order::DEFAULT_CAPACITY;
    static constexpr float DEFAULT_LOAD = Order::DEFAULT_LOAD;
    /// The capacity of a map that is filled with `size` entries at once.
    static constexpr int calcCapacity(int size) noexcept { return Order::capacityFor(size); }

    /// A `capacity` below 1 is taken as 1; a `load` below 0.001, and one that is NaN, as the default.
    HashTable(int capacity, float load, KeyOrder keyOrder = KeyOrder());
    ~HashTable()
    {
        while (!m_nodes.empty()) // destructors of items may add others
            clear();
    }
    HashTable(const HashTable&) = delete;
    HashTable& operator=(const HashTable&) = delete;

    float load() const noexcept { return m_order.load(); }
    int size() const noexcept { return m_size; }
    int capacity() const noexcept { return m_order.capacity(); }

    Index head(int bucket) const noexcept { return m_heads[static_cast<std::size_t>(bucket)]; }
    Index next(Index index) const noexcept { return node(index).next; }
    Item& item(Index index) noexcept { return node(index).item; }
    const Item& item(Index index) const noexcept { return node(index).item; }

    /// The first item of its chain with `key`: the one that `matches`, which is called for equal hashes only.
    template <class Key, class Matches>
    Index find(std::uint32_t hash, const Key& key, Matches matches) const;

    /// Whether `find` may compare keys by `KeyOrder`.
    bool isIndexed() const noexcept { return !m_chains.isEmpty(); }

    /// Does work that may call code of a program. Throws an Exception without a message if that changed the table.
    template <class Work>
    auto unchanged(Work work) const
    {
        const std::uint32_t expectedCount = m_modificationCount;
        const auto result = work();
        check(expectedCount);
        return result;
    }

    void insert(std::uint32_t hash, Item item);
    Item remove(Index index);
    /// Keeps the capacity.
    void clear() noexcept;

    /// Buckets that are looked at together. The first one of a group is a multiple of this.
    static constexpr int GROUP = 32;

    /// The chains of the group of buckets that begins with `first`. Bit 0 stands for the last bucket of a whole group.
    std::uint32_t chainsOf(int first) const noexcept;
    /// The last bucket below `bucket` that has a chain, -1 if there is none.
    int chainBelow(int bucket) const noexcept;
    /// Prefetches the heads of the chains of a group, if there is one that begins with `first`.
    void prefetchHeads(int first) const noexcept;

    /// The chains from the last bucket to the first, until the table changes.
    class Chains {
    public:
        Chains() noexcept = default;
        explicit Chains(const HashTable& table) noexcept
            : m_groups((table.capacity() - 1) / GROUP + 1)
        {
        }

        /// The head of the next chain, NONE at the end.
        Index next(const HashTable& table) noexcept;

    private:
        int m_groups = 0; ///< that are still to come
        std::uint32_t m_rest = 0; ///< the chains of the current group that are still to come
    };

    /// The iterator of a range-for: one pass from bucket 0 up. Each item is passed through `Projection`. If an entry
    /// was added or removed, the next step throws an Exception without a message.
    template <class Projection>
    class Walk {
    public:
        using iterator_concept = std::input_iterator_tag;
        using iterator_category = std::input_iterator_tag;
        using difference_type = std::ptrdiff_t;
        using value_type = std::invoke_result_t<Projection, std::uint32_t, const Item&>;
        using reference = value_type;
        using pointer = void;

        /// The end of any table.
        Walk() noexcept = default;
        explicit Walk(const HashTable& table) noexcept
            : m_table(&table)
            , m_expectedCount(table.m_modificationCount)
        {
            findHead();
        }

        value_type operator*() const { return Projection()(m_table->node(m_index).hash, m_table->item(m_index)); }
        Walk& operator++();
        Walk operator++(int) { return std::exchange(*this, std::next(*this)); }

        bool operator==(const Walk& other) const noexcept { return m_index == other.m_index; }
        bool operator==(std::default_sentinel_t) const noexcept { return m_index == NONE; }
        operator std::default_sentinel_t() const noexcept { return {}; }

    private:
        void findHead() noexcept
        {
            while (m_index == NONE && m_bucket < m_table->capacity())
                m_index = m_table->head(m_bucket++);
        }

        const HashTable* m_table = nullptr;
        std::uint32_t m_expectedCount = 0;
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

    template <class Key>
    struct Wanted {
        std::uint32_t hash;
        const Key& key;
    };
    struct IndexOrder {
        std::uint32_t tagOf(Index index) const;
        template <class Key>
        std::uint32_t tagOf(const Wanted<Key>& wanted) const;
        int compare(Index left, Index right) const;
        template <class Key>
        int compare(Index left, const Wanted<Key>& right) const;
        bool areOrdered(Index left, Index right) const;
        template <class Key>
        bool areOrdered(Index left, const Wanted<Key>& right) const;
        template <class Key>
        bool mayMeet(Index left, const Wanted<Key>& right) const;
        /// The order may be destroyed with its index meanwhile.
        template <class Work>
        auto whileUnchanged(Work work) const
        {
            const HashTable& owner = *table;
            return owner.unchanged([&] { return work(owner); });
        }

        const HashTable* table;
    };
    using ChainIndex = vx::detail::ChainIndex<Index, NONE, IndexOrder>;

    static constexpr float LEAST_LOAD = 0.001F;
    static constexpr int LAST = GROUP - 1;

    Node& node(Index index) noexcept { return m_nodes[static_cast<std::size_t>(index)]; }
    const Node& node(Index index) const noexcept { return m_nodes[static_cast<std::size_t>(index)]; }

    /// Of any index: a branch on NONE would be mispredicted, and the address is only a hint.
    void prefetch(Index index) const noexcept
    {
        const std::size_t offset = static_cast<std::size_t>(index) * sizeof(Node);
        __builtin_prefetch(reinterpret_cast<const void*>(reinterpret_cast<std::uintptr_t>(m_nodes.data()) + offset));
    }

    std::size_t bucketOf(std::uint32_t hash) const noexcept { return m_order.bucketOf(hash); }
    auto following() const noexcept
    {
        return [this](Index index) { return next(index); };
    }

    void prepend(Index index) noexcept
    {
        Index& head = m_heads[bucketOf(node(index).hash)];
        node(index).next = std::exchange(head, index);
    }

    void check(std::uint32_t expectedCount) const
    {
        if (expectedCount != m_modificationCount)
            throwChanged();
    }

    /// Changes the indexes while the table has none, as keys are read meanwhile. If that changes the table, all are dropped.
    template <class Work>
    [[gnu::noinline]] void changeIndexes(Work work) noexcept
    {
        const std::uint32_t expectedCount = m_modificationCount;
        ChainIndex chains = std::exchange(m_chains, ChainIndex());
        work(chains);
        if (expectedCount == m_modificationCount)
            m_chains = std::move(chains);
    }

    /// After an item became the head of its chain.
    void addToIndex(Index index) noexcept;

    /// Returns where `index` is stored in its chain, and removes it from the ordered index of that chain.
    Index* linkTo(Index index);
    /// Removes it from that index. Returns the one before it in the chain, NONE for the head and if that is not known.
    [[gnu::noinline]] Index removeFromIndex(std::size_t bucket, Index index);

    /// A free node, and a bucket that is not too full for it.
    void makeRoom();

    /// Throws an Exception if a key that is read meanwhile changes the table.
    void rehash();

    Order m_order;
    KeyOrder m_keyOrder;
    std::uint32_t m_modificationCount = 0;
    int m_size = 0;
    Heads m_heads;
    Nodes m_nodes;
    Index m_free = NONE; ///< a chain of nodes without an item
    ChainIndex m_chains;
};

template <class Item, class KeyOrder>
HashTable<Item, KeyOrder>::HashTable(int capacity, float load, KeyOrder keyOrder)
    : m_order(capacity, load >= LEAST_LOAD ? load : DEFAULT_LOAD)
    , m_keyOrder(keyOrder)
    , m_heads(static_cast<std::size_t>(m_order.capacity()), NONE)
{
}

template <class Item, class KeyOrder>
template <class Key, class Matches>
auto HashTable<Item, KeyOrder>::find(std::uint32_t hash, const Key& key, Matches matches) const -> Index
{
    int first = ChainIndex::FIRST;
    Index index = m_heads[bucketOf(hash)];
    while (index != NONE && (node(index).hash != hash || !matches(node(index).item))) {
        if (--first == 0 && isIndexed()) [[unlikely]] {
            if (const std::optional<Index> found = m_chains.find(bucketOf(hash), Wanted<Key> {hash, key}))
                return *found != NONE && matches(node(*found).item) ? *found : NONE;
        }
        index = next(index);
    }
    return index;
}

template <class Item, class KeyOrder>
void HashTable<Item, KeyOrder>::insert(std::uint32_t hash, Item item)
{
    makeRoom();
    const Index index = std::exchange(m_free, next(m_free));
    swap(node(index).item, item);
    node(index).hash = hash;
    prepend(index);
    ++m_size;
    ++m_modificationCount;
    addToIndex(index);
}

template <class Item, class KeyOrder>
Item HashTable<Item, KeyOrder>::remove(Index index)
{
    *linkTo(index) = node(index).next;
    Item item;
    swap(node(index).item, item);
    node(index).next = std::exchange(m_free, index);
    --m_size;
    ++m_modificationCount;
    return item;
}

template <class Item, class KeyOrder>
void HashTable<Item, KeyOrder>::clear() noexcept
{
    Nodes nodes;
    nodes.swap(m_nodes);
    m_chains.clear();
    std::fill(m_heads.begin(), m_heads.end(), NONE);
    m_free = NONE;
    m_size = 0;
    ++m_modificationCount;
}

template <class Item, class KeyOrder>
inline std::uint32_t HashTable<Item, KeyOrder>::chainsOf(int first) const noexcept
{
    const Index* const heads = m_heads.data() + first;
    const int count = std::min(capacity() - first, GROUP);
#if defined(__SSE2__) && !defined(VX_NO_VECTOR)
    if (count == GROUP) [[likely]] {
        constexpr int REVERSE = _MM_SHUFFLE(0, 1, 2, 3);
        const auto load = [heads](int place) { // four heads, the last one first
            const auto* const four = reinterpret_cast<const __m128i*>(heads + place);
            return _mm_shuffle_epi32(_mm_loadu_si128(four), REVERSE);
        };
        const auto emptyFrom = [&load](int place) { // the signs of sixteen heads
            const __m128i high = _mm_packs_epi32(load(place + 12), load(place + 8));
            const __m128i low = _mm_packs_epi32(load(place + 4), load(place));
            return static_cast<std::uint32_t>(_mm_movemask_epi8(_mm_packs_epi16(high, low)));
        };
        return ~(emptyFrom(GROUP / 2) | emptyFrom(0) << GROUP / 2);
    }
#endif
    std::uint32_t chains = 0;
    for (int place = 0; place < count; ++place)
        chains |= static_cast<std::uint32_t>(heads[place] != NONE) << (LAST - place);
    return chains;
}

template <class Item, class KeyOrder>
int HashTable<Item, KeyOrder>::chainBelow(int bucket) const noexcept
{
    while (bucket > 0) {
        const int first = (bucket - 1) / GROUP * GROUP;
        const std::uint32_t chains = chainsOf(first) >> (GROUP - (bucket - first));
        if (chains != 0)
            return bucket - 1 - std::countr_zero(chains);
        bucket = first;
    }
    return -1;
}

template <class Item, class KeyOrder>
inline void HashTable<Item, KeyOrder>::prefetchHeads(int first) const noexcept
{
    if (first < 0)
        return;
    for (int bucket = first; bucket < first + GROUP; ++bucket)
        prefetch(head(bucket));
}

template <class Item, class KeyOrder>
[[gnu::always_inline]] inline auto HashTable<Item, KeyOrder>::Chains::next(const HashTable& table) noexcept -> Index
{
    while (m_rest == 0) {
        if (m_groups == 0)
            return NONE;
        --m_groups;
        m_rest = table.chainsOf(m_groups * GROUP);
        table.prefetchHeads((m_groups - 1) * GROUP); // scattered in memory
    }
    const int bucket = m_groups * GROUP + (LAST - std::countr_zero(m_rest));
    m_rest &= m_rest - 1;
    return table.head(bucket);
}

template <class Item, class KeyOrder>
template <class Projection>
auto HashTable<Item, KeyOrder>::Walk<Projection>::operator++() -> Walk&
{
    if (m_expectedCount != m_table->m_modificationCount)
        throwChanged();
    m_index = m_table->next(m_index);
    findHead();
    return *this;
}

template <class Item, class KeyOrder>
std::uint32_t HashTable<Item, KeyOrder>::IndexOrder::tagOf(Index index) const
{
    const Node& node = table->node(index);
    return vx::detail::tagForIndex(node.hash)
        ^ whileUnchanged([&](const HashTable& owner) { return owner.m_keyOrder.tagOf(node.item); });
}

template <class Item, class KeyOrder>
template <class Key>
std::uint32_t HashTable<Item, KeyOrder>::IndexOrder::tagOf(const Wanted<Key>& wanted) const
{
    return vx::detail::tagForIndex(wanted.hash)
        ^ whileUnchanged([&](const HashTable& owner) { return owner.m_keyOrder.tagOf(wanted.key); });
}

template <class Item, class KeyOrder>
int HashTable<Item, KeyOrder>::IndexOrder::compare(Index left, Index right) const
{
    const Node& leftNode = table->node(left);
    const Node& rightNode = table->node(right);
    const int order = vx::detail::compareForIndex(leftNode.hash, rightNode.hash);
    if (order != 0)
        return order;
    return whileUnchanged(
        [&](const HashTable& owner) { return owner.m_keyOrder.compare(leftNode.item, rightNode.item); });
}

template <class Item, class KeyOrder>
template <class Key>
int HashTable<Item, KeyOrder>::IndexOrder::compare(Index left, const Wanted<Key>& right) const
{
    const Node& node = table->node(left);
    const int order = vx::detail::compareForIndex(node.hash, right.hash);
    if (order != 0)
        return order;
    return whileUnchanged([&](const HashTable& owner) { return owner.m_keyOrder.compare(node.item, right.key); });
}

template <class Item, class KeyOrder>
bool HashTable<Item, KeyOrder>::IndexOrder::areOrdered(Index left, Index right) const
{
    return table->m_keyOrder.areOrdered(table->node(left).item, table->node(right).item);
}

template <class Item, class KeyOrder>
template <class Key>
bool HashTable<Item, KeyOrder>::IndexOrder::areOrdered(Index left, const Wanted<Key>& right) const
{
    return table->m_keyOrder.isOrdered(table->node(left).item, right.key);
}

template <class Item, class KeyOrder>
template <class Key>
bool HashTable<Item, KeyOrder>::IndexOrder::mayMeet(Index left, const Wanted<Key>& right) const
{
    const Node& node = table->node(left);
    return node.hash == right.hash && table->m_keyOrder.mayMeet(node.item, right.key);
}

template <class Item, class KeyOrder>
void HashTable<Item, KeyOrder>::addToIndex(Index index) noexcept
{
    const std::size_t bucket = bucketOf(node(index).hash);
    if (m_chains.has(bucket))
        changeIndexes([&](ChainIndex& chains) { chains.prepend(bucket, index); });
    else if (ChainIndex::isLong(index, following()))
        changeIndexes([&](ChainIndex& chains) { chains.complete(bucket, index, following(), IndexOrder {this}); });
}

template <class Item, class KeyOrder>
void HashTable<Item, KeyOrder>::makeRoom()
{
    if (m_size == std::numeric_limits<int>::max())
        throwBadAllocation();
    if (m_free == NONE) {
        m_nodes.emplace_back();
        m_free = static_cast<Index>(m_nodes.size() - 1);
    }
    if (m_order.isFull(m_size))
        rehash();
}

template <class Item, class KeyOrder>
void HashTable<Item, KeyOrder>::rehash()
{
    const Order grown = m_order.grown();
    const auto buckets = static_cast<std::size_t>(grown.capacity());
    std::vector<std::uint8_t, vxsys::Allocator<std::uint8_t>> lengths(buckets);
    Heads heads(buckets, NONE);
    heads.swap(m_heads);
    m_order = grown;
    for (auto head = heads.rbegin(); head != heads.rend(); ++head) {
        for (Index index = *head; index != NONE;) {
            const std::size_t bucket = bucketOf(node(index).hash);
            prepend(std::exchange(index, next(index)));
            if (lengths[bucket] <= ChainIndex::FEW)
                ++lengths[bucket];
        }
    }
    const std::uint32_t expectedCount = m_modificationCount;
    changeIndexes([&](ChainIndex& chains) {
        chains.regroup([this](Index index) { return bucketOf(node(index).hash); });
        for (std::size_t bucket = 0; bucket < lengths.size() && expectedCount == m_modificationCount; ++bucket)
            if (lengths[bucket] > ChainIndex::FEW)
                chains.complete(bucket, m_heads[bucket], following(), IndexOrder {this});
    });
    check(expectedCount);
}

template <class Item, class KeyOrder>
auto HashTable<Item, KeyOrder>::linkTo(Index index) -> Index*
{
    const std::size_t bucket = bucketOf(node(index).hash);
    const Index previous = m_chains.has(bucket) ? removeFromIndex(bucket, index) : NONE;
    Index* link = previous != NONE ? &node(previous).next : &m_heads[bucket];
    while (*link != index)
        link = &node(*link).next;
    return link;
}

template <class Item, class KeyOrder>
auto HashTable<Item, KeyOrder>::removeFromIndex(std::size_t bucket, Index index) -> Index
{
    const std::uint32_t expectedCount = m_modificationCount;
    std::optional<Index> previous;
    changeIndexes([&](ChainIndex& chains) { previous = chains.remove(bucket, index); });
    check(expectedCount);
    return previous.value_or(NONE);
}

} // namespace vx::collections::detail
