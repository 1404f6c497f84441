#pragma once

#include "vx/collections/ConstIterator.h"
#include "vx/collections/vorb/ConstListIterator.h"

namespace vx::collections {

/// As ConstIterator, in both directions of a list.
template <class T>
class VX_API ConstListIterator : public ConstIterator<T> {
public:
    explicit ConstListIterator(vorb::ConstListIterator* iterator)
        : ConstIterator<T>(iterator)
    {
    }

    bool hasPrevious() { return wrapped().hasPrevious(); }
    Reference<T> previous() { return detail::fromElement<T>(wrapped().previous()); }
    int nextIndex() { return wrapped().nextIndex(); }
    int previousIndex() { return wrapped().previousIndex(); }

private:
    vorb::ConstListIterator& wrapped() const { return this->template as<vorb::ConstListIterator>(); }
};

} // namespace vx::collections
