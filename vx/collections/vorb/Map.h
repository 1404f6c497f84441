#pragma once

#include "vx/collections/detail/Walk.h"
#include "vx/collections/vorb/Collection.h"
#include "vx/collections/vorb/MapEntry.h"
#include "vx/collections/vorb/Set.h"

#include <cstdint>
#include <iterator>

namespace vx::collections::vorb {

/// Values by key. It holds a count on each key and value, both of which may be null, and tells keys apart by its
/// comparator only; a failure of the comparator is thrown as a ResultException.
///
/// The sets and collections that it creates are views: what is removed from them leaves the map. Nothing is locked: one
/// thread at a time.
class VX_API Map : public IVXUnknown {
public:
    virtual void clear() = 0;
    virtual int compareTo(const Object& other) const = 0;
    virtual bool containsKey(const IVXUnknown* key) const = 0;
    virtual bool containsValue(const IVXUnknown* value) const = 0;
    virtual Reference<const Set> createEntrySet() const = 0;
    virtual Reference<Set> createEntrySet() = 0;
    virtual Reference<const Set> createKeySet() const = 0;
    virtual Reference<Set> createKeySet() = 0;
    virtual Reference<const Collection> createValueCollection() const = 0;
    virtual Reference<Collection> createValueCollection() = 0;
    virtual bool equals(const Object& other) const = 0;
    /// Null for a key that is not there; so is a value that is null.
    virtual Reference<IVXUnknown> get(const IVXUnknown* key) const = 0;
    virtual int getSize() const = 0;
    virtual std::uint32_t hashCode() const = 0;
    /// Gives back the old value, null where the key is new. The key of an entry that is there stays.
    virtual Reference<IVXUnknown> put(IVXUnknown* key, IVXUnknown* value) = 0;
    virtual void putAll(const Map& other) = 0;
    /// Gives back the value, null for a key that is not there.
    virtual Reference<IVXUnknown> remove(const IVXUnknown* key) = 0;

    bool isEmpty() const { return getSize() == 0; }

    struct ToEntry {
        Reference<MapEntry> operator()(const Reference<IVXUnknown>& element) const { return MapEntry::of(element); }
    };
    /// For a range-for, which sees each entry as a `Reference<MapEntry>`.
    collections::detail::Walk<ConstIterator, ToEntry> begin() const
    {
        return collections::detail::Walk<ConstIterator, ToEntry>(createEntrySet()->createConstIterator());
    }
    std::default_sentinel_t end() const noexcept { return {}; }

protected:
    ~Map() = default;
};

} // namespace vx::collections::vorb
