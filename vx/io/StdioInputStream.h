#pragma once

#include "vx/io/InputStream.h"

#include <cstdio>

namespace vx::io {

/// The process's standard input, through the C library and its buffer: text, line by line. Failures are IoExceptions, and
/// the stream may be tried again. One thread at a time.
class VX_API StdioInputStream : public InputStream {
public:
    StdioInputStream();

    // InputStream
    using InputStream::read;
    /// At most one line with its line end. Of `length` bytes the last is for a terminating zero, so that a length of 1 gives
    /// -1; a zero byte in the input ends what the call tells. Bytes that matter as such: FileInputStream.
    std::int32_t read(signed char* target, std::int32_t length) override;
    int read() override;
    /// Moves the position, also backwards. 0 where there is none to move.
    std::int32_t skip(std::int32_t count) override;

private:
    std::FILE* m_stream;
};

} // namespace vx::io
