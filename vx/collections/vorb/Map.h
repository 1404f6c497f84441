#pragma once

#include "vx/collections/detail/Walk.h"
#include "vx/collections/vorb/Collection.h"
#include "vx/collections/vorb/MapEntry.h"
#include "vx/collections/vorb/Set.h"

#include <cstdint>
#include <iterator>

namespace vx::collections::vorb {

/// Maps keys to values. It keeps a reference on each; keys and values may be null. Keys are compared with the map's
/// comparator only, whose failures are thrown as ResultException.
///
/// The sets and collections that it creates are views: what is removed from them is removed from the map. There is no
/// lock: one thread at a time.
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
    /// Returns null both for a missing key and for a value that is null.
    virtual Reference<IVXUnknown> get(const IVXUnknown* key) const = 0;
    virtual int getSize() const = 0;
    virtual std::uint32_t hashCode() const = 0;
    /// Returns the old value, null if the key is new. An existing entry keeps its key.
    virtual Reference<IVXUnknown> put(IVXUnknown* key, IVXUnknown* value) = 0;
    virtual void putAll(const Map& other) = 0;
    /// Returns the value, null if the key is missing.
    virtual Reference<IVXUnknown> remove(const IVXUnknown* key) = 0;

    bool isEmpty() const { return getSize() == 0; }

    struct ToEntry {
        Reference<MapEntry> operator()(const Reference<IVXUnknown>& element) const { return MapEntry::of(element); }
    };
    /// For a range-for, whose elements are `Reference<MapEntry>`.
    collections::detail::Walk<ConstIterator, ToEntry> begin() const
    {
        return collections::detail::Walk<ConstIterator, ToEntry>(createEntrySet()->createConstIterator());
    }
    collections::detail::Walk<ConstIterator, ToEntry> end() const noexcept { return {}; }

protected:
    ~Map() = default;
};

} // namespace vx::collections::vorb
