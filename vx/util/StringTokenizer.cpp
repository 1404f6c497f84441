#include "vx/util/StringTokenizer.h"

#include "vx/Exception.h"
#include "vx/detail/UnitSet.h"

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
    const int place = find(false, start);
    return place < m_text.getLength() ? place : m_text.getLength() + 1;
}

int StringTokenizer::scanToken(int start) const
{
    const int length = m_text.getLength();
    int end = find(true, start);
    if (start < length && end == length)
        ++end;
    return m_returnDelimiters && end == start ? end + 1 : end;
}

int StringTokenizer::find(bool isDelimiter, int start) const
{
    const std::u16string_view text = m_text.view();
    const std::u16string_view delimiters = m_delimiters.view();
    const vx::detail::UnitSet set(delimiters.data(), static_cast<int>(delimiters.size()), false);
    auto place = static_cast<std::size_t>(std::max(start, 0));
    while (place < text.size() && set.contains(text[place]) != isDelimiter)
        ++place;
    return std::max(start, static_cast<int>(place));
}

} // namespace vx::util
