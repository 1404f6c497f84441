#pragma once

#include "vx/Reference.h"
#include "vx/io/OutputStream.h"

#include <cstdio>

namespace vx::io {

/// Writes to the standard output of the process. Single bytes are written through the C library's buffer, and blocks
/// bypass it, so call `flush` when changing from single bytes to blocks. Failures are IoExceptions. One thread at a
/// time.
class VX_API StdioOutputStream : public OutputStream {
public:
    StdioOutputStream();

    // OutputStream
    using OutputStream::write;
    /// One system call; a partial write is a failure.
    void write(const signed char* bytes, std::int32_t length) override;
    void write(signed char byte) override;
    void flush() override;
    /// Standard output stays open.
    void close() override;

    /// A new stream on standard error, which it does not close.
    static Reference<OutputStream> getStdErrorStream();

private:
    std::FILE* m_stream;
};

} // namespace vx::io
