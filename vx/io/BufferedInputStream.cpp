#include "vx/io/BufferedInputStream.h"

#include "vx/io/detail/BufferedInput.h"

namespace vx::io {

using Input = detail::BufferedInput<BufferedInputStream>;

BufferedInputStream::BufferedInputStream(InputStream* source, std::int32_t size)
    : m_source(source)
    , m_bufferSize(std::max(size, detail::MIN_BUFFER_SIZE))
    , m_buffer(vx::detail::makeRawArray<Unit>(m_bufferSize))
{
}

std::int32_t BufferedInputStream::read(signed char* target, std::int32_t length)
{
    return Input::read(*this, target, length);
}

int BufferedInputStream::read()
{
    return Input::read(*this);
}

std::int32_t BufferedInputStream::skip(std::int32_t count)
{
    return Input::skip(*this, count);
}

std::int32_t BufferedInputStream::available()
{
    return Input::available(*this);
}

void BufferedInputStream::close()
{
    Input::close(*this);
}

bool BufferedInputStream::markSupported()
{
    return true;
}

void BufferedInputStream::mark(std::int32_t limit)
{
    Input::mark(*this, limit);
}

void BufferedInputStream::reset()
{
    Input::reset(*this);
}

void BufferedInputStream::ensureOpen() const
{
    detail::requireOpen(m_buffer != nullptr);
}

void BufferedInputStream::fillBuffer()
{
    Input::fillBuffer(*this);
}

} // namespace vx::io
