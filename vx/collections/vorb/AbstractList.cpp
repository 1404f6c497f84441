#include "vx/collections/vorb/AbstractList.h"

#include "vx/Exceptions.h"
#include "vx/collections/vorb/AbstractListIterator.h"
#include "vx/collections/vorb/AbstractListSubList.h"
#include "vx/collections/vorb/detail/Compare.h"
#include "vx/collections/vorb/detail/Length.h"

namespace vx::collections::vorb {

namespace {

constexpr std::uint32_t HASH_MULTIPLIER = 38;

/// Views and iterators of a constant list cannot change it, because they are returned as const.
AbstractList* behindConstView(const AbstractList* list) noexcept
{
    return const_cast<AbstractList*>(list);
}

} // namespace

AbstractList::AbstractList() = default;

AbstractList::AbstractList(const IVXComparator* comparator)
    : AbstractCollection(comparator)
{
}

AbstractList::AbstractList(const AbstractList& other)
    : Collection()
    , List()
    , AbstractCollection(other)
{
}

AbstractList::~AbstractList() noexcept(false) = default;

bool AbstractList::add(IVXUnknown* element)
{
    const Reference<IVXUnknown> counted(element); // first: a new object is released if the operation fails
    createListIterator(getSize())->add(element);
    return true;
}

Reference<Iterator> AbstractList::createIterator()
{
    return newIterator(0);
}

Reference<ConstIterator> AbstractList::createConstIterator() const
{
    return behindConstView(this)->newIterator(0);
}

bool AbstractList::addAll(int index, const Collection& other)
{
    detail::checkPosition(index, getSize());
    bool changed = false;
    const Reference<ListIterator> place = createListIterator(index);
    const Reference<ConstIterator> elements = other.createConstIterator();
    while (elements->hasNext()) {
        place->add(elements->next().get());
        changed = true;
    }
    return changed;
}

Reference<ListIterator> AbstractList::createListIterator(int index)
{
    detail::checkPosition(index, getSize());
    return newIterator(index);
}

Reference<ConstListIterator> AbstractList::createConstListIterator(int index) const
{
    detail::checkPosition(index, getSize());
    return behindConstView(this)->newIterator(index);
}

Reference<List> AbstractList::createSubList(int from, int to)
{
    if (from < 0 || to > getSize() || to < from)
        throwDuring(u"take",
            String::valueOf(from) + u" to " + String::valueOf(to) + u" of a list of " + String::valueOf(getSize()),
            RangeErrorException(), RESULT_INVALID_ARGUMENT);
    return new AbstractListSubList(this, from, to);
}

Reference<const List> AbstractList::createSubList(int from, int to) const
{
    return behindConstView(this)->createSubList(from, to);
}

int AbstractList::indexOf(const IVXUnknown* element) const
{
    const Reference<ConstListIterator> elements = createConstListIterator(0);
    while (elements->hasNext())
        if (elementsEqual(elements->next().get(), element))
            return elements->previousIndex();
    return -1;
}

int AbstractList::lastIndexOf(const IVXUnknown* element) const
{
    const Reference<ConstListIterator> elements = createConstListIterator(getSize());
    while (elements->hasPrevious())
        if (elementsEqual(elements->previous().get(), element))
            return elements->nextIndex();
    return -1;
}

int AbstractList::compareTo(const Object& other) const
{
    if (&other == this)
        return 0;
    const auto* list = dynamic_cast<const List*>(&other);
    if (list == nullptr)
        throw CastFailedException();
    return compareToList(*list);
}

bool AbstractList::equals(const Object& other) const
{
    if (&other == this)
        return true;
    const auto* list = dynamic_cast<const List*>(&other);
    return list != nullptr && list->getSize() == getSize() && compareToList(*list) == 0;
}

std::uint32_t AbstractList::hashCode() const
{
    std::uint32_t hash = 1;
    const Reference<ConstIterator> elements = createConstIterator();
    while (elements->hasNext())
        hash = hash * HASH_MULTIPLIER + detail::hashElement(*getComparator(), elements->next().get());
    return hash;
}

int AbstractList::compareToList(const List& other) const
{
    const Reference<ConstIterator> ours = createConstIterator();
    const Reference<ConstIterator> theirs = other.createConstIterator();
    while (ours->hasNext() && theirs->hasNext()) {
        const Reference<IVXUnknown> left = ours->next();
        const Reference<IVXUnknown> right = theirs->next();
        if (const int order = detail::compareElements(*getComparator(), left.get(), right.get()))
            return order;
    }
    if (ours->hasNext())
        return 1;
    return theirs->hasNext() ? -1 : 0;
}

AbstractListIterator* AbstractList::newIterator(int index)
{
    return new AbstractListIterator(this, index);
}

} // namespace vx::collections::vorb
