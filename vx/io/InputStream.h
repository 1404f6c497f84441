#pragma once

#include "vx/Object.h"

#include <cstdint>

namespace vx::io {

/// A flow of bytes to be read. A failure is an exception of the tree; the end of the flow is a result, not a failure.
/// Nothing is synchronised: one thread at a time.
class VX_API InputStream : public Object {
public:
    /// These two are for callers with plain bytes and go through the one for `signed char`.
    virtual std::int32_t read(unsigned char* target, std::int32_t length);
    virtual std::int32_t read(char* target, std::int32_t length);
    /// The number of bytes stored, -1 at the end. At least 1 where `length` is at least 1 and data is there; 0 is no end.
    virtual std::int32_t read(signed char* target, std::int32_t length) = 0;
    /// The next byte from 0 to 255, or -1.
    virtual int read();
    /// Reads and drops. The number dropped is below `count` only at the end.
    virtual std::int32_t skip(std::int32_t count);
    /// Bytes that can be read without waiting; 0 where nobody knows.
    virtual std::int32_t available();
    virtual void close();
    virtual bool markSupported();
    /// Remembers this place for `reset`, which may fail once more than `limit` bytes have been read.
    virtual void mark(std::int32_t limit);
    /// Goes back to the mark. Throws IoException where there is none, or no way back.
    virtual void reset();
};

} // namespace vx::io
