#include "vx/collections/vorb/HashMapIterator.h"

#include "vx/Exceptions.h"
#include "vx/collections/detail/Failures.h"

#include <utility>

namespace vx::collections::vorb {

HashMapIterator::HashMapIterator(HashMap* map, Kind kind)
    : m_map(map)
    , m_expectedCount(map->m_modificationCount)
    , m_kind(kind)
    , m_bucket(map->m_table.capacity())
{
}

HashMapIterator::~HashMapIterator() noexcept(false) = default;

bool HashMapIterator::hasNext()
{
    if (m_next == HashMap::NONE) {
        const int chain = m_map->m_table.chainBelow(m_bucket);
        while (m_bucket > 0 && m_bucket > chain) {
            --m_bucket;
            prefetch();
        }
        if (chain >= 0)
            m_next = m_map->m_table.head(chain);
    }
    return m_next != HashMap::NONE;
}

Reference<IVXUnknown> HashMapIterator::next()
{
    m_map->check(m_expectedCount);
    if (!hasNext())
        collections::detail::throwAtEnd();
    Reference<IVXUnknown> result = part(m_next);
    m_last = std::exchange(m_next, m_map->m_table.next(m_next));
    return result;
}

void HashMapIterator::remove()
{
    m_map->check(m_expectedCount);
    if (m_last == HashMap::NONE)
        throw IllegalStateException();
    ++m_expectedCount; // before anything is released: a destructor may use this iterator
    m_map->removeItem(std::exchange(m_last, HashMap::NONE));
}

void HashMapIterator::prefetch() const noexcept
{
    constexpr int AHEAD = 16; // buckets
    if (m_bucket < AHEAD)
        return;
    const HashMap::Table& table = m_map->m_table;
    for (HashMap::Index index = table.head(m_bucket - AHEAD); index != HashMap::NONE; index = table.next(index))
        table.item(index).prefetch();
}

Reference<IVXUnknown> HashMapIterator::part(HashMap::Index index) const
{
    const HashMap::Item& item = m_map->m_table.item(index);
    switch (m_kind) {
    case KEYS:
        return item.key();
    case VALUES:
        return item.value();
    default:
        return item.entry()->GetUnknown();
    }
}

} // namespace vx::collections::vorb
