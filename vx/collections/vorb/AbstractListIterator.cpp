#include "vx/collections/vorb/AbstractListIterator.h"

#include "vx/Exceptions.h"
#include "vx/collections/detail/Failures.h"

namespace vx::collections::vorb {

AbstractListIterator::AbstractListIterator(AbstractList* list, int cursor)
    : m_cursor(cursor)
    , m_list(list)
    , m_expectedCount(list->m_modificationCount)
{
}

AbstractListIterator::~AbstractListIterator() noexcept(false) = default;

bool AbstractListIterator::hasNext()
{
    return m_cursor < m_list->getSize();
}

Reference<IVXUnknown> AbstractListIterator::next()
{
    check();
    Reference<IVXUnknown> element = elementAt(m_cursor);
    m_last = m_cursor++;
    return element;
}

void AbstractListIterator::remove()
{
    checkLast();
    const Reference<IVXUnknown> removed = removeAt(m_last);
    if (m_last < m_cursor)
        --m_cursor;
    ++m_expectedCount;
    m_last = -1;
}

bool AbstractListIterator::hasPrevious()
{
    return m_cursor > 0;
}

Reference<IVXUnknown> AbstractListIterator::previous()
{
    check();
    Reference<IVXUnknown> element = elementAt(m_cursor - 1);
    m_last = --m_cursor;
    return element;
}

int AbstractListIterator::nextIndex()
{
    return m_cursor;
}

int AbstractListIterator::previousIndex()
{
    return m_cursor - 1;
}

void AbstractListIterator::add(IVXUnknown* element)
{
    const Reference<IVXUnknown> counted(element); // first: a new object is released if the operation fails
    check();
    if (!addAt(m_cursor, element))
        return;
    ++m_cursor;
    ++m_expectedCount;
    m_last = -1;
}

void AbstractListIterator::set(IVXUnknown* element)
{
    const Reference<IVXUnknown> counted(element);
    checkLast();
    const Reference<IVXUnknown> replaced = setAt(m_last, element);
    ++m_expectedCount;
}

Reference<IVXUnknown> AbstractListIterator::elementAt(int index)
{
    return m_list->get(index);
}

bool AbstractListIterator::addAt(int index, IVXUnknown* element)
{
    return m_list->add(index, element);
}

Reference<IVXUnknown> AbstractListIterator::removeAt(int index)
{
    return m_list->remove(index);
}

Reference<IVXUnknown> AbstractListIterator::setAt(int index, IVXUnknown* element)
{
    return m_list->set(index, element);
}

void AbstractListIterator::checkLast() const
{
    check();
    if (m_last < 0)
        throw IllegalStateException();
}

void AbstractListIterator::throwChanged()
{
    collections::detail::throwChanged();
}

} // namespace vx::collections::vorb
