#pragma once

#include "vx/collections/vorb/ConstListIterator.h"
#include "vx/collections/vorb/Iterator.h"

namespace vx::collections::vorb {

/// An iterator that changes the list at its position. It stays valid after its own changes.
class VX_API ListIterator : public virtual Iterator, public virtual ConstListIterator {
public:
    /// Inserts `element` at the position; the next step forwards does not return it.
    virtual void add(IVXUnknown* element) = 0;
    /// Replaces the element that the last step returned. Throws IllegalStateException if there is none.
    virtual void set(IVXUnknown* element) = 0;

protected:
    ~ListIterator() = default;
};

} // namespace vx::collections::vorb
