#pragma once

#include "vx/Object.h"
#include "vx/Reference.h"

#include <cstdint>

namespace vx::collections::vorb {

/// A key of a map with its value: an element of the entry set of a map.
class VX_API MapEntry : public IVXUnknown {
public:
    virtual int compareTo(const Object& other) const = 0;
    virtual bool equals(const Object& other) const = 0;
    virtual Reference<IVXUnknown> getKey() const = 0;
    virtual Reference<IVXUnknown> getValue() const = 0;
    virtual std::uint32_t hashCode() const = 0;
    /// Returns the old value. The map changes as well.
    virtual Reference<IVXUnknown> setValue(IVXUnknown* value) = 0;

    /// Converts an element of an entry set. Adds no reference. Throws CastFailedException for anything else, null
    /// included.
    static const MapEntry& of(const IVXUnknown* element);
    static Reference<MapEntry> of(Reference<IVXUnknown> element);

protected:
    ~MapEntry() = default;
};

} // namespace vx::collections::vorb
