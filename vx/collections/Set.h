#pragma once

#include "vx/collections/Collection.h"
#include "vx/collections/vorb/Set.h"

namespace vx::collections {

/// As Collection, around a set.
template <class T>
class VX_API Set : public virtual Collection<T> {
public:
    explicit Set(vorb::Set* set)
        : Collection<T>(set)
    {
    }
};

} // namespace vx::collections
