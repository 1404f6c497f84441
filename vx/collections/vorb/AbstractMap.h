#pragma once

#include "vx/IVXComparator.h"
#include "vx/Object.h"
#include "vx/collections/vorb/Map.h"

#include <cstdint>

namespace vx::collections::vorb {

/// Implements all operations of a map with its entry set, whose elements are `MapEntry` objects. A derived class
/// supplies that set, and `put` if it stores entries.
class VX_API AbstractMap : public Object, public virtual Map {
public:
    VX_OBJECT_UNKNOWN(Object)

    ~AbstractMap() noexcept(false) override;

    // Map
    void clear() override;
    bool containsKey(const IVXUnknown* key) const override;
    bool containsValue(const IVXUnknown* value) const override;
    Reference<const Set> createKeySet() const override;
    Reference<Set> createKeySet() override;
    Reference<const Collection> createValueCollection() const override;
    Reference<Collection> createValueCollection() override;
    Reference<IVXUnknown> get(const IVXUnknown* key) const override;
    int getSize() const override;
    /// Throws UnsupportedOperationException.
    Reference<IVXUnknown> put(IVXUnknown* key, IVXUnknown* value) override;
    void putAll(const Map& other) override;
    /// If several entries have an equal key, all are removed, and the value of the last one is returned.
    Reference<IVXUnknown> remove(const IVXUnknown* key) override;

    // Object, Map: compare the entries
    /// Throws CastFailedException for an `other` that is no Map.
    int compareTo(const Object& other) const override;
    bool equals(const Object& other) const override;
    std::uint32_t hashCode() const override;

    /// Not counted.
    const IVXComparator* getKeyComparator() const noexcept { return m_keyComparator.get(); }
    const IVXComparator* getValueComparator() const noexcept { return m_valueComparator.get(); }

protected:
    /// With the default comparator for both.
    AbstractMap();
    /// Neither is null.
    AbstractMap(const IVXComparator* key, const IVXComparator* value);
    /// Shares the comparators. The modification count starts at 0.
    AbstractMap(const AbstractMap& other);
    AbstractMap& operator=(const AbstractMap&) = delete;

    int compareToMap(const Map& other) const;

    /// Equality according to the comparators.
    bool keysEqual(const IVXUnknown* stored, const IVXUnknown* other) const;
    bool valuesEqual(const IVXUnknown* stored, const IVXUnknown* other) const;

private:
    Reference<const IVXComparator> m_keyComparator;
    Reference<const IVXComparator> m_valueComparator;

protected:
    /// Counts structural changes, for the iterators. Unsigned, since it may wrap around in a map that lives long.
    std::uint32_t m_modificationCount = 0;
};

} // namespace vx::collections::vorb
