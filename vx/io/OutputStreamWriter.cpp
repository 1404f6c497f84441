#include "vx/io/OutputStreamWriter.h"

#include "vx/detail/ExactType.h"
#include "vx/io/EntryStream.h"
#include "vx/io/detail/BridgeChecks.h"
#include "vx/text/charset/CTBUTF8.h"
#include "vx/text/charset/CharsetException.h"
#include "vx/text/charset/detail/ByteRuns.h"
#include "vxsys/Surrogate.h"

#include <limits>
#include <utility>

namespace vx::io {

using text::charset::CharToByteConverter;
using text::charset::InvalidCharacterException;
using vxsys::isLead;

namespace {

/// The most rounds that may consume no unit: one for a shift sequence, one for pending output, and one as a margin.
constexpr int MAX_IDLE_ROUNDS = 3;

/// Far more than any encoding keeps pending.
constexpr int MAX_FLUSH_ROUNDS = 16;

/// Adds what was consumed, however the block is left.
class [[nodiscard]] Advance {
public:
    Advance(std::int64_t& position, const std::int32_t& consumed) noexcept
        : m_position(position)
        , m_consumed(consumed)
    {
    }
    ~Advance() { m_position += m_consumed; }
    Advance(const Advance&) = delete;
    Advance& operator=(const Advance&) = delete;

private:
    std::int64_t& m_position;
    const std::int32_t& m_consumed;
};

} // namespace

OutputStreamWriter::OutputStreamWriter(OutputStream* sink, const char16_t* encoding, std::int32_t size)
    : m_sink(sink)
    , m_converter(CharToByteConverter::getConverter(encoding))
    , m_bufferSize(detail::byteBufferSize(size, *m_converter))
    , m_buffer(vx::detail::makeRawArray<signed char>(m_bufferSize))
    , m_isUtf8(vx::detail::isExactly<text::charset::CTBUTF8>(*m_converter))
{
}

void OutputStreamWriter::write(const char16_t* text, std::int32_t length)
{
    ensureOpen();
    if (length < 1 || writeAscii(text, length))
        return;
    detail::requireUnits(text);

    dropRefused();
    m_start = {m_waiting, 0, m_heldLead, m_position};
    m_hasSinkFailed = false;
    try {
        if (m_heldLead != 0) {
            const char16_t pair[] = {std::exchange(m_heldLead, u'\0'), *text++};
            --length;
            --m_position; // the lead surrogate was counted already
            encode(pair, 2);
        }
        const bool endsInLead = length > 0 && isLead(text[length - 1]);
        encode(text, endsInLead ? length - 1 : length);
        if (endsInLead)
            takeLead(text[length - 1]);
    } catch (...) {
        refuse(Refused::LAST_TEXT);
        throw;
    }
}

void OutputStreamWriter::flush()
{
    ensureOpen();
    if (m_heldLead != 0) {
        --m_position;
        m_hasSinkFailed = false;
        refuse(Refused::LAST_TEXT);
        throw InvalidCharacterException(u"leading surrogate without trailing");
    }
    try {
        flushConverter();
        for (int round = 0; m_waiting > 0; ++round) {
            if (round == MAX_FLUSH_ROUNDS)
                detail::throwStuckConverter();
            writeWaiting();
            flushConverter();
        }
        detail::opened(m_sink).flush();
    } catch (...) {
        refuse(Refused::ALL_THAT_WAITS);
        throw;
    }
    m_refused = Refused::NOTHING;
}

void OutputStreamWriter::close()
{
    m_converter = nullptr;
    m_buffer.reset();
    if (m_sink != nullptr)
        m_sink->close();
}

const char16_t* OutputStreamWriter::getEncodingName()
{
    ensureOpen();
    return m_converter->getEncodingName();
}

void OutputStreamWriter::setSubstitutionMode(bool mode)
{
    ensureOpen();
    m_converter->setSubstitutionMode(mode);
}

void OutputStreamWriter::ensureOpen() const
{
    detail::requireOpen(m_converter != nullptr);
}

/// Most texts are short and have only ASCII: they need no converter, and fail at nothing. False for any other.
bool OutputStreamWriter::writeAscii(const char16_t* text, std::int32_t length) noexcept
{
    const std::span<signed char> room = roomForUtf8();
    if (text == nullptr || length > std::ssize(room)
        || !text::charset::detail::narrowIfAscii(text, room.data(), length))
        return false;
    takeUtf8(length, length);
    return true;
}

std::span<signed char> OutputStreamWriter::roomForUtf8() noexcept
{
    if (!m_isUtf8 || m_buffer == nullptr || m_heldLead != 0 || m_refused != Refused::NOTHING)
        return {};
    // a full buffer is written at once
    return {m_buffer.get() + m_waiting, static_cast<std::size_t>(m_bufferSize - m_waiting - 1)};
}

void OutputStreamWriter::takeUtf8(std::int32_t bytes, std::int32_t units) noexcept
{
    m_waiting += bytes;
    m_position += units;
}

/// Encodes all of `text`, which does not end with a lead surrogate.
void OutputStreamWriter::encode(const char16_t* text, std::int32_t length)
{
    std::int32_t consumed = 0;
    const Advance advance(m_position, consumed);
    int idleRounds = 0;
    while (consumed < length) {
        const std::int32_t consumedBefore = consumed;
        const std::int32_t produced = convert(text, &consumed, length);
        if (consumed > consumedBefore)
            idleRounds = 0;
        else if (++idleRounds > MAX_IDLE_ROUNDS)
            detail::throwStuckConverter();

        if (m_waiting == m_bufferSize || produced == 0)
            writeWaiting();
    }
}

/// Handles a lead surrogate at the end of a text. Some encoders write it, some keep it, some do not consume it until
/// its other half arrives. The last two are treated the same: only this class keeps it.
void OutputStreamWriter::takeLead(char16_t lead)
{
    std::int32_t consumed = 0;
    std::int32_t produced = convert(&lead, &consumed, 1);
    if (consumed == 0 && m_bufferSize - m_waiting < m_converter->getMaxBytesPerChar()) { // there may be too little room
        writeWaiting();
        produced = convert(&lead, &consumed, 1);
    }
    ++m_position;
    if (produced == 0) {
        m_converter->reset();
        m_heldLead = lead;
    } else if (m_waiting == m_bufferSize) {
        writeWaiting();
    }
}

std::int32_t OutputStreamWriter::convert(const char16_t* text, std::int32_t* consumed, std::int32_t length)
{
    const std::int32_t consumedBefore = *consumed;
    const std::int32_t waitingBefore = m_waiting;
    const std::int32_t produced
        = m_converter->convert(text, consumed, length, m_buffer.get(), &m_waiting, m_bufferSize);
    detail::requireIndex(*consumed, consumedBefore, length);
    detail::requireIndex(m_waiting, waitingBefore, m_bufferSize);
    return produced;
}

void OutputStreamWriter::flushConverter()
{
    if (m_isUtf8)
        return;
    const std::int32_t waitingBefore = m_waiting;
    m_converter->flush(m_buffer.get(), &m_waiting, m_bufferSize);
    detail::requireIndex(m_waiting, waitingBefore, m_bufferSize);
}

void OutputStreamWriter::writeWaiting()
{
    detail::requireIndex(m_waiting, 0, m_bufferSize);
    m_hasSinkFailed = true;
    detail::opened(m_sink).write(m_buffer.get(), m_waiting);
    m_hasSinkFailed = false;
    m_start.written += m_waiting;
    m_waiting = 0;
}

/// Encoded bytes are kept for a flush. The converter is reset, so that nothing of this text precedes the next one.
void OutputStreamWriter::refuse(Refused what)
{
    m_refused = what;
    m_heldLead = 0;
    m_converter->reset();
}

void OutputStreamWriter::dropRefused()
{
    if (m_refused == Refused::NOTHING)
        return;
    auto* const entry = dynamic_cast<EntryStream*>(m_sink.get());
    if (m_refused == Refused::ALL_THAT_WAITS) {
        m_waiting = 0;
        if (entry != nullptr)
            entry->takeBack(std::numeric_limits<std::int64_t>::max());
    } else {
        if (m_start.written == 0) {
            m_waiting = m_start.waiting;
        } else {
            m_waiting = 0; // the bytes pending before the text were written with its first part
            if (entry != nullptr)
                entry->takeBack(m_start.written - m_start.waiting);
        }
        if (m_hasSinkFailed) // the pair did not cause the failure
            m_heldLead = m_start.heldLead;
        m_position = m_start.position;
    }
    m_refused = Refused::NOTHING;
}

} // namespace vx::io
