#include "vx/collections/vorb/LinkedList.h"

#include "vx/collections/detail/Failures.h"
#include "vx/collections/vorb/AbstractListIterator.h"
#include "vx/collections/vorb/detail/Length.h"
#include "vx/collections/vorb/detail/Search.h"
#include "vx/detail/Hidden.h"

#include <iterator>
#include <typeinfo>
#include <utility>

namespace vx::collections::vorb {

namespace {

/// A derived class may override the operations that the ways of `LinkedList` would not call.
bool isDerived(const LinkedList& list) noexcept
{
    return typeid(list) != typeid(LinkedList);
}

} // namespace

/// Remembers the node of its last step, so that the next step need not start at the front. That node cannot have been
/// removed by another caller: the base checks the modification count before each step.
class VX_HIDDEN LinkedList::NodeIterator final : public AbstractListIterator {
public:
    NodeIterator(LinkedList* list, int cursor)
        : AbstractListIterator(list, cursor)
        , m_nodesOf(*list)
    {
    }

    bool hasNext() override { return m_cursor < size(); }
    Reference<IVXUnknown> next() override // with `elementAt` inline
    {
        check();
        Reference<IVXUnknown> element = elementAt(m_cursor);
        m_last = m_cursor++;
        return element;
    }

protected:
    Reference<IVXUnknown> elementAt(int index) override
    {
        detail::checkIndex(index, size());
        const Nodes::iterator node = seek(index);
        keep(node, index);
        return *node;
    }
    bool addAt(int index, IVXUnknown* element) override
    {
        detail::checkPosition(index, size());
        keep(m_nodesOf.link(seek(index), element), index);
        return true;
    }
    Reference<IVXUnknown> removeAt(int index) override
    {
        detail::checkIndex(index, size());
        const Nodes::iterator node = seek(index);
        keep(std::next(node), index);
        return m_nodesOf.unlink(node);
    }
    Reference<IVXUnknown> setAt(int index, IVXUnknown* element) override
    {
        detail::checkIndex(index, size());
        const Nodes::iterator node = seek(index);
        keep(node, index);
        return m_nodesOf.replace(node, element);
    }

private:
    int size() const noexcept { return static_cast<int>(m_nodesOf.m_nodes.size()); }

    Nodes::iterator seek(int index)
    {
        if (index == size())
            return m_nodesOf.m_nodes.end();
        if (m_keptIndex < 0)
            return m_nodesOf.internalGet(index);
        return std::next(m_kept, index - m_keptIndex);
    }

    void keep(Nodes::iterator node, int index) noexcept
    {
        m_kept = node;
        // The end has another index after one more element was appended.
        m_keptIndex = node != m_nodesOf.m_nodes.end() ? index : -1;
    }

    LinkedList& m_nodesOf; ///< the base keeps a reference on it
    Nodes::iterator m_kept;
    int m_keptIndex = -1;
};

LinkedList::LinkedList() = default;

LinkedList::LinkedList(const IVXComparator* comparator)
    : AbstractList(comparator)
{
}

LinkedList::LinkedList(const Collection& other)
{
    addAll(other);
}

LinkedList::LinkedList(const Collection& other, const IVXComparator* comparator)
    : AbstractList(comparator)
{
    addAll(other);
}

LinkedList::LinkedList(const LinkedList& other)
    : Collection()
    , List()
    , AbstractList(other)
{
    addAll(other);
}

LinkedList::~LinkedList() noexcept(false)
{
    while (!m_nodes.empty()) { // destructors of elements may add others
        // Empty before the first element is released: its destructor may use the list.
        const Nodes nodes = std::exchange(m_nodes, Nodes());
    }
}

// Operations that receive an element first add a reference, so that a new object is released if the operation fails.

bool LinkedList::add(IVXUnknown* element)
{
    Reference<IVXUnknown> counted(element);
    detail::checkLength(getSize(), "list<T> too long");
    m_nodes.push_back(std::move(counted));
    return true;
}

void LinkedList::clear()
{
    const Nodes nodes = std::exchange(m_nodes, Nodes());
    ++m_modificationCount;
}

bool LinkedList::contains(const IVXUnknown* element) const
{
    return isDerived(*this) ? AbstractList::contains(element) : find(element).index >= 0;
}

bool LinkedList::remove(const IVXUnknown* element)
{
    if (isDerived(*this))
        return AbstractList::remove(element);
    const Reference<LinkedList> kept = detail::keepIfCounted(this);
    const std::uint32_t expectedCount = m_modificationCount;
    const Found found = find(element);
    if (found.index < 0)
        return false;
    if (expectedCount != m_modificationCount)
        collections::detail::throwChanged();
    unlink(m_nodes.erase(found.node, found.node)); // returns the position as one that may be changed
    return true;
}

int LinkedList::getSize() const
{
    return static_cast<int>(m_nodes.size());
}

bool LinkedList::add(int index, IVXUnknown* element)
{
    const Reference<IVXUnknown> counted(element);
    detail::checkPosition(index, getSize());
    link(internalGet(index), element);
    return true;
}

Reference<IVXUnknown> LinkedList::remove(int index)
{
    detail::checkIndex(index, getSize());
    return unlink(internalGet(index));
}

Reference<IVXUnknown> LinkedList::get(int index) const
{
    detail::checkIndex(index, getSize());
    return *internalGet(index);
}

Reference<IVXUnknown> LinkedList::set(int index, IVXUnknown* element)
{
    const Reference<IVXUnknown> counted(element);
    detail::checkIndex(index, getSize());
    return replace(internalGet(index), element);
}

int LinkedList::indexOf(const IVXUnknown* element) const
{
    return isDerived(*this) ? AbstractList::indexOf(element) : find(element).index;
}

int LinkedList::lastIndexOf(const IVXUnknown* element) const
{
    if (isDerived(*this))
        return AbstractList::lastIndexOf(element);
    const Reference<const LinkedList> kept = detail::keepIfCounted(this);
    const detail::Wanted wanted(*getComparator(), element);
    const std::uint32_t expectedCount = m_modificationCount;
    Nodes::const_iterator node = m_nodes.end();
    for (int index = getSize() - 1; index >= 0; --index) {
        if (expectedCount != m_modificationCount)
            collections::detail::throwChanged();
        --node;
        if (wanted.isEqualTo(node->get()))
            return index;
    }
    return -1;
}

void LinkedList::Look::take()
{
    m_isAtEnd = m_index >= m_list->getSize();
    m_element = nullptr;
    if (m_isAtEnd)
        return;
    if (m_expectedCount != m_list->m_modificationCount)
        collections::detail::throwChanged();
    m_node = m_index == 0 ? m_list->m_nodes.begin() : std::next(m_node);
    m_element = *m_node;
}

AbstractListIterator* LinkedList::newIterator(int index)
{
    if (isDerived(*this))
        return new AbstractListIterator(this, index);
    return new NodeIterator(this, index);
}

LinkedList::Found LinkedList::find(const IVXUnknown* element) const
{
    const Reference<const LinkedList> kept = detail::keepIfCounted(this);
    const detail::Wanted wanted(*getComparator(), element);
    const std::uint32_t expectedCount = m_modificationCount;
    Nodes::const_iterator node = m_nodes.begin();
    for (int index = 0; index < getSize(); ++index) {
        if (expectedCount != m_modificationCount)
            collections::detail::throwChanged();
        if (index > 0)
            ++node;
        if (wanted.isEqualTo(node->get()))
            return {index, node};
    }
    return {-1, node};
}

LinkedList::Nodes::iterator LinkedList::internalGet(int index)
{
    return std::next(m_nodes.begin(), index);
}

LinkedList::Nodes::const_iterator LinkedList::internalGet(int index) const
{
    return std::next(m_nodes.begin(), index);
}

LinkedList::Nodes::iterator LinkedList::link(Nodes::iterator place, IVXUnknown* element)
{
    detail::checkLength(getSize(), "list<T> too long");
    const Nodes::iterator node = m_nodes.emplace(place, element);
    ++m_modificationCount;
    return node;
}

Reference<IVXUnknown> LinkedList::unlink(Nodes::iterator node)
{
    Reference<IVXUnknown> element = std::move(*node);
    m_nodes.erase(node);
    ++m_modificationCount;
    return element;
}

Reference<IVXUnknown> LinkedList::replace(Nodes::iterator node, IVXUnknown* element)
{
    Reference<IVXUnknown> old(element);
    node->swap(old);
    ++m_modificationCount;
    return old;
}

} // namespace vx::collections::vorb
