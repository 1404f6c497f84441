#pragma once

#include "vx/Object.h"

#include <cstdint>

namespace vx::io {

/// A flow of UTF-16 units to be read. A failure is an exception of the tree; the end of the flow is a result, not a
/// failure. Nothing is synchronised: one thread at a time.
class VX_API Reader : public Object {
public:
    /// The number of units stored, -1 at the end. At least 1 where `length` is at least 1 and text is there; 0 is no end.
    virtual std::int32_t read(char16_t* target, std::int32_t length) = 0;
    /// The next unit from 0 to 65535, or -1.
    virtual int read();
    /// Reads and drops. The number dropped is below `count` only at the end.
    virtual std::int32_t skip(std::int32_t count);
    /// Units that can be read without waiting; 0 where nobody knows.
    virtual std::int32_t available();
    virtual void close();
    virtual bool markSupported();
    /// Remembers this place for `reset`, which may fail once more than `limit` units have been read.
    virtual void mark(std::int32_t limit);
    /// Goes back to the mark. Throws IoException where there is none, or no way back.
    virtual void reset();
};

} // namespace vx::io
