#pragma once

#include "vx/collections/vorb/AbstractCollection.h"
#include "vx/collections/vorb/Set.h"

namespace vx::collections::vorb {

/// What AbstractCollection is for sets. It compares, equals and hashes by address.
class VX_API AbstractSet : public AbstractCollection, public virtual Set {
public:
    ~AbstractSet() noexcept(false) override;

protected:
    AbstractSet();
    explicit AbstractSet(const IVXComparator* comparator);
    AbstractSet(const AbstractSet& other);
};

} // namespace vx::collections::vorb
