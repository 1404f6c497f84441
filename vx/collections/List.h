#pragma once

#include "vx/collections/Collection.h"
#include "vx/collections/ConstListIterator.h"
#include "vx/collections/ListIterator.h"
#include "vx/collections/vorb/AbstractListSubList.h"
#include "vx/collections/vorb/List.h"

#include <algorithm>
#include <initializer_list>
#include <vector>

namespace vx::collections {

/// As Collection, around a list.
///
/// @code
/// collections::List<String> names(new collections::vorb::ArrayList, {u"Ole", u"Ada"});
/// names.sort();
/// assert(*names.get(0) == u"Ada");
/// const std::vector<Reference<String>> copy(names.begin(), names.end());
/// assert(copy.size() == 2 && copy[1] == names.get(1));
/// assert(std::ranges::count_if(names, [](const auto& name) { return name->getLength() == 3; }) == 2);
/// @endcode
template <class T>
class VX_API List : public Collection<T> {
public:
    explicit List(vorb::List* list)
        : Collection<T>(list)
        , m_list(list)
    {
    }

    List(vorb::List* list, std::initializer_list<detail::Given<T>> elements)
        : Collection<T>(list, elements)
        , m_list(list)
    {
    }

    using Collection<T>::add;
    using Collection<T>::addAll;
    using Collection<T>::remove;

    virtual bool add(int index, T* element) { return m_list->add(index, detail::toElement(element)); }
    virtual bool addAll(int index, const Collection<T>& other) { return m_list->addAll(index, *other.getCollection()); }
    virtual Reference<T> remove(int index) { return detail::fromElement<T>(m_list->remove(index)); }
    virtual Reference<ListIterator<T>> createListIterator(int index)
    {
        return new ListIterator<T>(m_list->createListIterator(index).get());
    }
    virtual Reference<ConstListIterator<T>> createConstListIterator(int index) const
    {
        return new ConstListIterator<T>(m_list->createConstListIterator(index).get());
    }
    /// A view: changes of the result change this list.
    virtual Reference<List<T>> createSubList(int from, int to)
    {
        return new List<T>(m_list->createSubList(from, to).get());
    }
    virtual Reference<const List<T>> createSubList(int from, int to) const
    {
        return new List<T>(m_list->createSubList(from, to).get());
    }
    virtual Reference<T> get(int index) const { return detail::fromElement<T>(m_list->get(index)); }
    virtual int indexOf(const T* element) const { return m_list->indexOf(detail::toElement(element)); }
    virtual int lastIndexOf(const T* element) const { return m_list->lastIndexOf(detail::toElement(element)); }
    virtual Reference<T> set(int index, T* element)
    {
        return detail::fromElement<T>(m_list->set(index, detail::toElement(element)));
    }

    /// Stable. Null goes first: `less` compares elements that are not null.
    template <class Less>
    void sort(Less less)
    {
        std::vector<Reference<T>> elements(this->begin(), this->end());
        std::stable_sort(
            elements.begin(), elements.end(), [&less](const Reference<T>& left, const Reference<T>& right) {
                return left == nullptr || right == nullptr ? left == nullptr && right != nullptr : less(*left, *right);
            });
        if (dynamic_cast<vorb::AbstractListSubList*>(m_list.get()) != nullptr) {
            // A `set` of its iterator would leave the view invalid.
            for (int index = 0; const Reference<T>& element : elements)
                set(index++, element.get());
            return;
        }
        const Reference<ListIterator<T>> place = createListIterator(0);
        for (const Reference<T>& element : elements) {
            place->next();
            place->set(element.get());
        }
    }
    /// By `compareTo` of the elements.
    void sort()
    {
        sort([](const T& left, const T& right) { return left.compareTo(right) < 0; });
    }

private:
    Reference<vorb::List> m_list;
};

} // namespace vx::collections
