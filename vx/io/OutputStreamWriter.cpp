#include "vx/io/OutputStreamWriter.h"

#include "vx/io/detail/BridgeChecks.h"
#include "vx/text/charset/CharsetException.h"

namespace vx::io {

using text::charset::CharToByteConverter;
using text::charset::InvalidCharacterException;

namespace {

/// Rounds that may pass without a unit consumed: a shift sequence, what is waiting, and once more for good measure.
constexpr int MAX_IDLE_ROUNDS = 3;

/// Far more than any encoding holds back.
constexpr int MAX_FLUSH_ROUNDS = 16;

bool isLead(char16_t unit) noexcept
{
    return (unit & 0xFC00) == 0xD800;
}

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
    , m_buffer(util::makeRawArray<signed char>(m_bufferSize))
{
}

void OutputStreamWriter::write(const char16_t* text, std::int32_t length)
{
    ensureOpen();
    if (length < 1)
        return;
    detail::requireUnits(text);

    for (; m_heldLead != 0 && length > 0; --length) {
        const char16_t pair[] = {m_heldLead, *text++};
        m_heldLead = encode(pair, 2) == 2 ? u'\0' : pair[1];
    }
    const std::int32_t consumed = encode(text, length);
    if (consumed < length)
        m_heldLead = text[consumed];
}

void OutputStreamWriter::flush()
{
    ensureOpen();
    if (m_heldLead != 0)
        throw InvalidCharacterException(u"leading surrogate without trailing");
    flushConverter();
    for (int round = 0; m_waiting > 0; ++round) {
        if (round == MAX_FLUSH_ROUNDS)
            detail::throwStuckConverter();
        writeWaiting();
        flushConverter();
    }
    detail::opened(m_sink).flush();
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

/// Returns the units consumed: all of them, or all but a last lead surrogate that the converter wants to see together with
/// its other half.
std::int32_t OutputStreamWriter::encode(const char16_t* text, std::int32_t length)
{
    std::int32_t consumed = 0;
    const Advance advance(m_position, consumed);
    int idleRounds = 0;
    while (consumed < length) {
        const std::int32_t consumedBefore = consumed;
        const std::int32_t waitingBefore = m_waiting;
        const std::int32_t produced
            = m_converter->convert(text, &consumed, length, m_buffer.get(), &m_waiting, m_bufferSize);
        detail::requireIndex(consumed, consumedBefore, length);
        detail::requireIndex(m_waiting, waitingBefore, m_bufferSize);

        if (consumed > consumedBefore)
            idleRounds = 0;
        else if (m_waiting == 0 && consumed == length - 1 && isLead(text[consumed]))
            break;
        else if (++idleRounds > MAX_IDLE_ROUNDS)
            detail::throwStuckConverter();

        if (m_waiting == m_bufferSize || produced == 0)
            writeWaiting();
    }
    return consumed;
}

void OutputStreamWriter::flushConverter()
{
    const std::int32_t waitingBefore = m_waiting;
    m_converter->flush(m_buffer.get(), &m_waiting, m_bufferSize);
    detail::requireIndex(m_waiting, waitingBefore, m_bufferSize);
}

void OutputStreamWriter::writeWaiting()
{
    detail::requireIndex(m_waiting, 0, m_bufferSize);
    detail::opened(m_sink).write(m_buffer.get(), m_waiting);
    m_waiting = 0;
}

} // namespace vx::io
