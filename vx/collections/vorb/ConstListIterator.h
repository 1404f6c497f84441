#pragma once

#include "vx/collections/vorb/ConstIterator.h"

namespace vx::collections::vorb {

/// Iterates over a list in both directions. Its position is between two elements.
class VX_API ConstListIterator : public virtual ConstIterator {
public:
    virtual bool hasPrevious() = 0;
    /// Throws RangeErrorException before the first element.
    virtual Reference<IVXUnknown> previous() = 0;
    virtual int nextIndex() = 0;
    /// -1 at the start.
    virtual int previousIndex() = 0;

protected:
    ~ConstListIterator() = default;
};

} // namespace vx::collections::vorb
