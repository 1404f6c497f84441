#include "vx/net/detail/QueryTable.h"

#include "vx/detail/TextHash.h"
#include "vx/net/QueryKey.h"

#include <algorithm>
#include <tuple>

namespace vx::net::detail {

namespace {

/// The hash of a QueryKey, whose lower-case form ends at a null unit.
std::uint32_t hashOf(std::u16string_view key)
{
    if (key.find(u'\0') != key.npos)
        return QueryKey(String(key)).hashCode();
    return vx::detail::hashText(key.data(), static_cast<int>(key.size()), true);
}

} // namespace

QueryTable::Name::Name(const String& text)
    : hash(hashOf(text.view()))
    , key(text)
{
}

const String* QueryTable::get(const String& key) const
{
    const auto found = m_values.find(Name(key));
    return found != m_values.end() ? &found->second.text : nullptr;
}

void QueryTable::put(const String& key, const String& value)
{
    const auto [pair, isNew] = m_values.try_emplace(Name(key));
    if (isNew) {
        try {
            if (m_order.isFull(static_cast<int>(m_values.size()) - 1))
                grow();
        } catch (...) {
            m_values.erase(pair);
            throw;
        }
        pair->second.rank = ++m_highestRank;
    }
    pair->second.text.setAddRef(value);
}

void QueryTable::remove(const String& key)
{
    m_values.erase(Name(key));
}

std::vector<QueryTable::Place> QueryTable::inOrder()
{
    std::vector<Place> places;
    places.reserve(m_values.size());
    for (auto pair = m_values.begin(); pair != m_values.end(); ++pair)
        places.push_back({m_order.bucketOf(pair->first.hash), pair->second.rank, pair});
    std::sort(places.begin(), places.end(), [](const Place& left, const Place& right) {
        return std::tie(left.bucket, left.rank) > std::tie(right.bucket, right.rank);
    });
    return places;
}

void QueryTable::grow()
{
    for (const Place& place : inOrder())
        place.pair->second.rank = ++m_highestRank;
    m_order = m_order.grown();
}

} // namespace vx::net::detail
