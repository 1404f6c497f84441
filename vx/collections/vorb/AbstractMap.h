#pragma once

#include "vx/IVXComparator.h"
#include "vx/Object.h"
#include "vx/collections/vorb/Map.h"

#include <cstdint>

namespace vx::collections::vorb {

/// Everything that a map can do by its entry set alone, whose elements are `MapEntry` objects. A class of its own gives
/// that set, and `put` if it stores.
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
    /// Of several entries with an equal key all go, and the last one's value is the result.
    Reference<IVXUnknown> remove(const IVXUnknown* key) override;

    // Object, Map: by the entries
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
    /// Shares the comparators and counts from 0.
    AbstractMap(const AbstractMap& other);
    AbstractMap& operator=(const AbstractMap&) = delete;

    int compareToMap(const Map& other) const;

    /// Equality as the comparators have it.
    bool keysEqual(const IVXUnknown* stored, const IVXUnknown* other) const;
    bool valuesEqual(const IVXUnknown* stored, const IVXUnknown* other) const;

private:
    Reference<const IVXComparator> m_keyComparator;
    Reference<const IVXComparator> m_valueComparator;

protected:
    /// Counts changes of structure, for the iterators. Unsigned, since it comes around in a map that lives long.
    std::uint32_t m_modificationCount = 0;
};

} // namespace vx::collections::vorb
