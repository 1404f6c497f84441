#pragma once

#include "vx/Reference.h"
#include "vx/detail/RawArray.h"
#include "vx/io/OutputStream.h"

namespace vx::io {

namespace detail {
template <class Stream>
struct BufferedOutput;
}

/// Collects small writes; a write at least as large as the buffer bypasses it.
///
/// Neither `close` nor the destructor flushes: pending bytes are lost. Holds a reference to the sink from construction
/// to destruction; after `close` every operation but `close` throws IoException "stream closed". A failure of the sink
/// reaches the caller and keeps the pending bytes.
class VX_API BufferedOutputStream : public OutputStream {
public:
    /// `size` in bytes, at least 16.
    BufferedOutputStream(OutputStream* sink, std::int32_t size);
    BufferedOutputStream(const BufferedOutputStream&) = delete;
    BufferedOutputStream& operator=(const BufferedOutputStream&) = delete;

    // OutputStream
    using OutputStream::write;
    void write(const signed char* bytes, std::int32_t length) override;
    void write(signed char byte) override;
    /// Also flushes the sink.
    void flush() override;
    /// Each call closes the sink, also a second one.
    void close() override;

private:
    friend struct detail::BufferedOutput<BufferedOutputStream>;
    using Unit = signed char;

    void ensureOpen() const;
    void flushBuffer();

    Reference<OutputStream> m_sink;
    std::int32_t m_bufferSize;
    vx::detail::RawArray<Unit> m_buffer; // null: closed
    std::int32_t m_count = 0;
};

} // namespace vx::io
