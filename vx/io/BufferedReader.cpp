#include "vx/io/BufferedReader.h"

#include "vx/String.h"
#include "vx/detail/StringLocks.h"
#include "vx/io/IoException.h"
#include "vx/io/detail/BufferedInput.h"
#include "vx/io/detail/LineScan.h"

#include <algorithm>
#include <limits>

namespace vx::io {

using Input = detail::BufferedInput<BufferedReader>;

namespace {

constexpr char16_t LINE_FEED = 10;
constexpr char16_t CARRIAGE_RETURN = 13;

/// Replaces the text of `line` by these units, under one lock. They must not be in the string's own buffer.
void assign(String& line, const char16_t* text, std::int32_t length)
{
    vx::detail::StringWriteLock target(line, length);
    std::char_traits<char16_t>::copy(target.data(), text, static_cast<std::size_t>(length));
    target.setLength(length);
}

} // namespace

BufferedReader::BufferedReader(Reader* source, std::int32_t size)
    : m_source(source)
    , m_bufferSize(std::max(size, detail::MIN_BUFFER_SIZE))
    , m_buffer(vx::detail::makeRawArray<Unit>(m_bufferSize))
{
}

std::int32_t BufferedReader::read(char16_t* target, std::int32_t length)
{
    return Input::read(*this, target, length);
}

int BufferedReader::read()
{
    return Input::read(*this);
}

std::int32_t BufferedReader::skip(std::int32_t count)
{
    return Input::skip(*this, count);
}

std::int32_t BufferedReader::available()
{
    return Input::available(*this);
}

void BufferedReader::close()
{
    Input::close(*this);
}

bool BufferedReader::markSupported()
{
    return true;
}

void BufferedReader::mark(std::int32_t limit)
{
    Input::mark(*this, limit);
}

void BufferedReader::reset()
{
    Input::reset(*this);
}

std::int32_t BufferedReader::readLine(String& line)
{
    return readLimitedLine(line, std::numeric_limits<std::int32_t>::max());
}

std::int32_t BufferedReader::readLimitedLine(String& line, std::int32_t maximum)
{
    maximum = std::max(maximum, 1);
    ensureOpen();
    std::int32_t total = 0;
    bool isFirst = true;
    do {
        if (Input::isEmpty(*this)) {
            if (isFirst)
                line.resize(0, u' ');
            fillBuffer();
            if (Input::isEmpty(*this))
                return total != 0 ? total : -1;
        }
        const char16_t* start = m_buffer.get() + m_position;
        const std::int32_t found = detail::findLineEnd(start, m_count - m_position);
        const std::int32_t length = std::min(found, maximum - total);
        if (isFirst)
            assign(line, start, length);
        else
            line.replace(-1, 0, start, length, 0);
        isFirst = false;
        total += length;
        m_position += length;
        if (length < found)
            throw IoException(u"the line is longer than " + String::valueOf(maximum) + u" units");
    } while (Input::isEmpty(*this));

    if (m_buffer[m_position++] == CARRIAGE_RETURN) {
        if (Input::isEmpty(*this)) {
            try {
                fillBuffer();
            } catch (...) {
                --m_position; // the next call ends the line, with the line feed that may follow
                throw;
            }
        }
        if (!Input::isEmpty(*this) && m_buffer[m_position] == LINE_FEED)
            ++m_position;
    }
    return total;
}

void BufferedReader::ensureOpen() const
{
    detail::requireOpen(m_buffer != nullptr);
}

void BufferedReader::fillBuffer()
{
    Input::fillBuffer(*this);
}

} // namespace vx::io
