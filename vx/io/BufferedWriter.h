#pragma once

#include "vx/Reference.h"
#include "vx/detail/RawArray.h"
#include "vx/io/Writer.h"

namespace vx::io {

namespace detail {
template <class Stream>
struct BufferedOutput;
}

/// Collects small writes; a write at least as large as the buffer bypasses it.
///
/// Neither `close` nor the destructor flushes: pending text is lost. Holds a reference to the sink from construction to
/// destruction; after `close` every operation but `close` throws IoException "stream closed". A failure of the sink
/// reaches the caller and keeps the pending text.
class VX_API BufferedWriter : public Writer {
public:
    /// `size` in units, at least 16.
    BufferedWriter(Writer* sink, std::int32_t size);
    BufferedWriter(const BufferedWriter&) = delete;
    BufferedWriter& operator=(const BufferedWriter&) = delete;

    // Writer
    using Writer::write;
    void write(const char16_t* text, std::int32_t length) override;
    void write(char16_t ch) override;
    /// Also flushes the sink.
    void flush() override;
    /// Each call closes the sink, also a second one.
    void close() override;

private:
    friend struct detail::BufferedOutput<BufferedWriter>;
    using Unit = char16_t;

    void ensureOpen() const;
    void flushBuffer();

    Reference<Writer> m_sink;
    std::int32_t m_bufferSize;
    vx::detail::RawArray<Unit> m_buffer; // null: closed
    std::int32_t m_count = 0;
};

} // namespace vx::io
