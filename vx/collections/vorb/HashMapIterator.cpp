#include "vx/collections/vorb/HashMapIterator.h"

#include "vx/Exceptions.h"
#include "vx/collections/detail/Failures.h"

#include <algorithm>
#include <bit>
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
        const int before = std::exchange(m_bucket, std::max(chain, 0));
        if (m_bucket / HashMap::Table::GROUP != before / HashMap::Table::GROUP)
            prefetch();
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
    const HashMap::Table& table = m_map->m_table;
    const int end = m_bucket / HashMap::Table::GROUP * HashMap::Table::GROUP;
    if (end == 0)
        return;
    const int first = end - HashMap::Table::GROUP;
    table.prefetchHeads(first - HashMap::Table::GROUP);
    for (std::uint32_t chains = table.chainsOf(first); chains != 0; chains &= chains - 1) {
        const int bucket = end - 1 - std::countr_zero(chains);
        for (HashMap::Index index = table.head(bucket); index != HashMap::NONE; index = table.next(index))
            table.item(index).prefetch();
    }
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
