#include "vx/io/StdioInputStream.h"
#include "vx/io/StdioOutputStream.h"
#include "vx/io/detail/Stdio.h"
#include "vx/io/detail/StdioFileOutputStream.h"
#include "vx/io/detail/StreamChecks.h"

#include <cstring>
#include <utility>

namespace vx::io {

StdioInputStream::StdioInputStream()
    : m_stream(stdin)
{
}

std::int32_t StdioInputStream::read(signed char* target, std::int32_t length)
{
    if (length < 1)
        return 0;
    detail::requireUnits(target);
    auto* text = reinterpret_cast<char*>(target);
    if (length > 1) { // a signal while fgets waits would lose what it has read of the line: it must find a byte
        const int first = detail::readByte(m_stream);
        detail::checkStream(m_stream, u"stream read error");
        if (first == EOF || std::ungetc(first, m_stream) == EOF)
            return -1;
    }
    const bool isRead = std::fgets(text, length, m_stream) != nullptr;
    detail::checkStream(m_stream, u"stream read error");
    const std::size_t got = isRead ? std::strlen(text) : 0;
    return got > 0 ? static_cast<std::int32_t>(got) : -1;
}

int StdioInputStream::read()
{
    const int byte = detail::readByte(m_stream);
    detail::checkStream(m_stream, u"stream read error");
    return byte;
}

std::int32_t StdioInputStream::skip(std::int32_t count)
{
    const long before = std::ftell(m_stream);
    std::fseek(m_stream, count, SEEK_CUR);
    const long after = std::ftell(m_stream);
    detail::checkStream(m_stream, u"stream seek error");
    return before < 0 || after < 0 ? 0 : static_cast<std::int32_t>(after - before);
}

StdioOutputStream::StdioOutputStream()
    : m_stream(stdout)
{
}

void StdioOutputStream::write(const signed char* bytes, std::int32_t length)
{
    detail::writeBytes(m_stream, bytes, length);
}

void StdioOutputStream::write(signed char byte)
{
    detail::writeByte(m_stream, byte);
}

void StdioOutputStream::flush()
{
    detail::flushStream(m_stream);
}

void StdioOutputStream::close() { }

Reference<OutputStream> StdioOutputStream::getStdErrorStream()
{
    return Reference<OutputStream>(new StdioFileOutputStream(stderr, false));
}

StdioFileOutputStream::StdioFileOutputStream(std::FILE* stream, bool owned)
    : m_stream(stream)
    , m_owned(owned)
{
}

StdioFileOutputStream::~StdioFileOutputStream() noexcept(false)
{
    StdioFileOutputStream::close();
}

void StdioFileOutputStream::write(const signed char* bytes, std::int32_t length)
{
    detail::writeBytes(m_stream, bytes, length);
}

void StdioFileOutputStream::write(signed char byte)
{
    detail::writeByte(m_stream, byte);
}

void StdioFileOutputStream::flush()
{
    detail::flushStream(m_stream);
}

void StdioFileOutputStream::close()
{
    if (std::exchange(m_owned, false))
        std::fclose(m_stream);
}

} // namespace vx::io
