#pragma once

#include "vx/Object.h"

#include <cstdint>

namespace vx {
class String;
}

namespace vx::io {

/// A sink for UTF-16 units. Failures throw an Exception. Not synchronised: one thread at a time.
class VX_API Writer : public Object {
public:
    /// One write of the whole text under its read lock.
    virtual void write(const String& text);
    /// Zero-terminated.
    virtual void write(const char16_t* text);
    virtual void write(const char16_t* text, std::int32_t length) = 0;
    virtual void write(char16_t ch);
    virtual void flush();
    /// Never flushes: pending data is lost unless `flush` is called before.
    virtual void close();
};

} // namespace vx::io
