#pragma once

#include "vx/collections/vorb/ConstIterator.h"

namespace vx::collections::vorb {

/// An iterator that can remove elements. It stays valid after its own changes.
class VX_API Iterator : public virtual ConstIterator {
public:
    /// Removes the element that the last step returned from the collection. Throws IllegalStateException if there is
    /// none.
    virtual void remove() = 0;

protected:
    ~Iterator() = default;
};

} // namespace vx::collections::vorb
