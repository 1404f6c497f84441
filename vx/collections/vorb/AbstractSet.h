#pragma once

#include "vx/collections/vorb/AbstractCollection.h"
#include "vx/collections/vorb/Set.h"

namespace vx::collections::vorb {

/// As AbstractCollection, for sets. Comparison, equality and hash use the address.
class VX_API AbstractSet : public AbstractCollection, public virtual Set {
public:
    ~AbstractSet() noexcept(false) override;

protected:
    AbstractSet();
    explicit AbstractSet(const IVXComparator* comparator);
    AbstractSet(const AbstractSet& other);
};

} // namespace vx::collections::vorb
