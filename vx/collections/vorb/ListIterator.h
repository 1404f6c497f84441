#pragma once

#include "vx/collections/vorb/ConstListIterator.h"
#include "vx/collections/vorb/Iterator.h"

namespace vx::collections::vorb {

/// A walk that changes the list where it stands, which it does not take for a change behind it.
class VX_API ListIterator : public virtual Iterator, public virtual ConstListIterator {
public:
    /// Puts `element` where the iterator stands; the next step forwards does not give it.
    virtual void add(IVXUnknown* element) = 0;
    /// Puts `element` in the place of the one that the last step gave. Throws IllegalStateException where there is none.
    virtual void set(IVXUnknown* element) = 0;

protected:
    ~ListIterator() = default;
};

} // namespace vx::collections::vorb
