#pragma once

#include "vxsys/Memory.h"

#include <cstddef>
#include <cstring>
#include <functional>
#include <map>
#include <optional>
#include <string_view>
#include <utility>

namespace vx::detail {

/// Ordered indexes of the long chains of a hash table, by bucket. An attacker can choose all keys so that they share one
/// bucket and so one long chain. With an index, an entry of it is found, added and removed in logarithmic time. The chain
/// itself, and therefore the order of iteration, stays as it is.
///
/// `Entry` names an entry of the table, and `NONE` stands for the end of a chain. `Order` compares two entries by hash, then
/// by key, then by the entries themselves, and an entry with what a caller of `find` wants. If it contradicts itself because
/// a caller changed a key that is in the table, the chain loses its index. It also does if memory is exhausted. `has` says
/// whether a chain has one.
template <class Entry, Entry NONE, class Order>
class ChainIndex {
public:
    /// The entries of a chain that need no index.
    static constexpr int FEW = 12;
    /// The entries that a search looks at before it asks for the index.
    static constexpr int FIRST = 3;

    bool isEmpty() const noexcept { return m_chains.empty(); }
    bool has(std::size_t bucket) const noexcept { return !m_chains.empty() && m_chains.contains(bucket); }

    /// Whether a chain from `head` on has more than FEW entries.
    template <class Next>
    static bool isLong(Entry head, Next next) noexcept;

    /// Makes the index of the chain from `head` on.
    template <class Next>
    void build(std::size_t bucket, Entry head, Next next, const Order& order) noexcept;

    /// Adds a new head to the chain.
    void prepend(std::size_t bucket, Entry head) noexcept;

    /// Removes an entry. Returns the entry before it in its chain, NONE for the head.
    std::optional<Entry> remove(std::size_t bucket, Entry entry) noexcept;

    /// The entry that is equal to `wanted`, NONE if there is none.
    template <class Wanted>
    Entry find(std::size_t bucket, const Wanted& wanted) const;

    void drop(std::size_t bucket) noexcept
    {
        if (const auto place = m_chains.find(bucket); place != m_chains.end())
            m_chains.erase(place);
    }
    void clear() noexcept { m_chains.clear(); }

private:
    template <class Key, class Value, class Compare>
    using Tree = std::map<Key, Value, Compare, vxsys::Allocator<std::pair<const Key, Value>>>;

    /// An entry with its neighbours in the chain.
    struct Place {
        Entry entry;
        Place* previous;
        Place* next;
    };
    using Places = Tree<Entry, Place, Order>;
    struct Chain {
        explicit Chain(const Order& order)
            : places(order)
        {
        }

        Places places;
        Place* head = nullptr;
    };

    Tree<std::size_t, Chain, std::less<>> m_chains;
};

template <class Entry, Entry NONE, class Order>
template <class Next>
bool ChainIndex<Entry, NONE, Order>::isLong(Entry head, Next next) noexcept
{
    int length = 0;
    for (; head != NONE && length <= FEW; head = next(head))
        ++length;
    return length > FEW;
}

template <class Entry, Entry NONE, class Order>
template <class Next>
void ChainIndex<Entry, NONE, Order>::build(std::size_t bucket, Entry head, Next next, const Order& order) noexcept
{
    try {
        Chain& chain = m_chains.try_emplace(bucket, order).first->second;
        Place* previous = nullptr;
        for (Entry entry = head; entry != NONE; entry = next(entry)) {
            Place* place = &chain.places.try_emplace(entry, Place {entry, previous, nullptr}).first->second;
            (previous != nullptr ? previous->next : chain.head) = place;
            previous = place;
        }
    } catch (...) {
        drop(bucket);
    }
}

template <class Entry, Entry NONE, class Order>
void ChainIndex<Entry, NONE, Order>::prepend(std::size_t bucket, Entry head) noexcept
{
    try {
        Chain& chain = m_chains.find(bucket)->second;
        Place* place = &chain.places.try_emplace(head, Place {head, nullptr, chain.head}).first->second;
        chain.head->previous = place;
        chain.head = place;
    } catch (...) {
        drop(bucket);
    }
}

template <class Entry, Entry NONE, class Order>
std::optional<Entry> ChainIndex<Entry, NONE, Order>::remove(std::size_t bucket, Entry entry) noexcept
{
    try {
        Chain& chain = m_chains.find(bucket)->second;
        if (const auto found = chain.places.find(entry); found != chain.places.end()) {
            Place* const previous = found->second.previous;
            Place* const next = found->second.next;
            (previous != nullptr ? previous->next : chain.head) = next;
            if (next != nullptr)
                next->previous = previous;
            chain.places.erase(found);
            if (chain.head == nullptr)
                drop(bucket);
            return previous != nullptr ? previous->entry : NONE;
        }
    } catch (...) {
    }
    drop(bucket);
    return std::nullopt;
}

template <class Entry, Entry NONE, class Order>
template <class Wanted>
Entry ChainIndex<Entry, NONE, Order>::find(std::size_t bucket, const Wanted& wanted) const
{
    const Places& places = m_chains.find(bucket)->second.places;
    const auto found = places.find(wanted);
    return found != places.end() ? found->first : NONE;
}

/// Below, equal to or above 0: an order of texts for indexes only, shorter ones first.
inline int compareForIndex(std::u16string_view left, std::u16string_view right) noexcept
{
    if (left.size() != right.size())
        return left.size() < right.size() ? -1 : 1;
    return left.empty() ? 0 : std::memcmp(left.data(), right.data(), left.size() * sizeof(char16_t));
}

} // namespace vx::detail
