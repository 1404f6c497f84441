#include "vx/collections/vorb/AbstractMap.h"

#include "vx/Exceptions.h"
#include "vx/collections/DefaultComparator.h"
#include "vx/collections/vorb/AbstractMapKeySet.h"
#include "vx/collections/vorb/AbstractMapValueCollection.h"
#include "vx/collections/vorb/detail/Compare.h"

namespace vx::collections::vorb {

AbstractMap::AbstractMap()
    : m_keyComparator(collections::GetDefaultComparator())
    , m_valueComparator(m_keyComparator)
{
}

AbstractMap::AbstractMap(const IVXComparator* key, const IVXComparator* value)
    : m_keyComparator(key)
    , m_valueComparator(value)
{
}

AbstractMap::AbstractMap(const AbstractMap& other)
    : Map()
    , Object()
    , m_keyComparator(other.m_keyComparator)
    , m_valueComparator(other.m_valueComparator)
{
}

AbstractMap::~AbstractMap() noexcept(false) = default;

void AbstractMap::clear()
{
    createEntrySet()->clear();
}

bool AbstractMap::containsKey(const IVXUnknown* key) const
{
    for (const Reference<MapEntry>& entry : *this)
        if (keysEqual(entry->getKey().get(), key))
            return true;
    return false;
}

bool AbstractMap::containsValue(const IVXUnknown* value) const
{
    for (const Reference<MapEntry>& entry : *this)
        if (valuesEqual(entry->getValue().get(), value))
            return true;
    return false;
}

Reference<const Set> AbstractMap::createKeySet() const
{
    return new AbstractMapKeySet(const_cast<AbstractMap*>(this));
}

Reference<Set> AbstractMap::createKeySet()
{
    return new AbstractMapKeySet(this);
}

Reference<const Collection> AbstractMap::createValueCollection() const
{
    return new AbstractMapValueCollection(const_cast<AbstractMap*>(this));
}

Reference<Collection> AbstractMap::createValueCollection()
{
    return new AbstractMapValueCollection(this);
}

Reference<IVXUnknown> AbstractMap::get(const IVXUnknown* key) const
{
    for (const Reference<MapEntry>& entry : *this)
        if (keysEqual(entry->getKey().get(), key))
            return entry->getValue();
    return nullptr;
}

int AbstractMap::getSize() const
{
    return createEntrySet()->getSize();
}

Reference<IVXUnknown> AbstractMap::put(IVXUnknown* key, IVXUnknown* value)
{
    const Reference<IVXUnknown> keyKept(key); // new objects are released
    const Reference<IVXUnknown> valueKept(value);
    throw UnsupportedOperationException();
}

void AbstractMap::putAll(const Map& other)
{
    for (const Reference<MapEntry>& entry : other)
        put(entry->getKey().get(), entry->getValue().get());
}

Reference<IVXUnknown> AbstractMap::remove(const IVXUnknown* key)
{
    Reference<IVXUnknown> value;
    const Reference<Iterator> entries = createEntrySet()->createIterator();
    while (entries->hasNext()) {
        const Reference<MapEntry> entry = MapEntry::of(entries->next());
        if (!keysEqual(entry->getKey().get(), key))
            continue;
        value = entry->getValue();
        entries->remove();
    }
    return value;
}

int AbstractMap::compareTo(const Object& other) const
{
    if (&other == this)
        return 0;
    const auto* map = dynamic_cast<const Map*>(&other);
    if (map == nullptr)
        throw CastFailedException();
    return compareToMap(*map);
}

bool AbstractMap::equals(const Object& other) const
{
    if (&other == this)
        return true;
    const auto* map = dynamic_cast<const Map*>(&other);
    return map != nullptr && map->getSize() == getSize() && compareToMap(*map) == 0;
}

std::uint32_t AbstractMap::hashCode() const
{
    std::uint32_t hash = 0;
    for (const Reference<MapEntry>& entry : *this)
        hash += entry->hashCode();
    return hash;
}

int AbstractMap::compareToMap(const Map& other) const
{
    for (const Reference<MapEntry>& entry : *this) {
        const Reference<IVXUnknown> key = entry->getKey();
        const Reference<IVXUnknown> value = entry->getValue();
        if (value == nullptr) { // null may mean a missing key or a null value
            if (!other.containsKey(key.get()))
                return 1;
            if (other.get(key.get()) != nullptr)
                return -1;
        } else if (const int order
            = detail::compareElements(*m_valueComparator, value.get(), other.get(key.get()).get())) {
            return order;
        }
    }
    return getSize() - other.getSize();
}

bool AbstractMap::keysEqual(const IVXUnknown* stored, const IVXUnknown* other) const
{
    return detail::compareElements(*m_keyComparator, stored, other) == 0;
}

bool AbstractMap::valuesEqual(const IVXUnknown* stored, const IVXUnknown* other) const
{
    return detail::compareElements(*m_valueComparator, stored, other) == 0;
}

} // namespace vx::collections::vorb
