#pragma once

#include "vx/io/Writer.h"

namespace vx::io {

/// Discards everything and never fails.
class VX_API NullWriter : public Writer {
public:
    // Writer
    void write(const String& text) override;
    void write(const char16_t* text) override;
    void write(const char16_t* text, std::int32_t length) override;
    void write(char16_t ch) override;
    void flush() override;
    void close() override;
};

} // namespace vx::io
