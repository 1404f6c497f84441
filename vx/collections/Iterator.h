#pragma once

#include "vx/collections/ConstIterator.h"
#include "vx/collections/vorb/Iterator.h"

namespace vx::collections {

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
