#pragma once

#include "vx/String.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string_view>
#include <vector>

namespace vx::net::detail {

/// The parameters of a query, which are walked through in the order of a hash map. They are found in the order of their
/// text: the hash looks at a part of a key only, and whoever writes the keys may have made it the same for all of them.
class QueryTable {
public:
    static constexpr std::size_t FIRST_BUCKETS = 101;
    /// The parameters that `buckets` take before there are 2n + 1 of n.
    static constexpr std::size_t thresholdOf(std::size_t buckets) noexcept { return buckets * 3 / 4; }

    bool isEmpty() const noexcept { return m_values.empty(); }

    /// Null where there is none.
    const String* get(const String& key) const;
    /// A key that is there stays as it is spelled. Shares the text of both.
    void put(const String& key, const String& value);
    void remove(const String& key);
    /// Leaves the buckets.
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
        std::uint64_t rank = 0; ///< in the chain of its bucket, which starts with the highest
    };
    using Values = std::map<Name, Value>;
    struct Place {
        std::size_t bucket;
        std::uint64_t rank;
        Values::iterator pair;
    };

    /// From the last bucket down, each chain from its head.
    std::vector<Place> inOrder();
    void grow();

    Values m_values;
    std::size_t m_buckets = FIRST_BUCKETS;
    std::uint64_t m_highestRank = 0;
};

} // namespace vx::net::detail
