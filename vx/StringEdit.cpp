#include "vx/String.h"

#include "vx/detail/StringLocks.h"
#include "vx/detail/TextRange.h"
#include "vxsys/Text.h"

#include <algorithm>
#include <string>
#include <tuple>
#include <utility>

namespace vx {

using detail::clipped;
using detail::lengthOf;
using detail::LONGEST_TEXT;
using detail::measured;
using detail::MOST_SHORT;
using detail::PlainBuffer;
using detail::StringReadLock;
using detail::StringSource;
using detail::StringWriteLock;
using Units = std::char_traits<char16_t>;

namespace {

// The slow parts of the operations below. They are separate so that the fast parts need no stack frame.

[[gnu::noinline]] String& appendElsewhere(String& target, const char16_t* text, int length)
{
    const bool wasTried = text != nullptr && length >= 1 && length <= MOST_SHORT;
    if (wasTried && PlainBuffer::beginShort(target, text, length)) [[likely]]
        return target;
    length = measured(text, length);
    if (char16_t* const place = wasTried ? nullptr : PlainBuffer::extend(target, length)) {
        detail::moveUnits(place, text, static_cast<std::size_t>(length));
        return target;
    }
    return PlainBuffer::appendToCopy(target, text, length) ? target : target.replace(-1, 0, text, length, 0);
}

[[gnu::noinline]] String& appendElsewhere(String& target, char16_t ch, int repeat)
{
    if (repeat == 1) { // the fast part has failed
        const bool isDone = PlainBuffer::beginShort(target, &ch, 1) || PlainBuffer::appendToCopy(target, &ch, 1);
        return isDone ? target : target.replace(-1, 0, ch, 1);
    }
    if (char16_t* const place = PlainBuffer::extend(target, repeat)) {
        std::fill_n(place, repeat, ch);
        return target;
    }
    return target.replace(-1, 0, ch, repeat);
}

[[gnu::noinline]] String& appendLocked(String& target, const String& text)
{
    const StringSource source(target, text);
    return target.append(source.data(), source.length());
}

[[gnu::noinline]] String& replaceElsewhere(
    String& target, int start, int count, const char16_t* text, int length, int textStart)
{
    length = measured(text, length);
    textStart = clipped(textStart, length);
    const int insert = length - textStart;
    if (!PlainBuffer::splice(target, start, count, text + textStart, insert))
        PlainBuffer::spliceElsewhere(target, start, count, text + textStart, insert);
    return target;
}

[[gnu::noinline]] String& replaceLocked(String& target, int start, int count, const String& text, int textStart)
{
    const StringSource source(target, text);
    return target.replace(start, count, source.data(), source.length(), textStart);
}

} // namespace

/// Replaces a range by `insert` units of `text`, or by `insert` copies of `fill` if `text` is null. `text` is outside
/// the storage of this string.
void String::splice(int start, int count, const char16_t* text, std::int64_t insert, char16_t fill)
{
    PlainBuffer::Storage* const storage = PlainBuffer::writableStorage(*this);
    if (char16_t* const place = storage != nullptr ? PlainBuffer::openGap(*storage, start, count, insert) : nullptr) {
        if (text != nullptr)
            Units::copy(place, text, static_cast<std::size_t>(insert));
        else
            std::fill_n(place, insert, fill);
        return;
    }
    const auto clip = [&](int length) {
        const int from = clipped(start, length);
        return std::pair(from, clipped(count, length - from));
    };
    StringWriteLock target(
        *this, 0, [&](int length) { return std::max<std::int64_t>(insert - clip(length).second, 0); });
    const int oldLength = target.length();
    std::tie(start, count) = clip(oldLength);
    const std::int64_t newLength = oldLength + insert - count;
    if (newLength > LONGEST_TEXT)
        throwBadAllocation();

    target.ensureCapacity(static_cast<int>(newLength));
    char16_t* place = target.data() + start;
    const int tail = oldLength - start - count;
    if (insert != count && tail > 0)
        Units::move(place + insert, place + count, static_cast<std::size_t>(tail));
    if (text != nullptr)
        Units::copy(place, text, static_cast<std::size_t>(insert));
    else
        std::fill_n(place, insert, fill);
    target.setLength(static_cast<int>(newLength));
}

void detail::PlainBuffer::spliceElsewhere(String& target, int start, int count, const char16_t* text, int insert)
{
    if (insert == 0) {
        target.splice(start, count, nullptr, 0, 0);
    } else if (target.isOwnText(text) || target.isOwnText(text + insert - 1)) {
        const std::u16string copy(text, static_cast<std::size_t>(insert));
        target.splice(start, count, copy.data(), insert, 0);
    } else {
        target.splice(start, count, text, insert, 0);
    }
}

String& String::replace(int start, int count, const char16_t* text, int length, int textStart)
{
    const bool isGiven = text != nullptr && length >= textStart && textStart >= 0;
    if (isGiven && length - textStart <= MOST_SHORT
        && PlainBuffer::splice<MOST_SHORT>(*this, start, count, text + textStart, length - textStart)) [[likely]]
        return *this;
    return replaceElsewhere(*this, start, count, text, length, textStart);
}

String& String::replace(int start, int count, const String& text, int textStart)
{
    std::u16string_view units;
    if (PlainBuffer::readExact(text, &units)) // the form for units also accepts text of this string
        return replace(start, count, units.data(), static_cast<int>(units.size()), textStart);
    return replaceLocked(*this, start, count, text, textStart);
}

String& String::replace(int start, int count, char16_t ch, int repeat)
{
    splice(start, count, nullptr, std::max(repeat, 0), ch);
    return *this;
}

String& String::append(const char16_t* text, int length)
{
    const bool isGiven = text != nullptr && length >= 1;
    if (isGiven && length <= MOST_SHORT && PlainBuffer::appendShort(*this, text, length)) [[likely]]
        return *this;
    return appendElsewhere(*this, text, length);
}

String& String::append(char16_t ch, int repeat)
{
    if (repeat != 1) [[unlikely]]
        return appendElsewhere(*this, ch, repeat);
    if (PlainBuffer::push(*this, ch)) [[likely]]
        return *this;
    return appendElsewhere(*this, ch, 1);
}

String& String::append(const String& text)
{
    std::u16string_view units;
    if (!PlainBuffer::readExact(text, &units))
        return appendLocked(*this, text);
    const auto length = static_cast<int>(units.size());
    if (length >= 1 && length <= MOST_SHORT && PlainBuffer::appendShort(*this, units.data(), length)) [[likely]]
        return *this;
    return appendElsewhere(*this, units.data(), length); // which also accepts text of this string
}

String& String::append(std::u16string_view text)
{
    return append(text.data(), lengthOf(text));
}

String& String::operator+=(const char16_t* text)
{
    return append(text);
}

String& String::operator+=(char16_t ch)
{
    return PlainBuffer::push(*this, ch) ? *this : appendElsewhere(*this, ch, 1);
}

String& String::operator+=(const String& text)
{
    return append(text);
}

String& String::operator+=(std::u16string_view text)
{
    return append(text);
}

String& String::prepend(const char16_t* text, int length)
{
    return replace(0, 0, text, length, 0);
}

String& String::prepend(char16_t ch, int repeat)
{
    return replace(0, 0, ch, repeat);
}

String& String::prepend(const String& text)
{
    return replace(0, 0, text, 0);
}

String& String::insert(int position, const char16_t* text, int length)
{
    return replace(position, 0, text, length, 0);
}

String& String::insert(int position, const String& text)
{
    return replace(position, 0, text, 0);
}

String& String::remove(int start, int count)
{
    if (PlainBuffer::splice<MOST_SHORT>(*this, start, count, nullptr, 0)) [[likely]]
        return *this;
    return replaceElsewhere(*this, start, count, nullptr, 0, 0);
}

void String::resize(int length, char16_t fill)
{
    length = std::max(length, 0);
    StringWriteLock target(*this, length, [length](int old) { return std::max(length - old, 0); });
    if (target.length() < length)
        std::fill(target.data() + target.length(), target.data() + length, fill);
    target.setLength(length);
}

void String::clear()
{
    resize(0, u' ');
}

void String::setCharAt(int index, char16_t ch)
{
    const StringWriteLock target(*this);
    target.data()[index] = ch;
}

void String::translate(char16_t from, char16_t to)
{
    const StringWriteLock target(*this);
    std::replace(target.data(), target.data() + target.length(), from, to);
}

void String::translate(const char16_t*, int, const char16_t*, int) { }

void String::translate(const char16_t* from, const char16_t* to)
{
    translate(from, -1, to, -1);
}

void String::translate(const String& from, const String& to)
{
    translate(from.getData(), from.getLength(), to.getData(), to.getLength());
}

void String::toLower()
{
    const StringWriteLock target(*this);
    target.data()[target.length()] = 0; // an adopted buffer may have no terminator yet
    VXStrToLowerW(target.data());
}

void String::toUpper()
{
    const StringWriteLock target(*this);
    target.data()[target.length()] = 0;
    VXStrToUpperW(target.data());
}

namespace {

String joined(const char16_t* left, std::int64_t leftLength, const char16_t* right, int rightLength)
{
    if (leftLength + rightLength > LONGEST_TEXT)
        throwBadAllocation();
    String sum(left, static_cast<int>(leftLength), static_cast<int>(leftLength + rightLength) + 1);
    sum.append(right, rightLength);
    return sum;
}

/// Returns `join(data, length)` for the text.
template <class Join>
String joinedWith(const String& text, Join join)
{
    std::u16string_view units;
    if (PlainBuffer::readExact(text, &units)) [[likely]]
        return join(units.data(), static_cast<int>(units.size()));
    String sum;
    { // The release of a lock may throw, and some compilers then leak what is already returned.
        const StringReadLock lock(text);
        sum = join(lock.data(), lock.length());
    }
    return sum;
}

} // namespace

String operator+(const String& left, const char16_t* right)
{
    return joinedWith(
        left, [right](const char16_t* text, int length) { return joined(text, length, right, measured(right, -1)); });
}

String operator+(const char16_t* left, const String& right)
{
    return joinedWith(
        right, [left](const char16_t* text, int length) { return joined(left, measured(left, -1), text, length); });
}

String operator+(char16_t left, const String& right)
{
    return joinedWith(right, [left](const char16_t* text, int length) { return joined(&left, 1, text, length); });
}

String operator+(const String& left, const String& right)
{
    std::u16string_view more;
    if (PlainBuffer::readExact(right, &more)) [[likely]] {
        return joinedWith(left, [more](const char16_t* text, int length) {
            return joined(text, length, more.data(), static_cast<int>(more.size()));
        });
    }
    String sum;
    {
        const StringSource source(left, right); // first: a copy comes before a lock on its source
        sum = joinedWith(left, [&source](const char16_t* text, int length) {
            return joined(text, length, source.data(), source.length());
        });
    }
    return sum;
}

} // namespace vx
