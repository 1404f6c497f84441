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

/// A small map of named fields: the content of one logger call. Filled by one thread, then only read.
class VX_API ILogEntry : public IVXUnknown {
public:
    /// Replaces an earlier value of that name. The entry holds a reference to the value.
    virtual void setField(const String& name, const Object* value) = 0;
    /// Throws ResultException with RESULT_END_OF_FILE if there is no such field.
    virtual Reference<const Object> getField(const String& name) const = 0;
    virtual bool hasField(const String& name) const = 0;
    /// In the order of the map, not the order in which they were set.
    virtual Reference<const collections::Set<String>> getFieldNames() const = 0;

protected:
    ~ILogEntry() = default;
};

} // namespace vx::log
