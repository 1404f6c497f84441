#include "vx/io/BufferedOutputStream.h"

#include "vx/io/detail/BufferedOutput.h"

namespace vx::io {

using Output = detail::BufferedOutput<BufferedOutputStream>;

BufferedOutputStream::BufferedOutputStream(OutputStream* sink, std::int32_t size)
    : m_sink(sink)
    , m_bufferSize(std::max(size, detail::MIN_BUFFER_SIZE))
    , m_buffer(vx::detail::makeRawArray<Unit>(m_bufferSize))
{
}

void BufferedOutputStream::write(const signed char* bytes, std::int32_t length)
{
    Output::write(*this, bytes, length);
}

void BufferedOutputStream::write(signed char byte)
{
    Output::write(*this, byte);
}

void BufferedOutputStream::flush()
{
    Output::flush(*this);
}

void BufferedOutputStream::close()
{
    Output::close(*this);
}

void BufferedOutputStream::ensureOpen() const
{
    detail::requireOpen(m_buffer != nullptr);
}

void BufferedOutputStream::flushBuffer()
{
    Output::flushBuffer(*this);
}

} // namespace vx::io
