#include "vx/io/FilterInputStream.h"

#include "vx/io/detail/StreamChecks.h"

namespace vx::io {

FilterInputStream::FilterInputStream(InputStream* source)
    : m_source(source)
{
}

InputStream& FilterInputStream::source() const
{
    return detail::opened(m_source);
}

std::int32_t FilterInputStream::read(signed char* target, std::int32_t length)
{
    return source().read(target, length);
}

int FilterInputStream::read()
{
    return source().read();
}

std::int32_t FilterInputStream::skip(std::int32_t count)
{
    return source().skip(count);
}

std::int32_t FilterInputStream::available()
{
    return source().available();
}

void FilterInputStream::close()
{
    if (m_source != nullptr)
        m_source->close();
}

bool FilterInputStream::markSupported()
{
    return m_source != nullptr && m_source->markSupported();
}

void FilterInputStream::mark(std::int32_t limit)
{
    source().mark(limit);
}

void FilterInputStream::reset()
{
    source().reset();
}

} // namespace vx::io
