#pragma once

#include "vx/collections/HashTable.h"
#include "vx/net/QueryKey.h"

#include <cstdint>
#include <map>

namespace vx::net::detail {

inline constexpr int QUERY_BUCKETS = 101;
inline constexpr float QUERY_LOAD = 0.75F;

/// The parameters of a query, which are walked through in the order of a hash map. They are found in the order of their
/// text: the hash looks at a part of a key only, and whoever writes the keys may have made it the same for all of them.
class QueryTable {
public:
    bool isEmpty() const noexcept { return m_values.empty(); }

    /// Null where there is none.
    const String* get(const QueryKey& key) const;
    /// A key that is there stays as it is spelled.
    void put(const QueryKey& key, const String& value);
    void remove(const QueryKey& key);

    /// Calls `take(key, value)` for each.
    template <class Take>
    void forEach(Take take) const
    {
        int bucket = m_order.capacity();
        for (Order::Index place; (place = m_order.headBelow(bucket)) != Order::NONE;) {
            for (; place != Order::NONE; place = m_order.next(place))
                take(m_order.item(place)->first.key, m_order.item(place)->second.text);
        }
    }

private:
    struct Name {
        explicit Name(const QueryKey& text)
            : hash(text.hashCode())
            , key(text)
        {
        }
        bool operator<(const Name& other) const
        {
            return hash != other.hash ? hash < other.hash : key.compareTo(other.key) < 0;
        }

        std::uint32_t hash; // taken first: the copy has the lower case then
        QueryKey key;
    };
    struct Value {
        String text;
        std::int32_t place = -1; ///< in the order
    };
    using Values = std::map<Name, Value>;
    using Order = collections::detail::HashTable<Values::iterator>;

    Values m_values;
    Order m_order {QUERY_BUCKETS, QUERY_LOAD};
};

} // namespace vx::net::detail
