#pragma once

#include "vx/Object.h"

#include <cstdint>

namespace vx {
class String;
}

namespace vx::io {

/// A flow of UTF-16 units to be written. A failure is an exception of the tree. Nothing is synchronised: one thread at a
/// time.
class VX_API Writer : public Object {
public:
    /// One write of the whole text under its read lock.
    virtual void write(const String& text);
    /// Zero-terminated.
    virtual void write(const char16_t* text);
    virtual void write(const char16_t* text, std::int32_t length) = 0;
    virtual void write(char16_t ch);
    virtual void flush();
    /// Never flushes: what is pending is lost unless `flush` came first.
    virtual void close();
};

} // namespace vx::io
