#include "vx/collections/vorb/AbstractSet.h"

namespace vx::collections::vorb {

AbstractSet::AbstractSet() = default;

AbstractSet::AbstractSet(const IVXComparator* comparator)
    : AbstractCollection(comparator)
{
}

AbstractSet::AbstractSet(const AbstractSet& other)
    : Collection()
    , Set()
    , AbstractCollection(other)
{
}

AbstractSet::~AbstractSet() noexcept(false) = default;

} // namespace vx::collections::vorb
