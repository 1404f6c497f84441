#pragma once

#include "vx/Object.h"

#include <cstdint>

namespace vx::io {

/// A flow of bytes to be written. A failure is an exception of the tree. Nothing is synchronised: one thread at a time.
class VX_API OutputStream : public Object {
public:
    /// These two are for callers with plain bytes and go through the one for `signed char`.
    virtual void write(const unsigned char* bytes, std::int32_t length);
    virtual void write(const char* bytes, std::int32_t length);
    virtual void write(const signed char* bytes, std::int32_t length) = 0;
    virtual void write(signed char byte);
    virtual void flush();
    /// Never flushes: what is pending is lost unless `flush` came first.
    virtual void close();
};

} // namespace vx::io
