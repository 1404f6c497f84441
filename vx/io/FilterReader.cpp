#include "vx/io/FilterReader.h"

#include "vx/io/detail/StreamChecks.h"

namespace vx::io {

FilterReader::FilterReader(Reader* source)
    : m_source(source)
{
}

Reader& FilterReader::source() const
{
    return detail::opened(m_source);
}

std::int32_t FilterReader::read(char16_t* target, std::int32_t length)
{
    return source().read(target, length);
}

int FilterReader::read()
{
    return source().read();
}

std::int32_t FilterReader::skip(std::int32_t count)
{
    return source().skip(count);
}

std::int32_t FilterReader::available()
{
    return source().available();
}

void FilterReader::close()
{
    if (m_source != nullptr)
        m_source->close();
}

bool FilterReader::markSupported()
{
    return m_source != nullptr && m_source->markSupported();
}

void FilterReader::mark(std::int32_t limit)
{
    source().mark(limit);
}

void FilterReader::reset()
{
    source().reset();
}

} // namespace vx::io
