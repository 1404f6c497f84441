#include "vx/collections/vorb/AbstractMapValueCollection.h"

#include "vx/collections/vorb/detail/EntryPartIterator.h"
#include "vx/detail/Hidden.h"

namespace vx::collections::vorb {

class VX_HIDDEN AbstractMapValueCollection::ValueCollectionIterator
    : public detail::EntryPartIterator<&MapEntry::getValue> {
public:
    using EntryPartIterator::EntryPartIterator;
};

AbstractMapValueCollection::AbstractMapValueCollection(AbstractMap* map)
    : AbstractCollection(map->getValueComparator())
    , m_map(map)
{
}

AbstractMapValueCollection::~AbstractMapValueCollection() noexcept(false) = default;

bool AbstractMapValueCollection::contains(const IVXUnknown* element) const
{
    return m_map->containsValue(element);
}

Reference<Iterator> AbstractMapValueCollection::createIterator()
{
    return new ValueCollectionIterator(m_map->createEntrySet()->createIterator());
}

Reference<ConstIterator> AbstractMapValueCollection::createConstIterator() const
{
    return new ValueCollectionIterator(m_map->createEntrySet()->createIterator());
}

int AbstractMapValueCollection::getSize() const
{
    return m_map->getSize();
}

} // namespace vx::collections::vorb
