#include "vx/util/StringTokenizer.h"

#include "vx/Exception.h"

#include <algorithm>
#include <utility>

namespace vx::util {

constinit const STRUCT_VX_STR_LIT_INFO StringTokenizer::s_defaultDelims = literal(u" \r\n\t\f");

StringTokenizer::StringTokenizer(const String& text, const char16_t* delimiters, bool returnDelimiters)
    : m_text(text)
    , m_delimiters(delimiters != nullptr ? String(delimiters) : String(s_defaultDelims))
    , m_returnDelimiters(returnDelimiters)
{
}

StringTokenizer::~StringTokenizer() noexcept = default;

bool StringTokenizer::hasMoreTokens()
{
    m_peeked = skipDelims(m_position);
    return m_peeked < m_text.getLength();
}

String StringTokenizer::nextToken(const char16_t* delimiters)
{
    if (delimiters != nullptr) {
        m_delimiters = delimiters;
        m_peeked = -1;
    }
    m_position = m_peeked >= 0 ? m_peeked : skipDelims(m_position);
    m_peeked = -1;
    if (m_position >= m_text.getLength())
        throw Exception(u"No such element");
    const int end = scanToken(m_position);
    return m_text.substring(std::exchange(m_position, end), std::min(end, m_text.getLength()));
}

int StringTokenizer::getTokenCount() const
{
    int count = 0;
    for (int position = skipDelims(m_position); position < m_text.getLength(); ++count)
        position = skipDelims(scanToken(position));
    return count;
}

int StringTokenizer::skipDelims(int start) const
{
    if (m_returnDelimiters)
        return start;
    const int length = m_text.getLength();
    while (start < length && isDelimiter(start))
        ++start;
    return start < length ? start : length + 1;
}

int StringTokenizer::scanToken(int start) const
{
    const int length = m_text.getLength();
    int end = start;
    while (end < length && !isDelimiter(end))
        ++end;
    if (start < length && end == length)
        ++end;
    return m_returnDelimiters && end == start ? end + 1 : end;
}

bool StringTokenizer::isDelimiter(int index) const
{
    return m_delimiters.view().find(m_text.view()[static_cast<std::size_t>(index)]) != std::u16string_view::npos;
}

} // namespace vx::util
