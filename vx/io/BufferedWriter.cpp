#include "vx/io/BufferedWriter.h"

#include "vx/io/detail/BufferedOutput.h"

namespace vx::io {

using Output = detail::BufferedOutput<BufferedWriter>;

BufferedWriter::BufferedWriter(Writer* sink, std::int32_t size)
    : m_sink(sink)
    , m_bufferSize(std::max(size, detail::MIN_BUFFER_SIZE))
    , m_buffer(vx::detail::makeRawArray<Unit>(m_bufferSize))
{
}

void BufferedWriter::write(const char16_t* text, std::int32_t length)
{
    Output::write(*this, text, length);
}

void BufferedWriter::write(char16_t ch)
{
    Output::write(*this, ch);
}

void BufferedWriter::flush()
{
    Output::flush(*this);
}

void BufferedWriter::close()
{
    Output::close(*this);
}

void BufferedWriter::ensureOpen() const
{
    detail::requireOpen(m_buffer != nullptr);
}

void BufferedWriter::flushBuffer()
{
    Output::flushBuffer(*this);
}

} // namespace vx::io
