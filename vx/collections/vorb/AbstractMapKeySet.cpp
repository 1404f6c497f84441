#include "vx/collections/vorb/AbstractMapKeySet.h"

#include "vx/collections/vorb/detail/EntryPartIterator.h"
#include "vx/detail/Hidden.h"

namespace vx::collections::vorb {

class VX_HIDDEN AbstractMapKeySet::KeySetIterator : public detail::EntryPartIterator<&MapEntry::getKey> {
public:
    using EntryPartIterator::EntryPartIterator;
};

AbstractMapKeySet::AbstractMapKeySet(AbstractMap* map)
    : AbstractSet(map->getKeyComparator())
    , m_map(map)
{
}

AbstractMapKeySet::~AbstractMapKeySet() noexcept(false) = default;

bool AbstractMapKeySet::contains(const IVXUnknown* element) const
{
    return m_map->containsKey(element);
}

Reference<Iterator> AbstractMapKeySet::createIterator()
{
    return new KeySetIterator(m_map->createEntrySet()->createIterator());
}

Reference<ConstIterator> AbstractMapKeySet::createConstIterator() const
{
    return new KeySetIterator(m_map->createEntrySet()->createIterator());
}

int AbstractMapKeySet::getSize() const
{
    return m_map->getSize();
}

} // namespace vx::collections::vorb
