#include "vx/util/StringTokenizer.h"

#include "vx/Exception.h"
#include "vx/detail/SetScan.h"
#include "vx/detail/StringLocks.h"

#include <algorithm>
#include <utility>

namespace vx::util {

namespace {

/// As `text.view()`, but without a call for a plain buffer.
std::u16string_view unitsOf(const String& text)
{
    std::u16string_view units;
    return vx::detail::PlainBuffer::readExact(text, &units) ? units : text.view();
}

int lengthOf(std::u16string_view text)
{
    return static_cast<int>(text.size());
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

// This and nextToken are flat, so that each search is compiled for its own purpose. Most tokens are short.
[[gnu::flatten]] bool StringTokenizer::hasMoreTokens()
{
    const std::u16string_view text = unitsOf(m_text);
    m_peeked = skipDelims(text, m_position);
    return m_peeked < lengthOf(text);
}

[[gnu::flatten]] String StringTokenizer::nextToken(const char16_t* delimiters)
{
    if (delimiters != nullptr) {
        m_delimiters = delimiters;
        m_peeked = -1;
    }
    std::u16string_view text;
    const bool isPlain = vx::detail::PlainBuffer::readExact(m_text, &text);
    if (!isPlain)
        text = m_text.view();
    m_position = m_peeked >= 0 ? m_peeked : skipDelims(text, m_position);
    m_peeked = -1;
    if (m_position >= lengthOf(text))
        throw Exception(u"No such element");
    const int end = scanToken(text, m_position);
    const int start = std::exchange(m_position, end);
    if (!isPlain)
        return m_text.substring(start, std::min(end, lengthOf(text)));
    return vx::detail::PlainBuffer::part(text, start, std::min(end, lengthOf(text)));
}

int StringTokenizer::getTokenCount() const
{
    const std::u16string_view text = unitsOf(m_text);
    int count = 0;
    for (int position = skipDelims(text, m_position); position < lengthOf(text); ++count)
        position = skipDelims(text, scanToken(text, position));
    return count;
}

int StringTokenizer::skipDelims(int start) const
{
    return skipDelims(unitsOf(m_text), start);
}

int StringTokenizer::scanToken(int start) const
{
    return scanToken(unitsOf(m_text), start);
}

int StringTokenizer::skipDelims(std::u16string_view text, int start) const
{
    if (m_returnDelimiters)
        return start;
    const int place = find(false, text, start);
    return place < lengthOf(text) ? place : lengthOf(text) + 1;
}

int StringTokenizer::scanToken(std::u16string_view text, int start) const
{
    const int length = lengthOf(text);
    int end = find(true, text, start);
    if (start < length && end == length)
        ++end;
    return m_returnDelimiters && end == start ? end + 1 : end;
}

int StringTokenizer::find(bool isDelimiter, std::u16string_view text, int start) const
{
    const std::u16string_view delimiters = unitsOf(m_delimiters);
    const int length = lengthOf(text);
    int place = std::max(start, 0);
    if (!isDelimiter) {
        // Most tokens have one delimiter between them. A search by blocks would take longer, and what comes next would
        // have to wait for its result, whereas the processor foresees the result of two comparisons.
        constexpr int SOON = 2;
        const int end = place + std::clamp(length - place, 0, SOON);
        place = vx::detail::scanFew(text.data(), place, end, delimiters.data(), lengthOf(delimiters), isDelimiter);
        if (place < end)
            return place;
    }
    place = vx::detail::scanUnits(text.data(), place, length, delimiters.data(), lengthOf(delimiters), isDelimiter);
    return std::max(start, place);
}

} // namespace vx::util
