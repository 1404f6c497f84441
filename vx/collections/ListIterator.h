#pragma once

#include "vx/collections/ConstListIterator.h"
#include "vx/collections/vorb/ListIterator.h"

namespace vx::collections {

/// As ConstListIterator, around an iterator that changes its list.
template <class T>
class VX_API ListIterator : public ConstListIterator<T> {
public:
    explicit ListIterator(vorb::ListIterator* iterator)
        : ConstListIterator<T>(iterator)
        , m_iterator(iterator)
    {
    }

    void remove() { m_iterator->remove(); }
    void add(T* element) { m_iterator->add(detail::toElement(element)); }
    void set(T* element) { m_iterator->set(detail::toElement(element)); }

private:
    Reference<vorb::ListIterator> m_iterator;
};

} // namespace vx::collections
