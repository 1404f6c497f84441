#include "vx/collections/vorb/AbstractCollection.h"

#include "vx/Exceptions.h"
#include "vx/collections/DefaultComparator.h"
#include "vx/collections/vorb/detail/Compare.h"

#include <limits>

namespace vx::collections::vorb {

AbstractCollection::AbstractCollection()
    : m_comparator(collections::GetDefaultComparator())
{
}

AbstractCollection::AbstractCollection(const IVXComparator* comparator)
    : m_comparator(comparator)
{
}

AbstractCollection::AbstractCollection(const AbstractCollection& other)
    : Collection()
    , Object()
    , m_comparator(other.m_comparator)
{
}

AbstractCollection::~AbstractCollection() noexcept(false) = default;

bool AbstractCollection::add(IVXUnknown* element)
{
    const Reference<IVXUnknown> counted(element); // a new object is released
    throw UnsupportedOperationException();
}

bool AbstractCollection::addAll(const Collection& other)
{
    // An iterator reaches appended elements too, so that a collection that is added to itself would never end.
    int left = &other == this ? getSize() : std::numeric_limits<int>::max();
    bool changed = false;
    const Reference<ConstIterator> elements = other.createConstIterator();
    while (left > 0 && elements->hasNext()) {
        if (add(elements->next().get()))
            changed = true;
        --left;
    }
    return changed;
}

void AbstractCollection::clear()
{
    const Reference<Iterator> elements = createIterator();
    while (elements->hasNext()) {
        elements->next();
        elements->remove();
    }
}

bool AbstractCollection::contains(const IVXUnknown* element) const
{
    const Reference<ConstIterator> elements = createConstIterator();
    while (elements->hasNext())
        if (elementsEqual(elements->next().get(), element))
            return true;
    return false;
}

bool AbstractCollection::containsAll(const Collection& other) const
{
    const Reference<ConstIterator> elements = other.createConstIterator();
    while (elements->hasNext())
        if (!contains(elements->next().get()))
            return false;
    return true;
}

bool AbstractCollection::remove(const IVXUnknown* element)
{
    const Reference<Iterator> elements = createIterator();
    while (elements->hasNext())
        if (elementsEqual(elements->next().get(), element)) {
            elements->remove();
            return true;
        }
    return false;
}

bool AbstractCollection::removeAll(const Collection& other)
{
    bool changed = false;
    const Reference<ConstIterator> elements = other.createConstIterator();
    while (elements->hasNext())
        if (remove(elements->next().get()))
            changed = true;
    return changed;
}

bool AbstractCollection::retainAll(const Collection& other)
{
    bool changed = false;
    const Reference<Iterator> elements = createIterator();
    while (elements->hasNext())
        if (!other.contains(elements->next().get())) {
            elements->remove();
            changed = true;
        }
    return changed;
}

int AbstractCollection::compareTo(const Object& other) const
{
    return Object::compareTo(other);
}

bool AbstractCollection::equals(const Object& other) const
{
    return Object::equals(other);
}

std::uint32_t AbstractCollection::hashCode() const
{
    return Object::hashCode();
}

bool AbstractCollection::elementsEqual(const IVXUnknown* stored, const IVXUnknown* other) const
{
    return detail::compareElements(*m_comparator, stored, other) == 0;
}

} // namespace vx::collections::vorb
