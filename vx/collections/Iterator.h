#pragma once

#include "vx/collections/ConstIterator.h"
#include "vx/collections/vorb/Iterator.h"

namespace vx::collections {

/// As ConstIterator, around an iterator that can remove elements.
template <class T>
class VX_API Iterator : public ConstIterator<T> {
public:
    explicit Iterator(vorb::Iterator* iterator)
        : ConstIterator<T>(iterator)
    {
    }

    void remove() { this->template as<vorb::Iterator>().remove(); }
};

} // namespace vx::collections
