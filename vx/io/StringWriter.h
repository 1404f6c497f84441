#pragma once

#include "vx/String.h"
#include "vx/io/Writer.h"

namespace vx::io {

/// Collects text in a `String`. It has no closed state.
class VX_API StringWriter : public Writer {
public:
    /// `capacity` in units.
    explicit StringWriter(int capacity = 0);
    StringWriter(const StringWriter& other);
    StringWriter& operator=(const StringWriter& other);

    // Writer
    using Writer::write;
    void write(const char16_t* text, std::int32_t length) override;

    // Object
    /// The text so far. It shares the buffer until the writer or the string changes.
    String toString() const override;

private:
    String m_text;
};

} // namespace vx::io
