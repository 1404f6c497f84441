#include "vx/io/InputStreamReader.h"

#include "vx/io/detail/BridgeChecks.h"
#include "vx/text/charset/CharsetException.h"
#include "vxsys/Thread.h"

#include <algorithm>
#include <cstring>

namespace vx::io {

using text::charset::ByteToCharConverter;
using text::charset::InvalidCharacterException;

namespace {

constexpr char16_t REPLACEMENT = u'\uFFFD';

} // namespace

InputStreamReader::InputStreamReader(InputStream* source, const char16_t* encoding, std::int32_t size)
    : m_source(source)
    , m_converter(ByteToCharConverter::getConverter(encoding))
    , m_bufferSize(detail::byteBufferSize(size, *m_converter))
    , m_buffer(vx::detail::makeRawArray<signed char>(m_bufferSize))
{
}

std::int32_t InputStreamReader::read(char16_t* target, std::int32_t length)
{
    ensureOpen();
    if (length < 1)
        return 0;
    detail::requireUnits(target);
    detail::requireIndex(m_position, 0, m_end);

    std::int32_t done = takeHeld(target, length);
    bool stuck = false;
    while (done < length) {
        if (m_position == m_end || stuck) {
            if (!m_endOfStream) {
                if (done > 0 && detail::opened(m_source).available() < 1)
                    return done; // decoded text is returned before a read that may block
                fillBuffer();
            }
            if (m_endOfStream && m_position == m_end) {
                m_converter->flush(target, &done, length);
                detail::requireIndex(done, 0, length);
                return done > 0 ? done : -1;
            }
            if (m_endOfStream && stuck) {
                if (!m_converter->getSubstitutionMode()) {
                    if (done > 0)
                        return done; // the next call throws, and then no decoded text is lost
                    throw InvalidCharacterException(u"the stream ends inside a character");
                }
                target[done++] = REPLACEMENT;
                ++m_position;
                stuck = false;
                continue;
            }
        }
        const std::int32_t positionBefore = m_position;
        const std::int32_t doneBefore = done;
        try {
            m_converter->convert(m_buffer.get(), &m_position, m_end, target, &done, length);
        } catch (...) {
            vxsys::passForcedUnwind();
            if (done < length)
                throw;
            // The caller gets all units that it requested. The next call finds the error again.
        }
        detail::requireIndex(m_position, positionBefore, m_end);
        detail::requireIndex(done, doneBefore, length);

        stuck = m_position < m_end;
        if (stuck && done < length && splitCharacter(target, &done, length))
            return done;
    }
    return done;
}

std::int32_t InputStreamReader::available()
{
    ensureOpen();
    std::int64_t bytes = detail::opened(m_source).available();
    if (m_end > 0)
        bytes += m_end - m_position;
    return detail::saturated(bytes / std::max(m_converter->getMaxBytesPerChar(), 1) + m_heldCount);
}

void InputStreamReader::close()
{
    m_converter = nullptr;
    m_buffer.reset();
    if (m_source != nullptr)
        m_source->close();
}

const char16_t* InputStreamReader::getEncodingName()
{
    ensureOpen();
    return m_converter->getEncodingName();
}

void InputStreamReader::setSubstitutionMode(bool mode)
{
    ensureOpen();
    m_converter->setSubstitutionMode(mode);
}

void InputStreamReader::ensureOpen() const
{
    detail::requireOpen(m_converter != nullptr);
}

/// Moves the undecoded bytes to the start of the buffer and reads more after them.
void InputStreamReader::fillBuffer()
{
    const std::int32_t left = m_end - m_position;
    if (left > 0 && m_position > 0)
        std::memmove(m_buffer.get(), m_buffer.get() + m_position, static_cast<std::size_t>(left));
    m_bytesBefore += m_position;
    m_position = 0;
    m_end = left;

    const std::int32_t room = m_bufferSize - left;
    if (room < 1)
        detail::throwStuckConverter();
    const std::int32_t got = detail::checkedCount(detail::opened(m_source).read(m_buffer.get() + m_end, room), room);
    if (got < 0)
        m_endOfStream = true;
    else
        m_end += got;
}

std::int32_t InputStreamReader::takeHeld(char16_t* target, std::int32_t length)
{
    if (m_heldCount == 0)
        return 0;
    const std::int32_t taken = std::min(m_heldCount, length);
    std::copy_n(m_held, taken, target);
    m_heldCount -= taken;
    std::copy_n(m_held + taken, m_heldCount, m_held);
    return taken;
}

/// A decoder that stops needs either more bytes or more room. If it needs room, the read ends. If nothing has been read
/// yet, it returns as much of the character as fits; otherwise the character could never be read.
bool InputStreamReader::splitCharacter(char16_t* target, std::int32_t* done, std::int32_t length)
{
    const std::int32_t room = length - *done;
    for (std::int32_t tried = room + 1; tried <= MAX_UNITS_PER_CHAR; ++tried) {
        char16_t units[MAX_UNITS_PER_CHAR];
        std::int32_t position = m_position;
        std::int32_t count = 0;
        try {
            m_converter->convert(m_buffer.get(), &position, m_end, units, &count, tried);
        } catch (...) {
            vxsys::passForcedUnwind();
            if (count == 0 && *done == 0)
                throw;
            // What was decoded before is returned first. The next call finds the error again.
            if (count == 0)
                return true;
        }
        detail::requireIndex(position, m_position, m_end);
        detail::requireIndex(count, 0, tried);
        if (count == 0)
            continue;
        if (*done > 0)
            return true;

        m_position = position;
        const std::int32_t fitting = std::min(count, room);
        std::copy_n(units, fitting, target);
        m_heldCount = count - fitting;
        std::copy_n(units + fitting, m_heldCount, m_held);
        *done = fitting;
        return true;
    }
    return false;
}

} // namespace vx::io
