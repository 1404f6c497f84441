#pragma once

#include "vx/collections/Collection.h"
#include "vx/collections/vorb/Set.h"

#include <initializer_list>

namespace vx::collections {

/// As Collection, around a set.
template <class T>
class VX_API Set : public virtual Collection<T> {
public:
    explicit Set(vorb::Set* set)
        : Collection<T>(set)
    {
    }
    Set(vorb::Set* set, std::initializer_list<detail::Given<T>> elements)
        : Collection<T>(set, elements)
    {
    }
};

} // namespace vx::collections
