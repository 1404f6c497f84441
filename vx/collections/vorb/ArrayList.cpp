#include "vx/collections/vorb/ArrayList.h"

#include "vx/collections/vorb/AbstractListIterator.h"
#include "vx/collections/vorb/HashSet.h"
#include "vx/collections/vorb/LinkedList.h"
#include "vx/collections/vorb/detail/Length.h"
#include "vx/collections/vorb/detail/Search.h"
#include "vx/detail/Hidden.h"
#include "vxsys/Thread.h"

#include <algorithm>
#include <optional>
#include <typeinfo>
#include <utility>

namespace vx::collections::vorb {

namespace {

/// Takes over the reference that a list keeps on an element.
Reference<IVXUnknown> takeOver(IVXUnknown* element) noexcept
{
    Reference<IVXUnknown> taken;
    taken.attach(element);
    return taken;
}

/// A derived class may override the operations that the ways of `ArrayList` would not call.
bool isDerived(const ArrayList& list) noexcept
{
    return typeid(list) != typeid(ArrayList);
}

} // namespace

/// Reads the array directly, without the operations by index.
class VX_HIDDEN ArrayList::ArrayIterator final : public AbstractListIterator {
public:
    ArrayIterator(ArrayList* list, int cursor)
        : AbstractListIterator(list, cursor)
        , m_array(*list)
    {
    }

    bool hasNext() override { return m_cursor < m_array.m_size; }
    Reference<IVXUnknown> next() override
    {
        check();
        detail::checkIndex(m_cursor, m_array.m_size);
        m_last = m_cursor++;
        return m_array.m_elements[m_last];
    }

private:
    const ArrayList& m_array; ///< the base keeps a reference on it
};

ArrayList::ArrayList() = default;

ArrayList::ArrayList(const IVXComparator* comparator)
    : AbstractList(comparator)
{
}

// They delegate to another constructor, so that the destructor releases the elements if `append` fails.

ArrayList::ArrayList(const Collection& other)
    : ArrayList()
{
    append(other);
}

ArrayList::ArrayList(const Collection& other, const IVXComparator* comparator)
    : ArrayList(comparator)
{
    append(other);
}

ArrayList::ArrayList(const ArrayList& other)
    : ArrayList(other.getComparator())
{
    append(other);
}

ArrayList::~ArrayList() noexcept(false)
{
    while (m_size != 0) { // destructors of elements may add others
        // Empty before the first element is released: its destructor may use the list.
        const auto elements = std::move(m_elements);
        const int size = std::exchange(m_size, 0);
        m_capacity = 0;
        for (int index = 0; index < size; ++index)
            takeOver(elements[index]);
    }
}

// Operations that receive an element first add a reference, so that a new object is released if the operation fails.

bool ArrayList::add(IVXUnknown* element)
{
    Reference<IVXUnknown> counted(element);
    if (m_size == m_capacity)
        makeRoom();
    m_elements[m_size++] = counted.detach();
    return true;
}

void ArrayList::clear()
{
    for (int index = getSize() - 1; index >= 0; --index)
        if (index < getSize()) // destructors of elements may remove others
            remove(index);
    ++m_modificationCount;
}

bool ArrayList::contains(const IVXUnknown* element) const
{
    if (isDerived(*this))
        return AbstractList::contains(element);
    return find(element, 0, 1) >= 0;
}

bool ArrayList::remove(const IVXUnknown* element)
{
    if (isDerived(*this))
        return AbstractList::remove(element);
    const Reference<ArrayList> kept = detail::keepIfCounted(this);
    const std::uint32_t expectedCount = m_modificationCount;
    const int index = find(element, 0, 1);
    if (index < 0)
        return false;
    if (expectedCount != m_modificationCount)
        collections::detail::throwChanged();
    remove(index);
    return true;
}

bool ArrayList::retainAll(const Collection& other)
{
    if (isDerived(*this) || !isApartFrom(other))
        return AbstractList::retainAll(other);
    const Reference<ArrayList> kept = detail::keepIfCounted(this);
    std::exception_ptr failure;
    const bool changed = !takeForeign(0, -1, other, failure).empty();
    if (failure != nullptr)
        std::rethrow_exception(failure);
    return changed;
}

int ArrayList::getSize() const
{
    return m_size;
}

bool ArrayList::add(int index, IVXUnknown* element)
{
    Reference<IVXUnknown> counted(element);
    detail::checkPosition(index, m_size);
    if (m_size == m_capacity)
        makeRoom();
    IVXUnknown** place = m_elements.get() + index;
    std::move_backward(place, m_elements.get() + m_size, m_elements.get() + m_size + 1);
    *place = counted.detach();
    ++m_size;
    ++m_modificationCount;
    return true;
}

bool ArrayList::addAll(int index, const Collection& other)
{
    if (isDerived(*this) || !isApartFrom(other))
        return AbstractList::addAll(index, other);
    detail::checkPosition(index, m_size);
    Elements elements = elementsOf(other);
    insert(index, elements);
    return !elements.empty();
}

Reference<IVXUnknown> ArrayList::remove(int index)
{
    detail::checkIndex(index, m_size);
    IVXUnknown** place = m_elements.get() + index;
    Reference<IVXUnknown> element = takeOver(*place);
    std::move(place + 1, m_elements.get() + m_size, place);
    --m_size;
    ++m_modificationCount;
    return element;
}

Reference<IVXUnknown> ArrayList::get(int index) const
{
    detail::checkIndex(index, m_size);
    return m_elements[index];
}

Reference<IVXUnknown> ArrayList::set(int index, IVXUnknown* element)
{
    Reference<IVXUnknown> counted(element);
    detail::checkIndex(index, m_size);
    ++m_modificationCount;
    return takeOver(std::exchange(m_elements[index], counted.detach()));
}

int ArrayList::indexOf(const IVXUnknown* element) const
{
    return isDerived(*this) ? AbstractList::indexOf(element) : find(element, 0, 1);
}

int ArrayList::lastIndexOf(const IVXUnknown* element) const
{
    return isDerived(*this) ? AbstractList::lastIndexOf(element) : find(element, m_size - 1, -1);
}

AbstractListIterator* ArrayList::newIterator(int index)
{
    if (isDerived(*this))
        return new AbstractListIterator(this, index);
    return new ArrayIterator(this, index);
}

int ArrayList::find(const IVXUnknown* element, int index, int step) const
{
    const Reference<const ArrayList> kept = detail::keepIfCounted(this);
    const detail::Wanted wanted(*getComparator(), element);
    const std::uint32_t expectedCount = m_modificationCount;
    for (; index >= 0 && index < m_size; index += step) {
        if (expectedCount != m_modificationCount)
            collections::detail::throwChanged();
        if (wanted.isEqualTo(m_elements[index]))
            return index;
    }
    return -1;
}

bool ArrayList::isApartFrom(const Collection& other) const noexcept
{
    const std::type_info& type = typeid(other);
    return &other != this && (type == typeid(ArrayList) || type == typeid(LinkedList) || type == typeid(HashSet));
}

ArrayList::Elements ArrayList::elementsOf(const Collection& other)
{
    Elements elements;
    elements.reserve(static_cast<std::size_t>(other.getSize()));
    if (typeid(other) == typeid(ArrayList)) {
        for (IVXUnknown* element : *static_cast<const ArrayList*>(dynamic_cast<const void*>(&other)))
            elements.emplace_back(element);
        return elements;
    }
    const Reference<ConstIterator> iterator = other.createConstIterator();
    while (iterator->hasNext())
        elements.push_back(iterator->next());
    return elements;
}

void ArrayList::append(const Collection& other)
{
    if (!isApartFrom(other)) {
        addAll(other);
        return;
    }
    Elements elements = elementsOf(other);
    place(m_size, elements);
}

void ArrayList::insert(int index, Elements& elements)
{
    place(index, elements);
    m_modificationCount += static_cast<std::uint32_t>(elements.size());
}

void ArrayList::place(int index, Elements& elements)
{
    const auto count = static_cast<int>(elements.size());
    if (count > m_capacity - m_size)
        makeRoom(count);
    IVXUnknown** const place = m_elements.get() + index;
    std::move_backward(place, m_elements.get() + m_size, m_elements.get() + m_size + count);
    std::transform(
        elements.begin(), elements.end(), place, [](Reference<IVXUnknown>& element) { return element.detach(); });
    m_size += count;
}

ArrayList::Elements ArrayList::take(int from, int to)
{
    Elements taken(static_cast<std::size_t>(to - from));
    IVXUnknown** place = m_elements.get() + from;
    for (Reference<IVXUnknown>& element : taken)
        element.attach(*place++);
    std::move(place, m_elements.get() + m_size, m_elements.get() + from);
    m_size -= to - from;
    m_modificationCount += static_cast<std::uint32_t>(to - from);
    return taken;
}

ArrayList::Elements ArrayList::takeForeign(int from, int to, const Collection& other, std::exception_ptr& failure)
{
    std::vector<int, vxsys::Allocator<int>> foreign; // first all comparisons, since a comparator may use this list
    const std::uint32_t expectedCount = m_modificationCount;
    const auto* const set
        = typeid(other) == typeid(HashSet) ? static_cast<const HashSet*>(dynamic_cast<const void*>(&other)) : nullptr;
    try {
        for (int index = from; index < (to < 0 ? m_size : to); ++index) {
            std::optional<bool> isContained;
            if (set != nullptr)
                isContained = set->m_map->containsText(m_elements[index]);
            if (!isContained.has_value()) {
                const Reference<IVXUnknown> element = m_elements[index];
                isContained = other.contains(element.get());
                if (expectedCount != m_modificationCount)
                    collections::detail::throwChanged();
            }
            if (!*isContained)
                foreign.push_back(index);
        }
    } catch (...) {
        vxsys::passForcedUnwind();
        if (expectedCount != m_modificationCount)
            throw;
        failure = std::current_exception();
    }
    Elements taken(foreign.size());
    if (foreign.empty())
        return taken;
    IVXUnknown** place = m_elements.get() + foreign.front();
    auto next = foreign.begin();
    for (int index = *next; index < m_size; ++index) {
        if (next != foreign.end() && index == *next)
            taken[static_cast<std::size_t>(next++ - foreign.begin())].attach(m_elements[index]);
        else
            *place++ = m_elements[index];
    }
    m_size -= static_cast<int>(foreign.size());
    m_modificationCount += static_cast<std::uint32_t>(foreign.size());
    return taken;
}

void ArrayList::makeRoom(int count)
{
    detail::checkLength(m_size + count - 1, "vector<T> too long");
    const int capacity = std::max(detail::grownCapacity(m_capacity), m_size + count);
    void* grown = VXMemRealloc(m_elements.get(), static_cast<std::size_t>(capacity) * sizeof(IVXUnknown*));
    if (grown == nullptr)
        throwBadAllocation();
    static_cast<void>(m_elements.release()); // the new array took its place
    m_elements.reset(static_cast<IVXUnknown**>(grown));
    m_capacity = capacity;
}

} // namespace vx::collections::vorb
