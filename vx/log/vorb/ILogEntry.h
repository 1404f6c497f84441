#pragma once

#include "vx/IVXUnknown.h"

#include <cstdint>

namespace vx::log::vorb {

class IFieldIterator;

/// A log entry as components see it. `name` is zero-terminated.
class VX_API ILogEntry : public IVXUnknown {
public:
    using InterfaceType = ILogEntry;
    static constexpr _GUID IID {0x08D884D0, 0x83C1, 0x4881, {0x9A, 0xDF, 0x7A, 0xEA, 0x1A, 0x72, 0x56, 0xEC}};

    /// RESULT_FAIL if the value is not an object of this library.
    virtual std::int32_t SetField(const char16_t* name, IVXUnknown* value) = 0;
    /// The value's interface `iid`, with a reference for the caller; RESULT_FAIL and null if there is no such field.
    virtual std::int32_t GetField(const char16_t* name, const _GUID& iid, void** out) const = 0;
    /// 0 if the field is there, 1 if not.
    virtual std::int32_t HasField(const char16_t* name) const = 0;
    /// An iterator over the names, with a reference for the caller.
    virtual std::int32_t GetFieldIterator(IFieldIterator** out) const = 0;

protected:
    ~ILogEntry() = default;
};

} // namespace vx::log::vorb
