#pragma once

#include "vx/Reference.h"
#include "vx/detail/RawArray.h"
#include "vx/io/Reader.h"

namespace vx {
class String;
}

namespace vx::io {

namespace detail {
template <class Stream>
struct BufferedInput;
}

/// Reads another reader in blocks or line by line, and can return to a mark.
///
/// A mark holds at least until its limit has been read; it is lost only when the buffer must be refilled beyond that.
/// While no mark holds, a read at least as large as the buffer bypasses it. Holds a reference to the source from
/// construction to destruction; after `close` every operation but `close` and `markSupported` throws IoException
/// "stream closed". A failure of the source reaches the caller and leaves the buffer unchanged.
class VX_API BufferedReader : public Reader {
public:
    /// `size` in units, at least 16.
    BufferedReader(Reader* source, std::int32_t size);
    BufferedReader(const BufferedReader&) = delete;
    BufferedReader& operator=(const BufferedReader&) = delete;

    // Reader
    std::int32_t read(char16_t* target, std::int32_t length) override;
    int read() override;
    std::int32_t skip(std::int32_t count) override;
    std::int32_t available() override;
    /// Each call closes the source, also a second one.
    void close() override;
    bool markSupported() override;
    /// A limit above the buffer's size lets it grow to that size at the next refill.
    void mark(std::int32_t limit) override;
    /// May be repeated. Throws IoException "stream not marked" or "mark invalid".
    void reset() override;

    /// Reads the next line without its line end, which is LF, CR or CR LF. Returns its length, or -1 at the end of the
    /// text, with `line` empty. If the source fails, `line` has what was read of the line, and the next call reads the
    /// rest of it.
    virtual std::int32_t readLine(String& line);
    /// `readLine` for text of an untrusted source. Throws IoException for a line of more than `maximum` units; `line` has
    /// the first `maximum` ones, and the next call reads the rest. A `maximum` below 1 is taken as 1.
    std::int32_t readLimitedLine(String& line, std::int32_t maximum);

private:
    friend struct detail::BufferedInput<BufferedReader>;
    using Unit = char16_t;

    void ensureOpen() const;
    void fillBuffer();

    Reference<Reader> m_source;
    std::int32_t m_bufferSize;
    vx::detail::RawArray<Unit> m_buffer; // null: closed
    std::int32_t m_position = 0;
    std::int32_t m_count = 0;
    std::int32_t m_markLimit = 0;
    std::int32_t m_markPosition = -1; // -1: never marked, -2: overrun
};

} // namespace vx::io
