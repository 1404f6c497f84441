#pragma once

#include "vx/ComObject.h"
#include "vx/collections/vorb/HashMap.h"
#include "vx/collections/vorb/Iterator.h"

#include <cstdint>

namespace vx::collections::vorb {

/// Iterates over a `HashMap` in the order of its buckets, and keeps a reference on it. `next` throws an Exception
/// without a message at the end, and if the map was changed in another way than through this iterator. `hasNext` does
/// not check for changes.
class VX_API HashMapIterator : public ComObject, public virtual Iterator {
public:
    /// What `next` returns. An entry is the map's own `HashMapEntry` object.
    enum Kind { KEYS = 0, VALUES = 1, ENTRIES = 2 };

    HashMapIterator(HashMap* map, Kind kind);
    HashMapIterator(const HashMapIterator&) = delete;
    HashMapIterator& operator=(const HashMapIterator&) = delete;
    ~HashMapIterator() noexcept(false) override;

    VX_OBJECT_UNKNOWN(ComObject)

    // ConstIterator
    bool hasNext() override;
    Reference<IVXUnknown> next() override;

    // Iterator
    void remove() override;

private:
    Reference<IVXUnknown> part(HashMap::Index index) const;
    /// Prefetches entries, keys and values of the group of buckets after the current one. They are scattered in memory,
    /// and to fetch many at once takes little more time than to fetch one.
    void prefetch() const noexcept;

    Reference<HashMap> m_map;
    std::uint32_t m_expectedCount;
    Kind m_kind;
    int m_bucket; ///< decreases; `m_next` is in its chain
    HashMap::Index m_next = HashMap::NONE;
    HashMap::Index m_last = HashMap::NONE; ///< the one that `next` returned last
};

} // namespace vx::collections::vorb
