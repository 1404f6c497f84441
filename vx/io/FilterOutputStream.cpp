#include "vx/io/FilterOutputStream.h"

#include "vx/io/detail/StreamChecks.h"

namespace vx::io {

FilterOutputStream::FilterOutputStream(OutputStream* sink)
    : m_sink(sink)
{
}

OutputStream& FilterOutputStream::sink() const
{
    return detail::opened(m_sink);
}

void FilterOutputStream::write(const signed char* bytes, std::int32_t length)
{
    sink().write(bytes, length);
}

void FilterOutputStream::write(signed char byte)
{
    sink().write(byte);
}

void FilterOutputStream::flush()
{
    sink().flush();
}

void FilterOutputStream::close()
{
    if (m_sink != nullptr)
        m_sink->close();
}

} // namespace vx::io
