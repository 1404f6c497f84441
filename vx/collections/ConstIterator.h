#pragma once

#include "vx/Object.h"
#include "vx/Reference.h"
#include "vx/collections/detail/Element.h"
#include "vx/collections/vorb/ConstIterator.h"

namespace vx::collections {

/// Wraps an iterator and gives its elements a static type.
template <class T>
class VX_API ConstIterator : public Object {
public:
    explicit ConstIterator(vorb::ConstIterator* iterator)
        : m_iterator(iterator)
    {
    }

    bool hasNext() { return m_iterator->hasNext(); }
    Reference<T> next() { return detail::fromElement<T>(m_iterator->next()); }

protected:
    /// The wrapped iterator, as the type with which it was passed in.
    template <class View>
    View& as() const
    {
        return dynamic_cast<View&>(*m_iterator);
    }

private:
    Reference<vorb::ConstIterator> m_iterator;
};

} // namespace vx::collections
