#include "vx/String.h"

#include "vx/AnsiBytes.h"
#include "vx/util/BufferLocks.h"
#include "vxsys/Text.h"

#include <algorithm>
#include <limits>
#include <new>
#include <string>

namespace vx {

using util::CharReadLock;
using util::CharWriteLock;

namespace {

constexpr std::int64_t LONGEST = std::numeric_limits<int>::max() - 1;

int clipped(int value, int end) noexcept
{
    return value == -1 || value > end ? end : std::max(value, 0);
}

} // namespace

/// Puts `insert` units, those of `text` or without one copies of `fill`, in place of a range. `text` lies outside this
/// string's storage.
void String::splice(int start, int count, const char16_t* text, std::int64_t insert, char16_t fill)
{
    CharWriteLock target(*this, 0);
    const int oldLength = target.length();
    start = clipped(start, oldLength);
    count = clipped(count, oldLength - start);
    const std::int64_t newLength = oldLength + insert - count;
    if (newLength > LONGEST)
        throw std::bad_alloc();

    target.ensureCapacity(static_cast<int>(newLength));
    char16_t* place = target.data() + start;
    if (insert != count)
        std::char_traits<char16_t>::move(
            place + insert, place + count, static_cast<std::size_t>(oldLength - start - count));
    if (text != nullptr)
        std::char_traits<char16_t>::copy(place, text, static_cast<std::size_t>(insert));
    else
        std::fill_n(place, insert, fill);
    target.setLength(static_cast<int>(newLength));
}

String& String::replace(int start, int count, const char16_t* text, int length, int textStart)
{
    if (text == nullptr)
        length = 0;
    else
        length = length == -1 ? VXStrLenW(text) : std::max(length, 0);
    textStart = std::min(std::max(textStart, 0), length);
    const int insert = length - textStart;
    if (insert == 0) {
        splice(start, count, nullptr, 0, 0);
    } else if (isOwnText(text + textStart) || isOwnText(text + length - 1)) {
        const std::u16string copy(text + textStart, static_cast<std::size_t>(insert));
        splice(start, count, copy.data(), insert, 0);
    } else {
        splice(start, count, text + textStart, insert, 0);
    }
    return *this;
}

String& String::replace(int start, int count, const String& text, int textStart)
{
    if (text.m_buffer == m_buffer) { // a lock on the common buffer would stand in the way of the write
        const String copy(AcquireCopy, text, textStart);
        return replace(start, count, copy.getData(), copy.getLength(), 0);
    }
    const CharReadLock source(text);
    return replace(start, count, source.data(), source.length(), textStart);
}

String& String::replace(int start, int count, char16_t ch, int repeat)
{
    splice(start, count, nullptr, std::max(repeat, 0), ch);
    return *this;
}

String& String::append(const char16_t* text, int length)
{
    return replace(-1, 0, text, length, 0);
}

String& String::append(char16_t ch, int repeat)
{
    return replace(-1, 0, ch, repeat);
}

String& String::append(const String& text)
{
    return replace(-1, 0, text, 0);
}

String& String::operator+=(const char16_t* text)
{
    return append(text);
}

String& String::operator+=(char16_t ch)
{
    return append(ch);
}

String& String::operator+=(const String& text)
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
    return replace(start, count, nullptr, 0, 0);
}

void String::resize(int length, char16_t fill)
{
    length = std::max(length, 0);
    CharWriteLock target(*this, length);
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
    const CharWriteLock target(*this, 0);
    target.data()[index] = ch;
}

void String::translate(char16_t from, char16_t to)
{
    const CharWriteLock target(*this, 0);
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
    const CharWriteLock target(*this, 0);
    VXStrToLowerW(target.data());
}

void String::toUpper()
{
    const CharWriteLock target(*this, 0);
    VXStrToUpperW(target.data());
}

String operator+(const String& left, const char16_t* right)
{
    return left + String(String::AcquireWrap, right);
}

String operator+(const char16_t* left, const String& right)
{
    return String(String::AcquireWrap, left) + right;
}

String operator+(char16_t left, const String& right)
{
    String sum(left, 1, right.getLength() + 1);
    return sum.append(right);
}

String operator+(const String& left, const String& right)
{
    const std::int64_t length = std::int64_t {left.getLength()} + right.getLength();
    if (length > LONGEST)
        throw std::bad_alloc();
    String sum(left.getData(), left.getLength(), static_cast<int>(length) + 1);
    sum.append(right);
    return sum;
}

} // namespace vx
