#pragma once

#include "vx/Object.h"
#include "vx/Reference.h"
#include "vx/collections/detail/Element.h"
#include "vx/collections/vorb/ConstIterator.h"

namespace vx::collections {

/// An iterator with a static element type over one without.
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
    /// The iterator behind as what it was given as.
    template <class View>
    View& as() const
    {
        return dynamic_cast<View&>(*m_iterator);
    }

private:
    Reference<vorb::ConstIterator> m_iterator;
};

} // namespace vx::collections
