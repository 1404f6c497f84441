#include "vx/io/StringWriter.h"

namespace vx::io {

StringWriter::StringWriter(int capacity)
    : m_text(capacity)
{
}

StringWriter::StringWriter(const StringWriter& other) = default;
StringWriter& StringWriter::operator=(const StringWriter& other) = default;

void StringWriter::write(const char16_t* text, std::int32_t length)
{
    m_text.replace(-1, 0, text, length, 0);
}

String StringWriter::toString() const
{
    return m_text;
}

} // namespace vx::io
