#pragma once

#include "vx/String.h"
#include "vx/detail/RawArray.h"
#include "vx/io/OutputStream.h"

namespace vx::io {

/// Stores what is written in memory. It has no closed state. If the storage cannot grow, throws std::bad_alloc and
/// leaves the content unchanged.
class VX_API ByteArrayOutputStream : public OutputStream {
public:
    /// A negative `capacity` is taken as 0.
    explicit ByteArrayOutputStream(std::int32_t capacity = 256);
    ByteArrayOutputStream(const ByteArrayOutputStream&) = delete;
    ByteArrayOutputStream& operator=(const ByteArrayOutputStream&) = delete;

    // OutputStream
    using OutputStream::write;
    void write(const signed char* bytes, std::int32_t length) override;

    // Object
    /// Decodes all bytes with the default encoding.
    String toString() const override;

    /// A null `encoding` is the default encoding; an unknown one throws UnknownEncodingException.
    String toString(const char16_t* encoding) const;
    /// Valid until the next growth; null if nothing has been allocated yet.
    const signed char* getBytes() const { return m_buffer.get(); }
    /// Copies at most `length` bytes from the start and returns their number.
    std::int32_t getBytes(signed char* target, std::int32_t length) const;
    /// Bytes written.
    std::int32_t getSize() const { return m_size; }
    /// Removes the bytes and keeps the storage.
    void reset();
    /// One `write` of all bytes. A null `stream` throws IoException "stream closed".
    void writeTo(OutputStream* stream) const;

protected:
    /// Grows to a quarter more than `capacity` if the storage is smaller than `capacity`.
    void ensureCapacity(std::int32_t capacity);
    /// Makes the storage exactly `capacity` bytes; a smaller one truncates the content.
    void reallocBuffer(std::int32_t capacity);

private:
    friend class DataOutputStream;

    /// The place of `count` bytes that count as written; null if the storage has to grow.
    signed char* extend(std::int32_t count)
    {
        if (count > m_capacity - m_size)
            return nullptr;
        m_size += count;
        return m_buffer.get() + m_size - count;
    }
    /// As `reallocBuffer`. Returns the old storage, because the bytes to be written may be in it.
    vx::detail::RawArray<signed char> exchangeBuffer(std::int32_t capacity);

    vx::detail::RawArray<signed char> m_buffer;
    std::int32_t m_size = 0;
    std::int32_t m_capacity;
};

} // namespace vx::io
