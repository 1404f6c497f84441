#pragma once

#include "vx/ComObject.h"
#include "vx/collections/vorb/MapEntry.h"

namespace vx::collections::vorb {

/// An entry of a `HashMap`. After its removal from the map it keeps its last value. All entries are equal to each other
/// and have the same hash, whatever they contain.
class VX_API HashMapEntry : public ComObject, public virtual MapEntry {
public:
    HashMapEntry(const HashMapEntry&) = delete;
    HashMapEntry& operator=(const HashMapEntry&) = delete;
    ~HashMapEntry() noexcept(false) override;

    VX_OBJECT_UNKNOWN(ComObject)

    // MapEntry
    /// 0.
    int compareTo(const Object& other) const override;
    /// True.
    bool equals(const Object& other) const override;
    Reference<IVXUnknown> getKey() const override;
    Reference<IVXUnknown> getValue() const override;
    /// 0.
    std::uint32_t hashCode() const override;
    /// Does not count as a modification: iterators stay valid.
    Reference<IVXUnknown> setValue(IVXUnknown* value) override;

private:
    friend class HashMap;

    HashMapEntry() noexcept = default;

    Reference<IVXUnknown> m_key;
    Reference<IVXUnknown> m_value;
};

} // namespace vx::collections::vorb
