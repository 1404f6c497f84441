#pragma once

#include "vx/Reference.h"
#include "vx/io/ByteBuffer.h"

#include <cstdint>

namespace vx::io {

/// Reads a buffer from its position to its limit. Holds a reference to the buffer.
class VX_API ByteBufferInputStream : public InputStream {
public:
    /// Null is an empty buffer.
    explicit ByteBufferInputStream(ByteBuffer* buffer);
    ByteBufferInputStream(const ByteBufferInputStream&) = delete;
    ByteBufferInputStream& operator=(const ByteBufferInputStream&) = delete;

    // InputStream
    using InputStream::read;
    /// A `length` below 1 gives 0, but -1 at the end.
    std::int32_t read(signed char* target, std::int32_t length) override;

private:
    Reference<ByteBuffer> m_buffer;
};

/// Writes into a buffer from its position to its limit. Holds a reference to the buffer.
class VX_API ByteBufferOutputStream : public OutputStream {
public:
    /// Null is a buffer without room.
    explicit ByteBufferOutputStream(ByteBuffer* buffer);
    ByteBufferOutputStream(const ByteBufferOutputStream&) = delete;
    ByteBufferOutputStream& operator=(const ByteBufferOutputStream&) = delete;

    // OutputStream
    using OutputStream::write;
    /// Bytes that do not fit are dropped; `Overflowed` reports it.
    void write(const signed char* bytes, std::int32_t length) override;

    /// 1 once a byte was dropped, else 0.
    short Overflowed() const { return m_overflowed; }

private:
    Reference<ByteBuffer> m_buffer;
    short m_overflowed = 0;
};

} // namespace vx::io
