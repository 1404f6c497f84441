#pragma once

#include "vx/String.h"
#include "vx/detail/RawArray.h"
#include "vx/io/OutputStream.h"

namespace vx::io {

/// Keeps in memory what is written. It has no closed state. Where the storage cannot grow, std::bad_alloc is thrown and
/// the content stands as it was.
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

    /// A null `encoding` is the default encoding; one that nobody knows throws UnknownEncodingException.
    String toString(const char16_t* encoding) const;
    /// Valid until the next growth; null where nothing was allocated yet.
    const signed char* getBytes() const { return m_buffer.get(); }
    /// Copies at most `length` bytes from the start and gives their number.
    std::int32_t getBytes(signed char* target, std::int32_t length) const;
    /// Bytes written.
    std::int32_t getSize() const { return m_size; }
    /// Forgets the bytes and keeps the storage.
    void reset();
    /// One `write` of all bytes. A null `stream` throws IoException "stream closed".
    void writeTo(OutputStream* stream) const;

protected:
    /// Grows to a quarter more than `capacity` where there is less than that.
    void ensureCapacity(std::int32_t capacity);
    /// Storage of exactly `capacity` bytes; a smaller one cuts the content.
    void reallocBuffer(std::int32_t capacity);

private:
    /// As `reallocBuffer`; gives the old storage, which the bytes to be written may lie in.
    vx::detail::RawArray<signed char> exchangeBuffer(std::int32_t capacity);

    vx::detail::RawArray<signed char> m_buffer;
    std::int32_t m_size = 0;
    std::int32_t m_capacity;
};

} // namespace vx::io
