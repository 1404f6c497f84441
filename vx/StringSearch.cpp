#include "vx/String.h"

#include "vx/Exceptions.h"
#include "vx/detail/StringLocks.h"
#include "vx/detail/TextRange.h"
#include "vx/detail/TextScan.h"
#include "vxsys/Text.h"

#include <algorithm>
#include <string>

namespace vx {

using detail::clipped;
using detail::measured;
using detail::StringReadLock;
using detail::StringSource;
using detail::StringWriteLock;

namespace {

constexpr int NOT_FOUND = -1;

/// Where a search backwards begins: -1 and all beyond the end mean the last unit, anything below nothing.
int clippedToLast(int from, int length) noexcept
{
    return from == -1 || from >= length ? length - 1 : std::max(from, -1);
}

/// Two stretches of text after clipping, the own one first.
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

/// A pattern that is looked for, of one unit or more.
class Pattern {
public:
    Pattern(const char16_t* units, int length) noexcept
        : m_units(units)
        , m_length(length)
    {
    }

    /// Gives the result of `scan(mayMatch, matches)` over candidates in `text`.
    template <class Scan>
    int search(const char16_t* text, bool ignoreCase, Scan scan) const noexcept
    {
        const char16_t* const units = m_units;
        const int length = m_length;
        if (ignoreCase) {
            const char16_t first = VXToLowerW(units[0]);
            return scan(
                [=](int index) { // beyond ASCII only the tables tell
                    const char16_t unit = text[index];
                    const char16_t lower = unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit | 0x20) : unit;
                    return lower == first || unit >= 0x80;
                },
                [=](int index) { return VXMemNICmpW(text + index, units, length) == 0; });
        }
        const char16_t first = units[0];
        const char16_t last = units[length - 1];
        const char16_t* const ends = text + (length - 1);
        return scan([=](int index) { return (text[index] == first) & (ends[index] == last); },
            [=](int index) { return length <= 2 || detail::equalUnits(text + index + 1, units + 1, length - 2); });
    }

private:
    const char16_t* m_units;
    int m_length;
};

/// The set of a search, with the first 256 units in a table so that a common text costs one look for each unit.
class UnitSet {
public:
    UnitSet(const char16_t* units, int length, bool ignoreCase) noexcept
        : m_units(units)
        , m_length(measured(units, length))
        , m_ignoreCase(ignoreCase)
    {
        for (int index = 0; index < m_length; ++index) {
            const char16_t unit = folded(m_units[index]);
            add(unit);
            if (ignoreCase && folded(VXToUpperW(unit)) == unit)
                add(VXToUpperW(unit));
        }
    }

    bool isEmpty() const noexcept { return m_length == 0; }
    bool contains(char16_t unit) const noexcept { return unit < LATIN ? m_latin[unit] : containsOther(folded(unit)); }

private:
    static constexpr char16_t LATIN = 256;

    char16_t folded(char16_t unit) const noexcept { return m_ignoreCase ? VXToLowerW(unit) : unit; }
    void add(char16_t unit) noexcept
    {
        if (unit < LATIN)
            m_latin[unit] = true;
    }
    bool containsOther(char16_t unit) const noexcept
    {
        return std::any_of(m_units, m_units + m_length, [&](char16_t candidate) { return folded(candidate) == unit; });
    }

    const char16_t* m_units;
    int m_length;
    bool m_ignoreCase;
    bool m_latin[LATIN] = {};
};

/// The first position from `from` on whose being in `set` is `wanted`.
int findUp(const StringReadLock& text, const UnitSet& set, int from, bool wanted) noexcept
{
    if (set.isEmpty())
        return NOT_FOUND;
    const char16_t* const units = text.data();
    const int length = text.length();
    for (int index = clipped(from, length); index < length; ++index) {
        if (set.contains(units[index]) == wanted)
            return index;
    }
    return NOT_FOUND;
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
    return regionMatches(0, -1, other, 0, ignoreCase);
}

bool String::equals(const char16_t* text, int length, bool ignoreCase) const
{
    return regionMatches(0, -1, text, length, 0, ignoreCase);
}

int String::compare(const String& other, bool ignoreCase) const
{
    return regionCompare(0, -1, other, 0, ignoreCase);
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
    return indexOf(&ch, 1, from, ignoreCase);
}

int String::indexOf(const char16_t* text, int length, int from, bool ignoreCase) const
{
    length = measured(text, length);
    if (length == 0)
        return NOT_FOUND;

    const StringReadLock own(*this);
    if (length > own.length())
        return NOT_FOUND;
    from = clipped(from, own.length());
    return Pattern(text, length).search(own.data(), ignoreCase, [&](auto mayMatch, auto matches) {
        return detail::scanUp(from, own.length() - length + 1, mayMatch, matches);
    });
}

int String::indexOf(const String& text, int from, bool ignoreCase) const
{
    const StringSource pattern(*this, text);
    return indexOf(pattern.data(), pattern.length(), from, ignoreCase);
}

int String::lastIndexOf(char16_t ch, int from, bool ignoreCase) const
{
    return lastIndexOf(&ch, 1, from, ignoreCase);
}

int String::lastIndexOf(const char16_t* text, int length, int from, bool ignoreCase) const
{
    length = measured(text, length);
    if (length == 0)
        return NOT_FOUND;

    const StringReadLock own(*this);
    if (length > own.length())
        return NOT_FOUND;
    from = clippedToLast(from, own.length());
    return Pattern(text, length).search(own.data(), ignoreCase, [&](auto mayMatch, auto matches) {
        return detail::scanDown(from - length + 2, mayMatch, matches);
    });
}

int String::lastIndexOf(const String& text, int from, bool ignoreCase) const
{
    const StringSource pattern(*this, text);
    return lastIndexOf(pattern.data(), pattern.length(), from, ignoreCase);
}

int String::findFirstOf(const char16_t* set, int length, int from, bool ignoreCase) const
{
    return findUp(StringReadLock(*this), UnitSet(set, length, ignoreCase), from, true);
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

int String::findFirstNotOf(const char16_t* set, int length, int from, bool ignoreCase) const
{
    return findUp(StringReadLock(*this), UnitSet(set, length, ignoreCase), from, false);
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
    if (set != nullptr && isOwnText(set)) { // trimming would move the set
        const std::u16string copy(set);
        return trim(copy.c_str(), length, type);
    }
    const UnitSet blanks(set, -1, false);
    StringWriteLock target(*this);
    trimUnits(target, type, [&](char16_t unit) { return unit == 0 || blanks.contains(unit); }); // the terminator counts
}

void String::trim(const String& set, TrimType type)
{
    const StringSource source(*this, set);
    const std::u16string units(
        source.data(), static_cast<std::size_t>(source.length())); // a part may lack a terminator
    trim(units.c_str(), -1, type);
}

String String::substring(int start, int end) const
{
    return String(AcquireCopy, *this, start, end);
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
