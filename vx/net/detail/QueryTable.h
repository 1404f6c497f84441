#pragma once

#include "vx/String.h"
#include "vx/detail/HashOrder.h"

#include <cstdint>
#include <map>
#include <vector>

namespace vx::net::detail {

/// The parameters of a query, in the order of a hash map. Look-ups use a tree instead: the hash covers only a part of a
/// key, and an attacker can choose keys that all have the same one.
class QueryTable {
public:
    bool isEmpty() const noexcept { return m_values.empty(); }

    /// Null if there is none.
    const String* get(const String& key) const;
    /// A key that is there keeps its spelling. Shares the buffers of both texts.
    void put(const String& key, const String& value);
    void remove(const String& key);
    /// Keeps the capacity.
    void clear() noexcept { m_values.clear(); }

    /// Calls `take(key, value)` for each.
    template <class Take>
    void forEach(Take take)
    {
        for (const Place& place : inOrder())
            take(place.pair->first.key.view(), place.pair->second.text.view());
    }

private:
    struct Name {
        explicit Name(const String& text);
        bool operator<(const Name& other) const
        {
            return hash != other.hash ? hash < other.hash : key.compare(other.key, true) < 0;
        }

        std::uint32_t hash;
        String key;
    };
    struct Value {
        String text;
        std::uint64_t rank = 0; ///< the entry with the highest rank is the head of its bucket's chain
    };
    using Values = std::map<Name, Value>;
    struct Place {
        std::uint32_t bucket;
        std::uint64_t rank;
        Values::iterator pair;
    };

    /// From the last bucket down, each chain from its head.
    std::vector<Place> inOrder();
    void grow();

    Values m_values;
    vx::detail::HashOrder<> m_order;
    std::uint64_t m_highestRank = 0;
};

} // namespace vx::net::detail
