#include "vx/collections/vorb/HashMapEntrySet.h"

#include "vx/collections/vorb/HashMapIterator.h"

namespace vx::collections::vorb {

HashMapEntrySet::HashMapEntrySet(HashMap* map)
    : m_map(map)
{
}

HashMapEntrySet::~HashMapEntrySet() noexcept(false) = default;

bool HashMapEntrySet::contains(const IVXUnknown* element) const
{
    return m_map->containsEntry(element);
}

Reference<Iterator> HashMapEntrySet::createIterator()
{
    return new HashMapIterator(m_map.get(), HashMapIterator::ENTRIES);
}

Reference<ConstIterator> HashMapEntrySet::createConstIterator() const
{
    return new HashMapIterator(m_map.get(), HashMapIterator::ENTRIES);
}

int HashMapEntrySet::getSize() const
{
    return m_map->getSize();
}

} // namespace vx::collections::vorb
