#pragma once

#include "vx/collections/vorb/AbstractSet.h"
#include "vx/collections/vorb/HashMap.h"

namespace vx::collections::vorb {

/// The entries of a `HashMap` as a set that looks through to the map, on which it holds a count.
class VX_API HashMapEntrySet : public AbstractSet {
public:
    explicit HashMapEntrySet(HashMap* map);
    HashMapEntrySet(const HashMapEntrySet&) = delete;
    ~HashMapEntrySet() noexcept(false) override;

    // Collection
    /// True where the map has the key with an equal value. Throws CastFailedException for what is no MapEntry.
    bool contains(const IVXUnknown* element) const override;
    Reference<Iterator> createIterator() override;
    Reference<ConstIterator> createConstIterator() const override;
    int getSize() const override;

private:
    Reference<HashMap> m_map;
};

} // namespace vx::collections::vorb
