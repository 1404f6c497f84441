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
using detail::StringWriteLock;

namespace {

constexpr int NOT_FOUND = -1;
constexpr char16_t BLANKS[] = u" \t\r\n";

/// Where a search backwards begins: -1 and all beyond the end mean the last unit.
int clippedToLast(int from, int length) noexcept
{
    return from == -1 || from >= length ? length - 1 : from;
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
        return ignoreCase ? VXStrNICmpW(left, right, count) : detail::compareUnits(left, right, count);
    }

    const char16_t* left;
    const char16_t* right;
    int leftLength;
    int rightLength;
};

bool sameUnits(const char16_t* left, const char16_t* right, int length, bool ignoreCase) noexcept
{
    if (!ignoreCase)
        return detail::equalUnits(left, right, length);
    for (int index = 0; index < length; ++index) {
        if (VXToLowerW(left[index]) != VXToLowerW(right[index]))
            return false;
    }
    return true;
}

int findFolded(const char16_t* text, int length, char16_t unit) noexcept
{
    unit = VXToLowerW(unit);
    const char16_t* found
        = std::find_if(text, text + length, [&](char16_t candidate) { return VXToLowerW(candidate) == unit; });
    return found != text + length ? static_cast<int>(found - text) : NOT_FOUND;
}

/// The set of a search, with the first 256 units as a map of bits so that a common set costs one look for each unit.
class UnitSet {
public:
    UnitSet(const char16_t* units, int length, bool ignoreCase) noexcept
        : m_units(units)
        , m_length(measured(units, length))
        , m_ignoreCase(ignoreCase)
    {
        for (int index = 0; index < m_length; ++index) {
            const char16_t unit = folded(m_units[index]);
            if (unit < LATIN)
                m_latin[unit / 64] |= std::uint64_t {1} << unit % 64;
        }
    }

    bool isEmpty() const noexcept { return m_length == 0; }

    bool contains(char16_t unit) const noexcept
    {
        unit = folded(unit);
        if (unit < LATIN)
            return (m_latin[unit / 64] >> unit % 64 & 1) != 0;
        return m_ignoreCase ? findFolded(m_units, m_length, unit) != NOT_FOUND
                            : detail::findUnit(m_units, m_length, unit) != NOT_FOUND;
    }

private:
    static constexpr char16_t LATIN = 256;

    char16_t folded(char16_t unit) const noexcept { return m_ignoreCase ? VXToLowerW(unit) : unit; }

    const char16_t* m_units;
    int m_length;
    bool m_ignoreCase;
    std::uint64_t m_latin[LATIN / 64] = {};
};

/// The first position from `from` on whose being in `set` is `wanted`.
int findUp(const StringReadLock& text, const UnitSet& set, int from, bool wanted) noexcept
{
    if (set.isEmpty())
        return NOT_FOUND;
    for (int index = clipped(from, text.length()); index < text.length(); ++index) {
        if (set.contains(text.data()[index]) == wanted)
            return index;
    }
    return NOT_FOUND;
}

int findDown(const StringReadLock& text, const UnitSet& set, int from, bool wanted) noexcept
{
    if (set.isEmpty())
        return NOT_FOUND;
    for (int index = clippedToLast(from, text.length()); index >= 0; --index) {
        if (set.contains(text.data()[index]) == wanted)
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
    const StringReadLock text(other);
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
    const StringReadLock text(other);
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
    const StringReadLock start(text);
    return startsWith(start.data(), start.length(), ignoreCase);
}

bool String::startsWith(const char16_t* text, int length, bool ignoreCase) const
{
    length = measured(text, length);
    return regionMatches(0, length, text, length, 0, ignoreCase);
}

bool String::endsWith(const String& text, bool ignoreCase) const
{
    const StringReadLock end(text);
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
    const StringReadLock own(*this);
    from = clipped(from, own.length());
    const char16_t* text = own.data() + from;
    const int length = own.length() - from;
    const int found = ignoreCase ? findFolded(text, length, ch) : detail::findUnit(text, length, ch);
    return found != NOT_FOUND ? from + found : NOT_FOUND;
}

int String::indexOf(const char16_t* text, int length, int from, bool ignoreCase) const
{
    length = measured(text, length);
    if (length == 0)
        return NOT_FOUND;

    const StringReadLock own(*this);
    const int last = own.length() - length;
    for (int index = clipped(from, own.length()); index <= last; ++index) {
        const char16_t* candidates = own.data() + index;
        const int first = ignoreCase ? findFolded(candidates, last - index + 1, text[0])
                                     : detail::findUnit(candidates, last - index + 1, text[0]);
        if (first == NOT_FOUND)
            break;
        index += first;
        if (sameUnits(candidates + first + 1, text + 1, length - 1, ignoreCase))
            return index;
    }
    return NOT_FOUND;
}

int String::indexOf(const String& text, int from, bool ignoreCase) const
{
    const StringReadLock pattern(text);
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
    for (int index = clippedToLast(from, own.length()) - (length - 1); index >= 0; --index) {
        if (sameUnits(own.data() + index, text, length, ignoreCase))
            return index;
    }
    return NOT_FOUND;
}

int String::lastIndexOf(const String& text, int from, bool ignoreCase) const
{
    const StringReadLock pattern(text);
    return lastIndexOf(pattern.data(), pattern.length(), from, ignoreCase);
}

int String::findFirstOf(const char16_t* set, int length, int from, bool ignoreCase) const
{
    return findUp(StringReadLock(*this), UnitSet(set, length, ignoreCase), from, true);
}

int String::findFirstOf(const String& set, int from, bool ignoreCase) const
{
    const StringReadLock units(set);
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
    const StringReadLock units(set);
    return findFirstNotOf(units.data(), units.length(), from, ignoreCase);
}

int String::findLastOf(const char16_t* set, int length, int from, bool ignoreCase) const
{
    return findDown(StringReadLock(*this), UnitSet(set, length, ignoreCase), from, true);
}

int String::findLastOf(const String& set, int from, bool ignoreCase) const
{
    const StringReadLock units(set);
    return findLastOf(units.data(), units.length(), from, ignoreCase);
}

int String::findLastNotOf(const char16_t* set, int length, int from, bool ignoreCase) const
{
    return findDown(StringReadLock(*this), UnitSet(set, length, ignoreCase), from, false);
}

int String::findLastNotOf(const String& set, int from, bool ignoreCase) const
{
    const StringReadLock units(set);
    return findLastNotOf(units.data(), units.length(), from, ignoreCase);
}

void String::trim(TrimType type)
{
    trim(BLANKS, -1, type);
}

void String::trim(char16_t ch, TrimType type)
{
    StringWriteLock target(*this);
    trimUnits(target, type, [ch](char16_t unit) { return unit == ch; });
}

void String::trim(const char16_t* set, int length, TrimType type)
{
    if (set == nullptr)
        set = u"";
    if (isOwnText(set)) { // trimming would move the set
        const std::u16string copy(set);
        return trim(copy.c_str(), length, type);
    }
    StringWriteLock target(*this);
    trimUnits(target, type, [set](char16_t unit) { return VXStrChrW(set, unit) != nullptr; });
}

void String::trim(const String& set, TrimType type)
{
    const String units(AcquireCopy, set); // ends with a zero unit, which a part of another text need not
    trim(units.getData(), -1, type);
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
