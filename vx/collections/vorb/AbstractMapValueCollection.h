#pragma once

#include "vx/collections/vorb/AbstractCollection.h"
#include "vx/collections/vorb/AbstractMap.h"

namespace vx::collections::vorb {

/// The values of a map as a collection: a view of the map, on which it keeps a reference.
class VX_API AbstractMapValueCollection : public AbstractCollection {
public:
    /// The comparator is the value comparator of `map`.
    explicit AbstractMapValueCollection(AbstractMap* map);
    AbstractMapValueCollection(const AbstractMapValueCollection&) = delete;
    ~AbstractMapValueCollection() noexcept(false) override;

    // Collection
    bool contains(const IVXUnknown* element) const override;
    Reference<Iterator> createIterator() override;
    Reference<ConstIterator> createConstIterator() const override;
    int getSize() const override;

private:
    class ValueCollectionIterator;

    Reference<AbstractMap> m_map;
};

} // namespace vx::collections::vorb
