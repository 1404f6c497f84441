#pragma once

#include "vx/IVXUnknown.h"
#include "vx/Reference.h"

namespace vx {
class Object;
class String;
} // namespace vx

namespace vx::collections {
template <class T>
class Set;
}

namespace vx::log {

/// A small map of named fields: what one call of a logger has to say. Filled by one thread, then only read.
class VX_API ILogEntry : public IVXUnknown {
public:
    /// Drops an earlier value of that name. The entry holds a count on the value.
    virtual void setField(const String& name, const Object* value) = 0;
    /// Throws ResultException with RESULT_END_OF_FILE for a field that is not there.
    virtual Reference<const Object> getField(const String& name) const = 0;
    virtual bool hasField(const String& name) const = 0;
    /// In an order of the map's own, not that of setting.
    virtual Reference<const collections::Set<String>> getFieldNames() const = 0;

protected:
    ~ILogEntry() = default;
};

} // namespace vx::log
