#pragma once

#include "vx/collections/vorb/ConstIterator.h"

namespace vx::collections::vorb {

/// A pass that can take elements out, which it does not take for a change behind it.
class VX_API Iterator : public virtual ConstIterator {
public:
    /// Takes the element that the last step gave out of the collection. Throws IllegalStateException where there is none.
    virtual void remove() = 0;

protected:
    ~Iterator() = default;
};

} // namespace vx::collections::vorb
