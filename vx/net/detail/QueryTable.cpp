#include "vx/net/detail/QueryTable.h"

namespace vx::net::detail {

const String* QueryTable::get(const QueryKey& key) const
{
    const auto found = m_values.find(Name(key));
    return found != m_values.end() ? &found->second.text : nullptr;
}

void QueryTable::put(const QueryKey& key, const String& value)
{
    const auto [pair, isNew] = m_values.try_emplace(Name(key));
    if (isNew) {
        const std::uint32_t hash = pair->first.hash;
        try {
            m_order.insert(hash, pair);
        } catch (...) {
            m_values.erase(pair);
            throw;
        }
        pair->second.place = m_order.head(static_cast<int>(hash % static_cast<std::uint32_t>(m_order.capacity())));
    }
    pair->second.text = value;
}

void QueryTable::remove(const QueryKey& key)
{
    const auto found = m_values.find(Name(key));
    if (found == m_values.end())
        return;
    m_order.remove(found->second.place);
    m_values.erase(found);
}

} // namespace vx::net::detail
