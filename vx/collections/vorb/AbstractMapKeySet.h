#pragma once

#include "vx/collections/vorb/AbstractMap.h"
#include "vx/collections/vorb/AbstractSet.h"

namespace vx::collections::vorb {

/// The keys of a map as a set: a view of the map, on which it keeps a reference.
class VX_API AbstractMapKeySet : public AbstractSet {
public:
    /// The comparator is the key comparator of `map`.
    explicit AbstractMapKeySet(AbstractMap* map);
    AbstractMapKeySet(const AbstractMapKeySet&) = delete;
    ~AbstractMapKeySet() noexcept(false) override;

    // Collection
    bool contains(const IVXUnknown* element) const override;
    Reference<Iterator> createIterator() override;
    Reference<ConstIterator> createConstIterator() const override;
    int getSize() const override;

private:
    class KeySetIterator;

    Reference<AbstractMap> m_map;
};

} // namespace vx::collections::vorb
