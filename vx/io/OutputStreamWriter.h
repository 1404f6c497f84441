#pragma once

#include "vx/Reference.h"
#include "vx/detail/RawArray.h"
#include "vx/io/OutputStream.h"
#include "vx/io/Writer.h"
#include "vx/text/charset/CharToByteConverter.h"

#include <cstdint>
#include <span>

namespace vx::log::detail {
class LogWriterFace;
}

namespace vx::io {

/// Encodes text into a byte stream in some encoding.
///
/// Neither `close` nor the destructor flushes: pending bytes are lost. For malformed input the converter's exception
/// reaches the caller. After a failure the next call decides what happens to the failed text: `flush` writes what was
/// encoded of it, and `write` drops it, so that no part of it is written with the next text. The failed text is that of
/// the last call, or everything since the last flush if the wrapped stream fails at a flush. An `EntryStream` as the
/// sink drops its part of it as well.
///
/// Holds a reference to the sink from construction to destruction; after `close` every operation but `close` and
/// `getPosition` throws IoException "stream closed".
class VX_API OutputStreamWriter : public Writer {
public:
    /// `size` of the buffer in bytes, at least 6 and what one character may take. A null `encoding` is the default
    /// encoding; an unknown one throws UnknownEncodingException.
    OutputStreamWriter(OutputStream* sink, const char16_t* encoding, std::int32_t size);
    OutputStreamWriter(const OutputStreamWriter&) = delete;
    OutputStreamWriter& operator=(const OutputStreamWriter&) = delete;

    // Writer
    using Writer::write;
    void write(const char16_t* text, std::int32_t length) override;
    /// Ends the conversion, writes pending bytes and flushes the sink.
    void flush() override;
    /// Each call closes the sink, also a second one.
    void close() override;

    /// The encoding's canonical name.
    virtual const char16_t* getEncodingName();

    /// The substitution mode of the converter, at first true.
    void setSubstitutionMode(bool mode);
    /// Units consumed so far. After a converter's exception, the position of the unit that could not be encoded; for a
    /// leading surrogate without a trailing one, that of the unit after it.
    std::int64_t getPosition() const { return m_position; }

private:
    friend class log::detail::LogWriterFace;

    /// The state before the last text.
    struct Start {
        std::int32_t waiting = 0;
        std::int64_t written = 0; ///< bytes written to the sink since then
        char16_t heldLead = 0;
        std::int64_t position = 0;
    };
    enum class Refused { NOTHING, LAST_TEXT, ALL_THAT_WAITS };

    void ensureOpen() const;
    bool writeAscii(const char16_t* text, std::int32_t length) noexcept;
    /// Where the bytes of a text in UTF-8 may be written without the converter. Empty if they may not.
    std::span<signed char> roomForUtf8() noexcept;
    /// Such a text is complete. `units` is its length in UTF-16.
    void takeUtf8(std::int32_t bytes, std::int32_t units) noexcept;
    void encode(const char16_t* text, std::int32_t length);
    void takeLead(char16_t lead);
    std::int32_t convert(const char16_t* text, std::int32_t* consumed, std::int32_t length);
    void flushConverter();
    void writeWaiting();
    void refuse(Refused what);
    void dropRefused();

    Reference<OutputStream> m_sink;
    Reference<text::charset::CharToByteConverter> m_converter; // null: closed
    std::int32_t m_bufferSize;
    vx::detail::RawArray<signed char> m_buffer;
    std::int32_t m_waiting = 0;
    /// The last unit written, if it is the first half of a pair that the converter only takes as a whole; 0 for none.
    char16_t m_heldLead = 0;
    bool m_isUtf8 = false; ///< by the converter of this library, which keeps nothing between whole texts
    std::int64_t m_position = 0;
    Start m_start;
    Refused m_refused = Refused::NOTHING;
    bool m_hasSinkFailed = false; ///< in the failed call
};

} // namespace vx::io
