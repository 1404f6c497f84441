#pragma once

#include "vx/detail/MixedHash.h"
#include "vxsys/Memory.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <list>
#include <map>
#include <optional>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

namespace vx::detail {

/// Indexes of the long chains of a hash table, by bucket. An attacker can choose all keys so that they share one bucket and
/// so one long chain. With an index, an entry of it is found, added and removed in logarithmic time. The chain itself, and
/// therefore the order of iteration, stays as it is.
///
/// `Entry` names an entry of the table, and `NONE` stands for the end of a chain. If `Order` contradicts itself because a
/// caller changed a key that is in the table, the chain loses its index. It also does if memory is exhausted, or if more
/// than a few entries cannot be compared with the others. `has` says whether a chain has one. `Order` tells about entries,
/// and about what a caller of `find` wants:
/// - `tagOf(entry)`, `tagOf(wanted)`: a number that is equal for equal keys. Different numbers for different keys make the
///   index fast; equal ones leave it logarithmic, so that an attacker gains nothing by them.
/// - `compare(entry, entry)`, `compare(entry, wanted)`: below, equal to or above 0, by hash and then by key.
/// - `areOrdered(entry, entry)`, `areOrdered(entry, wanted)`: whether the two keys can be compared.
/// - `mayMeet(entry, wanted)`: for keys that cannot, whether a search through the chain may depend on that entry.
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

    /// Takes all entries of the chain from `head` on into its index, which is made if there is none.
    template <class Next>
    void complete(std::size_t bucket, Entry head, Next next, const Order& order) noexcept;

    /// Adds a new head to the chain.
    void prepend(std::size_t bucket, Entry head) noexcept;

    /// Removes an entry. Returns the entry before it in its chain, NONE for the head.
    std::optional<Entry> remove(std::size_t bucket, Entry entry) noexcept;

    /// The entry that is equal to `wanted`, NONE if there is none. Nothing if only a search through the chain can tell.
    template <class Wanted>
    std::optional<Entry> find(std::size_t bucket, const Wanted& wanted) const;

    /// After all chains were reversed and `bucketOf` gave each entry its new bucket. Keeps the index of each chain that
    /// stayed together, though entries of other chains may now be missing in it. The other indexes are dropped.
    template <class BucketOf>
    void regroup(BucketOf bucketOf) noexcept;

    void drop(std::size_t bucket) noexcept
    {
        if (const auto place = m_chains.find(bucket); place != m_chains.end())
            m_chains.erase(place);
    }
    void clear() noexcept { m_chains.clear(); }

private:
    /// The strangers that a chain with an index may have: entries that cannot be compared with the others.
    static constexpr int MOST_STRANGERS = FEW / 2;
    /// The other entries that a chain with an index has at least.
    static constexpr int LEAST = FEW - MOST_STRANGERS;

    /// An entry with its neighbours in the chain.
    struct Place {
        std::uint32_t tag;
        Entry entry;
        mutable const Place* previous = nullptr;
        mutable const Place* next = nullptr;
    };
    template <class Wanted>
    struct Tagged {
        std::uint32_t tag;
        const Wanted& wanted;
    };
    /// By tag, by `Order`, then by entry.
    struct PlaceOrder {
        using is_transparent = void;

        bool operator()(const Place& left, const Place& right) const
        {
            if (left.tag != right.tag)
                return left.tag < right.tag;
            const int result = left.entry != right.entry ? order.compare(left.entry, right.entry) : 0;
            return result != 0 ? result < 0 : std::less<>()(left.entry, right.entry);
        }
        template <class Wanted>
        bool operator()(const Place& left, const Tagged<Wanted>& right) const
        {
            return left.tag != right.tag ? left.tag < right.tag : order.compare(left.entry, right.wanted) < 0;
        }
        template <class Wanted>
        bool operator()(const Tagged<Wanted>& left, const Place& right) const
        {
            return left.tag != right.tag ? left.tag < right.tag : order.compare(right.entry, left.wanted) > 0;
        }

        Order order;
    };
    using Places = std::set<Place, PlaceOrder, vxsys::Allocator<Place>>;

    /// The places, in slots by the first bits of their tags. A tree of the few places of a slot takes fewer steps through
    /// memory than one of all places.
    class Chain {
    public:
        explicit Chain(const Order& order)
            : m_order(order)
            , m_slots(1, Places({order}))
        {
        }

        /// Without strangers.
        int size() const noexcept { return m_size; }
        const Place* head() const noexcept { return m_head; }

        /// Whether `find` gives what a search through the chain would give.
        template <class Wanted>
        bool canFind(const Wanted& wanted) const;
        template <class Wanted>
        const Place* find(const Wanted& wanted) const;
        /// Adds an entry after `previous`, or as the head if that is null. Returns null if it is one stranger too many.
        const Place* insert(Entry entry, const Place* previous);
        /// Returns the place before it, nothing if the entry is not found.
        std::optional<const Place*> remove(Entry entry);
        /// False if there is an entry of another bucket.
        template <class BucketOf>
        bool reverse(std::size_t bucket, BucketOf bucketOf) noexcept;

    private:
        static constexpr int TAG_BITS = 32;
        static constexpr int FEW_OF_SLOT = 2;

        std::size_t slotOf(std::uint32_t tag) const noexcept { return std::uint64_t {tag} >> (TAG_BITS - m_slotBits); }
        void link(const Place* left, const Place* right) noexcept
        {
            (left != nullptr ? left->next : m_head) = right;
            if (right != nullptr)
                right->previous = left;
        }
        void grow();
        auto strangerOf(Entry entry) const noexcept { return std::ranges::find(m_strangers, entry, &Place::entry); }
        /// The first entry that is not a stranger, null if there is none.
        const Place* known() const noexcept
        {
            const Place* place = m_head;
            while (place != nullptr && strangerOf(place->entry) != m_strangers.end())
                place = place->next;
            return place;
        }

        Order m_order;
        std::list<Place, vxsys::Allocator<Place>> m_strangers;
        std::vector<Places, vxsys::Allocator<Places>> m_slots;
        int m_slotBits = 0;
        int m_size = 0;
        const Place* m_head = nullptr;
    };

    template <class Next>
    static bool hasFewStrangers(Entry head, Next next, const Order& order);

    using Chains = std::map<std::size_t, Chain, std::less<>, vxsys::Allocator<std::pair<const std::size_t, Chain>>>;

    Chains m_chains;
};

template <class Entry, Entry NONE, class Order>
template <class Wanted>
bool ChainIndex<Entry, NONE, Order>::Chain::canFind(const Wanted& wanted) const
{
    const Place* const own = known();
    return own != nullptr && m_order.areOrdered(own->entry, wanted)
        && std::ranges::none_of(m_strangers, [&](const Place& place) { return m_order.mayMeet(place.entry, wanted); });
}

template <class Entry, Entry NONE, class Order>
template <class Wanted>
auto ChainIndex<Entry, NONE, Order>::Chain::find(const Wanted& wanted) const -> const Place*
{
    const Tagged<Wanted> tagged {m_order.tagOf(wanted), wanted};
    const Places& places = m_slots[slotOf(tagged.tag)];
    const auto found = places.find(tagged);
    return found != places.end() ? &*found : nullptr;
}

template <class Entry, Entry NONE, class Order>
auto ChainIndex<Entry, NONE, Order>::Chain::insert(Entry entry, const Place* previous) -> const Place*
{
    const Place* const own = known();
    const Place* added = nullptr;
    if (m_order.areOrdered(own != nullptr ? own->entry : entry, entry)) {
        if (m_size / FEW_OF_SLOT >= static_cast<int>(m_slots.size()) && m_slotBits < TAG_BITS)
            grow();
        const Place place {m_order.tagOf(entry), entry};
        added = &*m_slots[slotOf(place.tag)].insert(place).first;
        ++m_size;
    } else {
        if (m_strangers.size() == MOST_STRANGERS)
            return nullptr;
        added = &m_strangers.emplace_front(Place {0, entry});
    }
    const Place* const next = previous != nullptr ? previous->next : m_head;
    link(previous, added);
    link(added, next);
    return added;
}

template <class Entry, Entry NONE, class Order>
auto ChainIndex<Entry, NONE, Order>::Chain::remove(Entry entry) -> std::optional<const Place*>
{
    const auto unlinked = [this](const Place& place) {
        link(place.previous, place.next);
        return place.previous;
    };
    if (const auto stranger = strangerOf(entry); stranger != m_strangers.end()) {
        const Place* const previous = unlinked(*stranger);
        m_strangers.erase(stranger);
        return previous;
    }
    const Place wanted {m_order.tagOf(entry), entry};
    Places& places = m_slots[slotOf(wanted.tag)];
    const auto found = places.find(wanted);
    if (found == places.end())
        return std::nullopt;
    const Place* const previous = unlinked(*found);
    places.erase(found);
    --m_size;
    return previous;
}

template <class Entry, Entry NONE, class Order>
template <class BucketOf>
bool ChainIndex<Entry, NONE, Order>::Chain::reverse(std::size_t bucket, BucketOf bucketOf) noexcept
{
    for (const Place* place = m_head; place != nullptr; place = place->previous) {
        if (bucketOf(place->entry) != bucket)
            return false;
        std::swap(place->previous, place->next);
        m_head = place;
    }
    return true;
}

template <class Entry, Entry NONE, class Order>
void ChainIndex<Entry, NONE, Order>::Chain::grow()
{
    decltype(m_slots) old(2 * m_slots.size(), Places({m_order}));
    old.swap(m_slots);
    ++m_slotBits;
    for (Places& places : old) {
        while (!places.empty()) {
            Places& target = m_slots[slotOf(places.begin()->tag)];
            target.insert(target.end(), places.extract(places.begin())); // in order
        }
    }
}

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
bool ChainIndex<Entry, NONE, Order>::hasFewStrangers(Entry head, Next next, const Order& order)
{
    Entry known = NONE;
    int strangers = 0;
    for (Entry entry = head; entry != NONE && strangers <= MOST_STRANGERS; entry = next(entry)) {
        if (!order.areOrdered(known != NONE ? known : entry, entry))
            ++strangers;
        else if (known == NONE)
            known = entry;
    }
    return strangers <= MOST_STRANGERS;
}

template <class Entry, Entry NONE, class Order>
template <class Next>
void ChainIndex<Entry, NONE, Order>::complete(std::size_t bucket, Entry head, Next next, const Order& order) noexcept
{
    try {
        auto chain = m_chains.find(bucket);
        if (chain == m_chains.end()) {
            if (!hasFewStrangers(head, next, order))
                return;
            chain = m_chains.try_emplace(bucket, order).first;
        }
        const Place* previous = nullptr;
        for (Entry entry = head; entry != NONE; entry = next(entry)) {
            const Place* const present = previous != nullptr ? previous->next : chain->second.head();
            if (present != nullptr && present->entry == entry)
                previous = present;
            else if ((previous = chain->second.insert(entry, previous)) == nullptr)
                return drop(bucket);
        }
    } catch (...) {
        drop(bucket);
    }
}

template <class Entry, Entry NONE, class Order>
void ChainIndex<Entry, NONE, Order>::prepend(std::size_t bucket, Entry head) noexcept
{
    try {
        if (m_chains.find(bucket)->second.insert(head, nullptr) != nullptr)
            return;
    } catch (...) {
    }
    drop(bucket);
}

template <class Entry, Entry NONE, class Order>
std::optional<Entry> ChainIndex<Entry, NONE, Order>::remove(std::size_t bucket, Entry entry) noexcept
{
    try {
        Chain& chain = m_chains.find(bucket)->second;
        if (const std::optional<const Place*> previous = chain.remove(entry)) {
            const Entry before = *previous != nullptr ? (*previous)->entry : NONE;
            if (chain.size() < LEAST)
                drop(bucket);
            return before;
        }
    } catch (...) {
    }
    drop(bucket);
    return std::nullopt;
}

template <class Entry, Entry NONE, class Order>
template <class Wanted>
[[gnu::noinline]] std::optional<Entry> ChainIndex<Entry, NONE, Order>::find(
    std::size_t bucket, const Wanted& wanted) const
{
    const auto chain = m_chains.find(bucket);
    if (chain == m_chains.end() || !chain->second.canFind(wanted))
        return std::nullopt;
    const Place* const found = chain->second.find(wanted);
    return found != nullptr ? found->entry : NONE;
}

template <class Entry, Entry NONE, class Order>
template <class BucketOf>
void ChainIndex<Entry, NONE, Order>::regroup(BucketOf bucketOf) noexcept
{
    Chains old;
    old.swap(m_chains);
    while (!old.empty()) {
        auto chain = old.extract(old.begin());
        chain.key() = bucketOf(chain.mapped().head()->entry);
        if (chain.mapped().size() > FEW && chain.mapped().reverse(chain.key(), bucketOf))
            m_chains.insert(std::move(chain));
    }
}

/// The tag of a text for indexes only. Unlike the hash, it depends on all units.
inline std::uint32_t tagForIndex(std::u16string_view text) noexcept
{
    return mixedHash(text);
}

/// The tag of a hash for indexes only. Brings differences in the last bits to the first ones.
constexpr std::uint32_t tagForIndex(std::uint32_t hash) noexcept
{
    return hash * 0x9E3779B1; // Fibonacci hashing (D. E. Knuth, The Art of Computer Programming 3, 6.4)
}

constexpr int compareForIndex(std::uint32_t left, std::uint32_t right) noexcept
{
    return left < right ? -1 : left > right ? 1 : 0;
}

/// Below, equal to or above 0: an order of texts for indexes only, shorter ones first.
inline int compareForIndex(std::u16string_view left, std::u16string_view right) noexcept
{
    if (left.size() != right.size())
        return left.size() < right.size() ? -1 : 1;
    return left.empty() ? 0 : std::memcmp(left.data(), right.data(), left.size() * sizeof(char16_t));
}

} // namespace vx::detail
