#pragma once

#include "vx/ComObject.h"
#include "vx/collections/vorb/HashMap.h"
#include "vx/collections/vorb/Iterator.h"

#include <cstdint>

namespace vx::collections::vorb {

/// Walks a `HashMap`, on which it holds a count, in the order of its buckets. `next` at the end throws an Exception without
/// a message, as it does when the map has changed behind the iterator; `hasNext` looks at no change.
class VX_API HashMapIterator : public ComObject, public virtual Iterator {
public:
    /// What `next` gives: of entries, the live `HashMapEntry` objects.
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
    /// Entries, keys and values lie all over the memory: has them fetched before their turn.
    void lookAhead() const noexcept;

    Reference<HashMap> m_map;
    std::uint32_t m_expectedCount;
    Kind m_kind;
    int m_bucket; ///< goes down; its chain is the one of `m_next`
    HashMap::Index m_next = HashMap::NONE;
    HashMap::Index m_last = HashMap::NONE; ///< the one that `next` gave last
};

} // namespace vx::collections::vorb
