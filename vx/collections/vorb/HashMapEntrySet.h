#pragma once

#include "vx/collections/vorb/AbstractSet.h"
#include "vx/collections/vorb/HashMap.h"

namespace vx::collections::vorb {

/// The entries of a `HashMap` as a set: a view of the map, on which it keeps a reference.
class VX_API HashMapEntrySet : public AbstractSet {
public:
    explicit HashMapEntrySet(HashMap* map);
    HashMapEntrySet(const HashMapEntrySet&) = delete;
    ~HashMapEntrySet() noexcept(false) override;

    // Collection
    /// True if the map has the key with an equal value. Throws CastFailedException for anything but a MapEntry.
    bool contains(const IVXUnknown* element) const override;
    Reference<Iterator> createIterator() override;
    Reference<ConstIterator> createConstIterator() const override;
    int getSize() const override;

private:
    Reference<HashMap> m_map;
};

} // namespace vx::collections::vorb
