#pragma once

#include "vx/Object.h"

#include <cstdint>

namespace vx::io {

/// A sink for bytes. Failures throw an Exception. Not synchronised: one thread at a time.
class VX_API OutputStream : public Object {
public:
    /// These two are for callers with other byte types and call the one for `signed char`.
    virtual void write(const unsigned char* bytes, std::int32_t length);
    virtual void write(const char* bytes, std::int32_t length);
    virtual void write(const signed char* bytes, std::int32_t length) = 0;
    virtual void write(signed char byte);
    virtual void flush();
    /// Never flushes: pending data is lost unless `flush` is called before.
    virtual void close();
};

} // namespace vx::io
