#pragma once

#include "vx/Reference.h"
#include "vx/detail/RawArray.h"
#include "vx/io/OutputStream.h"
#include "vx/io/Writer.h"
#include "vx/text/charset/CharToByteConverter.h"

namespace vx::io {

/// Text into a byte stream in some encoding.
///
/// Neither `close` nor the destructor flushes: encoded bytes that still wait are lost. Malformed input passes through as
/// the converter's exception. After a failure the next call decides what happens to the text that was refused: `flush`
/// writes what was encoded of it, and `write` drops it, so that no part of it is written later with the next text. The
/// refused text is the last one; it is everything since the last flush when the stream below fails at a flush. An
/// `EntryStream` below gives back its part of it.
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
    /// Ends the conversion, writes what waits and flushes the sink.
    void flush() override;
    /// Each call closes the sink, a second one too.
    void close() override;

    /// The encoding's canonical name.
    virtual const char16_t* getEncodingName();

    /// As the converter's; it starts true.
    void setSubstitutionMode(bool mode);
    /// Units taken so far. After a converter's exception this is the unit that it could not encode.
    std::int64_t getPosition() const { return m_position; }

private:
    /// How things stood when the last text came.
    struct Start {
        std::int32_t waiting = 0;
        std::int64_t written = 0; ///< bytes that the sink has taken since then
        char16_t heldLead = 0;
        std::int64_t position = 0;
    };
    enum class Refused { NOTHING, LAST_TEXT, ALL_THAT_WAITS };

    void ensureOpen() const;
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
    /// The last unit written, if it is half of a pair that the converter wants whole; 0 for none.
    char16_t m_heldLead = 0;
    std::int64_t m_position = 0;
    Start m_start;
    Refused m_refused = Refused::NOTHING;
    bool m_hasSinkFailed = false; ///< in the call that was refused
};

} // namespace vx::io
