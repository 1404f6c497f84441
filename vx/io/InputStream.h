#pragma once

#include "vx/Object.h"

#include <cstdint>

namespace vx::io {

/// A sequence of bytes to be read. Failures throw an Exception; the end of the stream is a result, not a failure. Not
/// synchronised: one thread at a time.
class VX_API InputStream : public Object {
public:
    /// These two are for callers with other byte types and call the one for `signed char`.
    virtual std::int32_t read(unsigned char* target, std::int32_t length);
    virtual std::int32_t read(char* target, std::int32_t length);
    /// The number of bytes stored, -1 at the end. At least 1 if `length` is at least 1 and data is available; 0 does
    /// not mean the end.
    virtual std::int32_t read(signed char* target, std::int32_t length) = 0;
    /// The next byte from 0 to 255, or -1.
    virtual int read();
    /// Reads and discards. Returns fewer than `count` only at the end. If it throws, what was skipped before stays
    /// skipped, and only a mark leads back.
    virtual std::int32_t skip(std::int32_t count);
    /// Bytes that can be read without waiting; 0 if that is unknown.
    virtual std::int32_t available();
    virtual void close();
    virtual bool markSupported();
    /// Marks the current position for `reset`, which may fail after more than `limit` bytes have been read.
    virtual void mark(std::int32_t limit);
    /// Returns to the mark. Throws IoException if there is none, or if it is no longer valid.
    virtual void reset();
};

} // namespace vx::io
