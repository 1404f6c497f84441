#pragma once

#include "vx/io/InputStream.h"

#include <cstdio>

namespace vx::io {

/// Reads the standard input of the process through the buffer of the C library: text, line by line. Failures are
/// IoExceptions, after which the next read may succeed. One thread at a time.
class VX_API StdioInputStream : public InputStream {
public:
    StdioInputStream();

    // InputStream
    using InputStream::read;
    /// At most one line with its line end. The last of `length` bytes is for a terminating zero, so a length of 1
    /// returns -1. The returned length ends at a zero byte in the input. For binary data use FileInputStream.
    std::int32_t read(signed char* target, std::int32_t length) override;
    int read() override;
    /// Moves the position, also backwards. Returns 0 if the stream has no position.
    std::int32_t skip(std::int32_t count) override;

private:
    std::FILE* m_stream;
};

} // namespace vx::io
