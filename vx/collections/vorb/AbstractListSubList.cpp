#include "vx/collections/vorb/AbstractListSubList.h"

#include "vx/Exceptions.h"
#include "vx/collections/detail/Failures.h"
#include "vx/collections/vorb/ArrayList.h"
#include "vx/collections/vorb/detail/Length.h"
#include "vx/collections/vorb/detail/Search.h"
#include "vx/detail/Hidden.h"

#include <cstdlib>
#include <exception>
#include <typeinfo>

namespace vx::collections::vorb {

/// An iterator over the part that uses an iterator of the whole list.
class VX_HIDDEN AbstractListSubList::SubListIterator : public ComObject, public virtual ListIterator {
public:
    SubListIterator(AbstractListSubList* list, int index)
        : m_list(list)
        , m_elements(list->m_parent->createListIterator(list->m_offset + index))
    {
    }
    SubListIterator(const SubListIterator&) = delete;

    VX_OBJECT_UNKNOWN(ComObject)

    // ConstIterator
    bool hasNext() override { return nextIndex() < m_list->m_size; }
    Reference<IVXUnknown> next() override
    {
        if (!hasNext())
            collections::detail::throwAtEnd();
        return m_elements->next();
    }

    // Iterator
    void remove() override
    {
        m_list->changed(-1); // before the element is released, whose destructor may use the list
        try {
            m_elements->remove();
        } catch (...) {
            m_list->unchanged();
            throw;
        }
    }

    // ConstListIterator
    bool hasPrevious() override { return previousIndex() >= 0; }
    Reference<IVXUnknown> previous() override
    {
        if (!hasPrevious())
            collections::detail::throwAtEnd();
        return m_elements->previous();
    }
    int nextIndex() override { return m_elements->nextIndex() - m_list->m_offset; }
    int previousIndex() override { return m_elements->previousIndex() - m_list->m_offset; }

    // ListIterator
    void add(IVXUnknown* element) override
    {
        m_elements->add(element);
        m_list->changed(+1);
    }
    /// The modification count that the view expects stays as it is: the view treats this as a change that was not made
    /// through it.
    void set(IVXUnknown* element) override { m_elements->set(element); }

private:
    Reference<AbstractListSubList> m_list;
    Reference<ListIterator> m_elements;
};

AbstractListSubList::AbstractListSubList(AbstractList* parent, int from, int to)
    : AbstractList(parent->getComparator())
    , m_parent(parent)
    , m_expectedCount(parent->m_modificationCount)
    , m_offset(from)
    , m_size(to - from)
{
}

AbstractListSubList::~AbstractListSubList() noexcept(false) = default;

bool AbstractListSubList::addAll(const Collection& other)
{
    int offset;
    const ArrayList* const storage = findStorage(offset);
    return storage != nullptr && storage->isApartFrom(other) ? addAll(m_size, other) : AbstractList::addAll(other);
}

void AbstractListSubList::clear()
{
    int offset;
    ArrayList* const storage = findStorage(offset);
    if (storage == nullptr)
        return AbstractList::clear();
    const auto removed = storage->take(offset, offset + m_size);
    storageChanged(-m_size);
}

bool AbstractListSubList::retainAll(const Collection& other)
{
    int offset;
    ArrayList* const storage = findStorage(offset);
    if (storage == nullptr || !storage->isApartFrom(other))
        return AbstractList::retainAll(other);
    const Reference<AbstractListSubList> kept = detail::keepIfCounted(this);
    std::exception_ptr failure;
    {
        const auto removed = storage->takeForeign(offset, offset + m_size, other, failure);
        storageChanged(-static_cast<int>(removed.size()));
        if (failure == nullptr)
            return !removed.empty();
    }
    std::rethrow_exception(failure);
}

Reference<Iterator> AbstractListSubList::createIterator()
{
    return new SubListIterator(this, 0);
}

Reference<ConstIterator> AbstractListSubList::createConstIterator() const
{
    return new SubListIterator(const_cast<AbstractListSubList*>(this), 0);
}

int AbstractListSubList::getSize() const
{
    return m_size;
}

bool AbstractListSubList::add(int index, IVXUnknown* element)
{
    const Reference<IVXUnknown> counted(element); // first: a new object is released if the operation fails
    detail::checkPosition(index, m_size);
    check();
    if (!m_parent->add(m_offset + index, element))
        return false;
    changed(+1);
    return true;
}

bool AbstractListSubList::addAll(int index, const Collection& other)
{
    int offset;
    ArrayList* const storage = findStorage(offset);
    if (storage == nullptr || !storage->isApartFrom(other))
        return AbstractList::addAll(index, other);
    detail::checkPosition(index, m_size);
    auto elements = ArrayList::elementsOf(other);
    storage->insert(offset + index, elements);
    storageChanged(static_cast<int>(elements.size()));
    return !elements.empty();
}

Reference<IVXUnknown> AbstractListSubList::remove(int index)
{
    detail::checkIndex(index, m_size);
    check();
    Reference<IVXUnknown> element = m_parent->remove(m_offset + index);
    changed(-1);
    return element;
}

Reference<ListIterator> AbstractListSubList::createListIterator(int index)
{
    detail::checkPosition(index, m_size);
    return new SubListIterator(this, index);
}

Reference<ConstListIterator> AbstractListSubList::createConstListIterator(int index) const
{
    detail::checkPosition(index, m_size);
    return new SubListIterator(const_cast<AbstractListSubList*>(this), index);
}

Reference<IVXUnknown> AbstractListSubList::get(int index) const
{
    detail::checkIndex(index, m_size);
    check();
    return m_parent->get(m_offset + index);
}

Reference<IVXUnknown> AbstractListSubList::set(int index, IVXUnknown* element)
{
    const Reference<IVXUnknown> counted(element);
    detail::checkIndex(index, m_size);
    check();
    Reference<IVXUnknown> old = m_parent->set(m_offset + index, element);
    changed(0);
    return old;
}

ArrayList* AbstractListSubList::findStorage(int& offset) noexcept
{
    offset = 0;
    for (AbstractListSubList* view = this;;) {
        AbstractList* const parent = view->m_parent.get();
        if (typeid(*view) != typeid(AbstractListSubList) || view->m_expectedCount != parent->m_modificationCount)
            return nullptr;
        offset += view->m_offset;
        if (typeid(*parent) == typeid(ArrayList))
            return static_cast<ArrayList*>(parent);
        view = dynamic_cast<AbstractListSubList*>(parent);
        if (view == nullptr)
            return nullptr;
    }
}

/// Throws if the parent was changed other than through this view.
void AbstractListSubList::check() const
{
    if (m_expectedCount != m_parent->m_modificationCount)
        collections::detail::throwChanged();
}

void AbstractListSubList::changed(int change) noexcept
{
    m_size += change;
    ++m_expectedCount;
    ++m_modificationCount; // for sublists of this one
}

void AbstractListSubList::storageChanged(int count) noexcept
{
    const auto changes = static_cast<std::uint32_t>(std::abs(count));
    for (AbstractListSubList* view = this; view != nullptr;
         view = dynamic_cast<AbstractListSubList*>(view->m_parent.get())) {
        view->m_size += count;
        view->m_expectedCount += changes;
        view->m_modificationCount += changes;
    }
}

void AbstractListSubList::unchanged() noexcept
{
    ++m_size;
    --m_expectedCount;
    --m_modificationCount;
}

} // namespace vx::collections::vorb
