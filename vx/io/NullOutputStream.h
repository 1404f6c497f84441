#pragma once

#include "vx/io/OutputStream.h"

namespace vx::io {

/// Discards everything and never fails.
class VX_API NullOutputStream : public OutputStream {
public:
    // OutputStream
    using OutputStream::write;
    void write(const signed char* bytes, std::int32_t length) override;
    void write(signed char byte) override;
    void flush() override;
    void close() override;
};

} // namespace vx::io
