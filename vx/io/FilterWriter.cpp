#include "vx/io/FilterWriter.h"

#include "vx/String.h"
#include "vx/io/detail/StreamChecks.h"

namespace vx::io {

FilterWriter::FilterWriter(Writer* sink)
    : m_sink(sink)
{
}

Writer& FilterWriter::sink() const
{
    return detail::opened(m_sink);
}

void FilterWriter::write(const String& text)
{
    sink().write(text);
}

void FilterWriter::write(const char16_t* text)
{
    sink().write(text);
}

void FilterWriter::write(const char16_t* text, std::int32_t length)
{
    sink().write(text, length);
}

void FilterWriter::write(char16_t ch)
{
    sink().write(ch);
}

void FilterWriter::flush()
{
    sink().flush();
}

void FilterWriter::close()
{
    if (m_sink != nullptr)
        m_sink->close();
}

} // namespace vx::io
