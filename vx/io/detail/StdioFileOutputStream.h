#pragma once

#include "vx/io/OutputStream.h"

#include <cstdio>

namespace vx::io {

/// Writes to a stream of the C library, owned or not. `StdioOutputStream` is the same for standard output.
class StdioFileOutputStream : public OutputStream {
public:
    StdioFileOutputStream(std::FILE* stream, bool owned);
    StdioFileOutputStream(const StdioFileOutputStream&) = delete;
    StdioFileOutputStream& operator=(const StdioFileOutputStream&) = delete;
    ~StdioFileOutputStream() noexcept(false) override;

    // OutputStream
    using OutputStream::write;
    void write(const signed char* bytes, std::int32_t length) override;
    void write(signed char byte) override;
    void flush() override;
    void close() override;

private:
    std::FILE* m_stream;
    bool m_owned;
};

} // namespace vx::io
