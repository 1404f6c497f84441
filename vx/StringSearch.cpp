#include "vx/String.h"

#include "vx/Exceptions.h"
#include "vx/detail/SetScan.h"
#include "vx/detail/StringLocks.h"
#include "vx/detail/TextHash.h"
#include "vx/detail/TextRange.h"
#include "vx/detail/TextScan.h"
#include "vx/detail/TwoWay.h"
#include "vx/detail/UnitSet.h"
#include "vxsys/Text.h"

#include <algorithm>
#include <string>

namespace vx {

using detail::clipped;
using detail::measured;
using detail::PlainBuffer;
using detail::StringReadLock;
using detail::StringSource;
using detail::StringWriteLock;
using detail::UnitSet;

namespace {

constexpr int NOT_FOUND = -1;

/// Where a backward search begins: -1, and a place beyond the end, mean the last unit. Lower numbers find nothing.
int clippedToLast(int from, int length) noexcept
{
    return from == -1 || from >= length ? length - 1 : std::max(from, -1);
}

/// Two ranges limited to their texts, first that of this string.
struct Regions {
    Regions(const StringReadLock& own, int start, int count, const char16_t* text, int length, int textStart) noexcept
    {
        start = clipped(start, own.length());
        left = own.data() + start;
        leftLength = clipped(count, own.length() - start);
        length = measured(text, length);
        textStart = clipped(textStart, length);
        right = text + textStart;
        rightLength = length - textStart;
    }

    /// The sign of the comparison of the first `count` units.
    int compare(int count, bool ignoreCase) const noexcept
    {
        return ignoreCase ? VXMemNICmpW(left, right, count) : detail::compareUnits(left, right, count);
    }

    const char16_t* left;
    const char16_t* right;
    int leftLength;
    int rightLength;
};

/// A search for a pattern of one unit or more. The plain scan is the fastest for nearly every text. For some, such as
/// long runs of one letter, its time is proportional to the product of both lengths. So once failed comparisons have
/// cost several times the length of the text, the two-way search takes over.
class PatternSearch {
public:
    PatternSearch(const StringReadLock& text, const char16_t* pattern, int length, bool ignoreCase) noexcept
        : m_text(text.data())
        , m_pattern(pattern)
        , m_length(length)
        , m_candidates(std::max(text.length() - length + 1, 0))
        , m_ignoreCase(ignoreCase)
    {
    }

    /// The first match that begins at `from` or after it.
    int findUp(int from) const noexcept
    {
        if (from >= m_candidates)
            return NOT_FOUND;
        std::int64_t patience = patienceFor(m_candidates - from);
        const int place = scan(patience,
            [&](auto mayMatch, auto matches) { return detail::scanUp(from, m_candidates, mayMatch, matches); });
        if (patience >= 0)
            return place;
        const int next = place + 1;
        const int found = findTwoWay(
            m_candidates - next, [=, this](int index) { return m_pattern[index]; },
            [=, this](int index) { return m_text[next + index]; });
        return found >= 0 ? next + found : NOT_FOUND;
    }

    /// The last match that begins before `end`.
    int findDown(int end) const noexcept
    {
        end = std::min(end, m_candidates);
        if (end <= 0)
            return NOT_FOUND;
        std::int64_t patience = patienceFor(end);
        const int place
            = scan(patience, [&](auto mayMatch, auto matches) { return detail::scanDown(end, mayMatch, matches); });
        if (patience >= 0)
            return place;
        const int lastUnit = m_length - 1;
        const int found = findTwoWay(
            place, [=, this](int index) { return m_pattern[lastUnit - index]; },
            [=, this](int index) { return m_text[place - 1 + lastUnit - index]; });
        return found >= 0 ? place - 1 - found : NOT_FOUND;
    }

private:
    /// The number of units that failed comparisons may read.
    static std::int64_t patienceFor(int candidates) noexcept { return 4096 + std::int64_t {candidates} * 4; }

    /// Returns the result of `scanAll(mayMatch, matches)`. If `patience` is below 0 afterwards, the result is not a
    /// match, but the place where the scan was given up.
    template <class ScanAll>
    int scan(std::int64_t& patience, ScanAll scanAll) const noexcept
    {
        const char16_t* const text = m_text;
        const char16_t* const pattern = m_pattern;
        const int length = m_length;
        const auto isEnough = [&](bool isMatch) { return isMatch || (patience -= length) < 0; };
        if (m_ignoreCase) {
            const char16_t first = detail::lowerUnit(pattern[0]);
            return scanAll(
                [=](int index) { // a cheap test: only the tables know the case of units beyond ASCII
                    const char16_t unit = text[index];
                    const char16_t lower = unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit | 0x20) : unit;
                    return lower == first || unit >= 0x80;
                },
                [=](int index) {
                    return detail::lowerUnit(text[index]) == first
                        && isEnough(VXMemNICmpW(text + index, pattern, length) == 0);
                });
        }
        return scanAll(detail::EndsMatch {text, text + (length - 1), pattern[0], pattern[length - 1]}, [=](int index) {
            return length <= 2 || isEnough(detail::equalUnits(text + index + 1, pattern + 1, length - 2));
        });
    }

    template <class PatternAt, class TextAt>
    int findTwoWay(int candidates, PatternAt patternAt, TextAt textAt) const noexcept
    {
        if (!m_ignoreCase)
            return detail::findTwoWay(m_length, patternAt, candidates, textAt);
        return detail::findTwoWay(
            m_length, [=](int index) { return detail::lowerUnit(patternAt(index)); }, candidates,
            [=](int index) { return detail::lowerUnit(textAt(index)); });
    }

    const char16_t* m_text;
    const char16_t* m_pattern;
    int m_length;
    int m_candidates; ///< the places where a match may begin
    bool m_ignoreCase;
};

/// The first position from `from` on at which a unit is in the set, or is not if `wanted` is false.
int findUp(
    const StringReadLock& text, const char16_t* set, int setLength, int from, bool ignoreCase, bool wanted) noexcept
{
    setLength = measured(set, setLength);
    if (setLength == 0)
        return NOT_FOUND;
    const int length = text.length();
    from = clipped(from, length);
    const int place = ignoreCase ? detail::scanSet(text.data(), from, length, UnitSet(set, setLength, true), wanted)
                                 : detail::scanUnits(text.data(), from, length, set, setLength, wanted);
    return place < length ? place : NOT_FOUND;
}

int findDown(const StringReadLock& text, const UnitSet& set, int from, bool wanted) noexcept
{
    if (set.isEmpty())
        return NOT_FOUND;
    const char16_t* const units = text.data();
    for (int index = clippedToLast(from, text.length()); index >= 0; --index) {
        if (set.contains(units[index]) == wanted)
            return index;
    }
    return NOT_FOUND;
}

template <class IsBlank>
void trimUnits(StringWriteLock& target, String::TrimType type, IsBlank isBlank)
{
    char16_t* text = target.data();
    int length = target.length();
    if ((type & String::TrimLeading) != 0) {
        int skipped = 0;
        while (skipped < length && isBlank(text[skipped]))
            ++skipped;
        length -= skipped;
        if (skipped > 0)
            std::char_traits<char16_t>::move(text, text + skipped, static_cast<std::size_t>(length));
    }
    if ((type & String::TrimTrailing) != 0) {
        while (length > 0 && isBlank(text[length - 1]))
            --length;
    }
    target.setLength(length);
}

// The slow parts of the operations below. They are separate so that the fast parts need no stack frame.

[[gnu::noinline]] bool equalsLocked(const String& text, const String& other, bool ignoreCase)
{
    return text.regionMatches(0, -1, other, 0, ignoreCase);
}

[[gnu::noinline]] int compareLocked(const String& text, const String& other, bool ignoreCase)
{
    return text.regionCompare(0, -1, other, 0, ignoreCase);
}

[[gnu::noinline]] int indexOfLocked(const String& text, const String& pattern, int from, bool ignoreCase)
{
    const StringSource source(text, pattern);
    return text.indexOf(source.data(), source.length(), from, ignoreCase);
}

[[gnu::noinline]] int lastIndexOfLocked(const String& text, const String& pattern, int from, bool ignoreCase)
{
    const StringSource source(text, pattern);
    return text.lastIndexOf(source.data(), source.length(), from, ignoreCase);
}

/// The most units of a text in which even the slowest search for a pattern takes no time that matters.
constexpr std::size_t SHORT_TEXT = 64;

/// The units of both texts if a search for the pattern needs no more than a scan.
bool areShort(const String& text, const String& pattern, std::u16string_view* own, std::u16string_view* units) noexcept
{
    return PlainBuffer::readExact(text, own) && PlainBuffer::readExact(pattern, units) && !units->empty()
        && own->size() <= SHORT_TEXT;
}

/// A scan for a short pattern in a short text by `scanAll(ends, matches)`.
template <class ScanAll>
int scanShort(std::u16string_view own, std::u16string_view units, ScanAll scanAll) noexcept
{
    const char16_t* const text = own.data();
    const char16_t* const pattern = units.data();
    const auto length = static_cast<int>(units.size());
    return scanAll(detail::EndsMatch {text, text + (length - 1), pattern[0], pattern[length - 1]},
        [=](int index) { return length <= 2 || detail::equalUnits(text + index + 1, pattern + 1, length - 2); });
}

[[gnu::noinline]] int findUpElsewhere(
    const String& text, const char16_t* set, int setLength, int from, bool ignoreCase, bool wanted)
{
    return findUp(StringReadLock(text), set, setLength, from, ignoreCase, wanted);
}

/// The same, fast for a set of known length.
inline int findUp(const String& text, const char16_t* set, int setLength, int from, bool ignoreCase, bool wanted)
{
    std::u16string_view units;
    if (set == nullptr || setLength < 1 || ignoreCase || !PlainBuffer::readExact(text, &units)) [[unlikely]]
        return findUpElsewhere(text, set, setLength, from, ignoreCase, wanted);
    const auto length = static_cast<int>(units.size());
    const int place = detail::scanUnits(units.data(), clipped(from, length), length, set, setLength, wanted);
    return place < length ? place : NOT_FOUND;
}

} // namespace

int String::compareTo(const Object& other) const
{
    if (&other == this)
        return 0;
    const auto* text = dynamic_cast<const String*>(&other);
    if (text == nullptr)
        throw CastFailedException();
    return compare(*text, false);
}

bool String::equals(const Object& other) const
{
    if (&other == this)
        return true;
    const auto* text = dynamic_cast<const String*>(&other);
    return text != nullptr && equals(*text, false);
}

bool String::equals(const String& other, bool ignoreCase) const
{
    std::u16string_view own;
    std::u16string_view units;
    if (!ignoreCase && PlainBuffer::readExact(*this, &own) && PlainBuffer::readExact(other, &units)) {
        return own.size() == units.size() && detail::equalUnits(own.data(), units.data(), static_cast<int>(own.size()));
    }
    return equalsLocked(*this, other, ignoreCase);
}

bool String::equals(const char16_t* text, int length, bool ignoreCase) const
{
    return regionMatches(0, -1, text, length, 0, ignoreCase);
}

int String::compare(const String& other, bool ignoreCase) const
{
    std::u16string_view own;
    std::u16string_view units;
    if (!ignoreCase && PlainBuffer::readExact(*this, &own) && PlainBuffer::readExact(other, &units)) {
        const auto length = static_cast<int>(own.size());
        const auto otherLength = static_cast<int>(units.size());
        const int difference = detail::compareUnits(own.data(), units.data(), std::min(length, otherLength));
        return difference != 0 ? difference : length - otherLength;
    }
    return compareLocked(*this, other, ignoreCase);
}

int String::compare(const char16_t* text, int length, bool ignoreCase) const
{
    return regionCompare(0, -1, text, length, 0, ignoreCase);
}

bool String::regionMatches(int start, int count, const String& other, int otherStart, bool ignoreCase) const
{
    const StringSource text(*this, other);
    return regionMatches(start, count, text.data(), text.length(), otherStart, ignoreCase);
}

bool String::regionMatches(int start, int count, const char16_t* text, int length, int textStart, bool ignoreCase) const
{
    const StringReadLock own(*this);
    const Regions regions(own, start, count, text, length, textStart);
    if (regions.leftLength != regions.rightLength)
        return false;
    if (ignoreCase)
        return regions.compare(regions.leftLength, true) == 0;
    return detail::equalUnits(regions.left, regions.right, regions.leftLength);
}

int String::regionCompare(int start, int count, const String& other, int otherStart, bool ignoreCase) const
{
    const StringSource text(*this, other);
    return regionCompare(start, count, text.data(), text.length(), otherStart, ignoreCase);
}

int String::regionCompare(int start, int count, const char16_t* text, int length, int textStart, bool ignoreCase) const
{
    const StringReadLock own(*this);
    const Regions regions(own, start, count, text, length, textStart);
    const int difference = regions.compare(std::min(regions.leftLength, regions.rightLength), ignoreCase);
    return difference != 0 ? difference : regions.leftLength - regions.rightLength;
}

bool String::startsWith(const String& text, bool ignoreCase) const
{
    const StringSource start(*this, text);
    return startsWith(start.data(), start.length(), ignoreCase);
}

bool String::startsWith(const char16_t* text, int length, bool ignoreCase) const
{
    length = measured(text, length);
    return regionMatches(0, length, text, length, 0, ignoreCase);
}

bool String::endsWith(const String& text, bool ignoreCase) const
{
    const StringSource end(*this, text);
    return endsWith(end.data(), end.length(), ignoreCase);
}

bool String::endsWith(const char16_t* text, int length, bool ignoreCase) const
{
    length = measured(text, length);
    const int start = getLength() - length;
    return start >= 0 && regionMatches(start, length, text, length, 0, ignoreCase);
}

bool String::contains(const String& text, bool ignoreCase) const
{
    return indexOf(text, 0, ignoreCase) >= 0;
}

bool String::contains(const char16_t* text, int length, bool ignoreCase) const
{
    return indexOf(text, length, 0, ignoreCase) >= 0;
}

int String::indexOf(char16_t ch, int from, bool ignoreCase) const
{
    if (!ignoreCase) {
        const StringReadLock own(*this);
        from = clipped(from, own.length());
        const int place = detail::findUnit(own.data() + from, own.length() - from, ch);
        return place >= 0 ? from + place : NOT_FOUND;
    }
    return indexOf(&ch, 1, from, ignoreCase);
}

int String::indexOf(const char16_t* text, int length, int from, bool ignoreCase) const
{
    length = measured(text, length);
    if (length == 0)
        return NOT_FOUND;

    const StringReadLock own(*this);
    return PatternSearch(own, text, length, ignoreCase).findUp(clipped(from, own.length()));
}

int String::indexOf(const String& text, int from, bool ignoreCase) const
{
    std::u16string_view own;
    std::u16string_view units;
    if (ignoreCase || !areShort(*this, text, &own, &units))
        return indexOfLocked(*this, text, from, ignoreCase);
    const auto length = static_cast<int>(own.size());
    const int candidates = length - static_cast<int>(units.size()) + 1;
    from = clipped(from, length);
    return from >= candidates ? NOT_FOUND : scanShort(own, units, [=](auto ends, auto matches) {
        return detail::scanUp(from, candidates, ends, matches);
    });
}

int String::lastIndexOf(char16_t ch, int from, bool ignoreCase) const
{
    if (!ignoreCase) {
        const StringReadLock own(*this);
        const detail::EndsMatch unit {own.data(), own.data(), ch, ch};
        return detail::scanDown(clippedToLast(from, own.length()) + 1, unit, [](int) { return true; });
    }
    return lastIndexOf(&ch, 1, from, ignoreCase);
}

int String::lastIndexOf(const char16_t* text, int length, int from, bool ignoreCase) const
{
    length = measured(text, length);
    if (length == 0)
        return NOT_FOUND;

    const StringReadLock own(*this);
    return PatternSearch(own, text, length, ignoreCase).findDown(clippedToLast(from, own.length()) - length + 2);
}

int String::lastIndexOf(const String& text, int from, bool ignoreCase) const
{
    std::u16string_view own;
    std::u16string_view units;
    if (ignoreCase || !areShort(*this, text, &own, &units))
        return lastIndexOfLocked(*this, text, from, ignoreCase);
    const auto length = static_cast<int>(own.size());
    const int candidates = length - static_cast<int>(units.size()) + 1;
    const int end = std::min(clippedToLast(from, length) - static_cast<int>(units.size()) + 2, candidates);
    return end <= 0
        ? NOT_FOUND
        : scanShort(own, units, [=](auto ends, auto matches) { return detail::scanDown(end, ends, matches); });
}

[[gnu::flatten]] int String::findFirstOf(const char16_t* set, int length, int from, bool ignoreCase) const
{
    return findUp(*this, set, length, from, ignoreCase, true);
}

int String::findFirstOf(const String& set, int from, bool ignoreCase) const
{
    const StringSource units(*this, set);
    return findFirstOf(units.data(), units.length(), from, ignoreCase);
}

int String::findFirstOfCase(const char16_t* set, int length, int from) const
{
    return findFirstOf(set, length, from, false);
}

int String::findFirstOfCase(const String& set, int from) const
{
    return findFirstOf(set, from, false);
}

[[gnu::flatten]] int String::findFirstNotOf(const char16_t* set, int length, int from, bool ignoreCase) const
{
    return findUp(*this, set, length, from, ignoreCase, false);
}

int String::findFirstNotOf(const String& set, int from, bool ignoreCase) const
{
    const StringSource units(*this, set);
    return findFirstNotOf(units.data(), units.length(), from, ignoreCase);
}

int String::findLastOf(const char16_t* set, int length, int from, bool ignoreCase) const
{
    return findDown(StringReadLock(*this), UnitSet(set, length, ignoreCase), from, true);
}

int String::findLastOf(const String& set, int from, bool ignoreCase) const
{
    const StringSource units(*this, set);
    return findLastOf(units.data(), units.length(), from, ignoreCase);
}

int String::findLastNotOf(const char16_t* set, int length, int from, bool ignoreCase) const
{
    return findDown(StringReadLock(*this), UnitSet(set, length, ignoreCase), from, false);
}

int String::findLastNotOf(const String& set, int from, bool ignoreCase) const
{
    const StringSource units(*this, set);
    return findLastNotOf(units.data(), units.length(), from, ignoreCase);
}

void String::trim(TrimType type)
{
    StringWriteLock target(*this);
    trimUnits(
        target, type, [](char16_t unit) { return unit == u' ' || unit == u'\t' || unit == u'\r' || unit == u'\n'; });
}

void String::trim(char16_t ch, TrimType type)
{
    StringWriteLock target(*this);
    trimUnits(target, type, [ch](char16_t unit) { return unit == ch; });
}

void String::trim(const char16_t* set, int length, TrimType type)
{
    if (set != nullptr && isOwnText(set)) { // trimming would move a set inside this string
        const std::u16string copy(set);
        return trim(copy.c_str(), length, type);
    }
    const UnitSet blanks(set, -1, false);
    StringWriteLock target(*this);
    // The terminator is part of the set.
    trimUnits(target, type, [&](char16_t unit) { return unit == 0 || blanks.contains(unit); });
}

void String::trim(const String& set, TrimType type)
{
    const StringSource source(*this, set);
    const std::u16string units(
        source.data(), static_cast<std::size_t>(source.length())); // a part of a text may have no terminator
    trim(units.c_str(), -1, type);
}

char16_t String::getCharAt(int index) const
{
    return StringReadLock(*this).data()[index];
}

char16_t String::operator[](int index) const
{
    return getCharAt(index);
}

} // namespace vx
