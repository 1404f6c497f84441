#include "vx/util/StringTokenizer.h"

#include "vx/Exception.h"
#include "vx/detail/SetScan.h"
#include "vx/detail/StringLocks.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace vx::util {

namespace {

/// As `text.view()`, but without a call for a plain buffer.
std::u16string_view unitsOf(const String& text)
{
    std::u16string_view units;
    return vx::detail::PlainBuffer::readExact(text, &units) ? units : text.view();
}

int lengthOf(const String& text)
{
    return static_cast<int>(unitsOf(text).size());
}

} // namespace

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
    return m_peeked < lengthOf(m_text);
}

String StringTokenizer::nextToken(const char16_t* delimiters)
{
    if (delimiters != nullptr) {
        m_delimiters = delimiters;
        m_peeked = -1;
    }
    m_position = m_peeked >= 0 ? m_peeked : skipDelims(m_position);
    m_peeked = -1;
    if (m_position >= lengthOf(m_text))
        throw Exception(u"No such element");
    const int end = scanToken(m_position);
    return m_text.substring(std::exchange(m_position, end), std::min(end, lengthOf(m_text)));
}

int StringTokenizer::getTokenCount() const
{
    int count = 0;
    for (int position = skipDelims(m_position); position < lengthOf(m_text); ++count)
        position = skipDelims(scanToken(position));
    return count;
}

int StringTokenizer::skipDelims(int start) const
{
    if (m_returnDelimiters)
        return start;
    const int place = find(false, start);
    return place < lengthOf(m_text) ? place : lengthOf(m_text) + 1;
}

int StringTokenizer::scanToken(int start) const
{
    const int length = lengthOf(m_text);
    int end = find(true, start);
    if (start < length && end == length)
        ++end;
    return m_returnDelimiters && end == start ? end + 1 : end;
}

int StringTokenizer::find(bool isDelimiter, int start) const
{
    const std::u16string_view text = unitsOf(m_text);
    const std::u16string_view delimiters = unitsOf(m_delimiters);
    const int place = vx::detail::scanUnits(text.data(), std::max(start, 0), static_cast<int>(text.size()),
        delimiters.data(), static_cast<int>(delimiters.size()), isDelimiter);
    return std::max(start, place);
}

} // namespace vx::util
