#include "vx/Str1.h"

#include "vx/Exceptions.h"
#include "vx/String.h"
#include "vx/detail/InsertUtf8.h"
#include "vx/detail/StringLocks.h"
#include "vx/detail/TextHash.h"
#include "vxsys/Memory.h"
#include "vxsys/Text.h"

#include <algorithm>
#include <limits>

namespace vx {

using detail::StringReadLock;
using Units = std::char_traits<char16_t>;

namespace {

constexpr std::int64_t MAX_CAPACITY = StrBuf1::MAX_CAPACITY;
constexpr std::int64_t CAPACITY_STEP = 16;

constexpr std::int64_t roundedUp(std::int64_t units) noexcept
{
    return (units + CAPACITY_STEP - 1) / CAPACITY_STEP * CAPACITY_STEP;
}

/// The length of a text that is to be copied.
std::int32_t copyable(std::u16string_view text)
{
    if (text.size() > static_cast<std::size_t>(MAX_CAPACITY))
        throw OutOfMemoryException();
    return static_cast<std::int32_t>(text.size());
}

/// A zero-terminated text; null is an empty one.
std::u16string_view viewOf(const char16_t* text) noexcept
{
    return text != nullptr ? std::u16string_view(text) : std::u16string_view();
}

} // namespace

Str1::Str1(Str1&& other)
{
    setTo(std::move(other));
}

Str1::Str1(Str1&& other, std::int32_t start, std::int32_t end)
    : Str1(Str1(std::as_const(other), start, end).detached())
{
}

Str1::Str1(const char16_t* text, std::int32_t length)
{
    copy(text, length);
}

Str1::Str1(std::u16string_view text)
{
    append(text);
}

StrBuf1* Str1::fastAllocBuffer(std::uint32_t)
{
    return nullptr;
}

Str1& Str1::operator=(const Str1& other) noexcept
{
    setTo(other);
    return *this;
}

Str1& Str1::operator=(Str1&& other)
{
    setTo(std::move(other));
    return *this;
}

void Str1::setTo(const Str1& other) noexcept
{
    share(other, 0, other.m_length);
}

void Str1::setTo(Str1&& other)
{
    if (other.m_buffer == m_buffer) {
        setTo(std::as_const(other));
    } else if (other.isEmbedded()) {
        copy(other);
    } else {
        setTo(std::as_const(other));
        other.reset();
    }
}

Str1& Str1::operator=(const char16_t* text)
{
    copy(text);
    return *this;
}

Str1& Str1::operator=(const String& text)
{
    copy(text);
    return *this;
}

Str1& Str1::operator=(std::u16string_view text)
{
    copy(text.data(), copyable(text));
    return *this;
}

std::int32_t Str1::copy(const char16_t* text, std::int32_t length)
{
    length = measured(text, length);
    if (length == 0) {
        clear();
        return 0;
    }
    // A text inside this string's own buffer stays where it is: either it fits, or other strings keep the buffer alive.
    ensureCapacity1(static_cast<std::uint32_t>(length), 0, 0);
    Units::move(m_buffer->getData(), text, static_cast<std::size_t>(length));
    m_offset = 0;
    m_length = length;
    return 0;
}

std::int32_t Str1::copy(const Str1& text)
{
    return copy(text.getData0(), text.m_length);
}

std::int32_t Str1::copy(const String& text)
{
    const StringReadLock source(text);
    return copy(source.data(), source.length());
}

Str1& Str1::operator+=(const char16_t* text)
{
    append(text);
    return *this;
}

Str1& Str1::operator+=(char16_t ch)
{
    append(ch);
    return *this;
}

Str1& Str1::operator+=(const String& text)
{
    append(text);
    return *this;
}

Str1& Str1::operator+=(const Str1& text)
{
    if (text.isEmbedded())
        append(text.getData0(), text.m_length);
    else
        append(text);
    return *this;
}

Str1& Str1::operator+=(std::u16string_view text)
{
    append(text);
    return *this;
}

std::int32_t Str1::append(const char16_t* text, std::int32_t length)
{
    length = measured(text, length);
    if (length == 0)
        return 0;
    if (isOwnText(text) || isOwnText(text + length - 1)) {
        const Str1Copy piece(text, length);
        Units::copy(extend(length), piece.first(), static_cast<std::size_t>(length));
    } else {
        Units::copy(extend(length), text, static_cast<std::size_t>(length));
    }
    return 0;
}

std::int32_t Str1::append(char16_t ch, int repeat)
{
    if (repeat > 0)
        std::fill_n(extend(repeat), repeat, ch);
    return 0;
}

std::int32_t Str1::append(const String& text)
{
    const StringReadLock source(text);
    return append(source.data(), std::max(source.length(), 0));
}

std::int32_t Str1::append(std::u16string_view text)
{
    return append(text.data(), copyable(text));
}

std::int32_t Str1::append(const Str1& other, std::int32_t count, std::int32_t start)
{
    if (start < 0 || start >= other.m_length)
        return 0;
    const std::int32_t rest = other.m_length - start;
    if (count == -1 || count > rest)
        count = rest;
    if (count < 1)
        return 0;
    if (m_buffer != nullptr)
        return append(other.first() + start, count);
    share(other, start, count);
    return 0;
}

std::int32_t Str1::append(Str1&& other, std::int32_t count, std::int32_t start)
{
    if (m_buffer == nullptr && other.isEmbedded())
        return append(other.detached(), count, start);
    return append(std::as_const(other), count, start);
}

void Str1::clear() noexcept
{
    m_offset = 0;
    m_length = 0;
}

void Str1::reset() noexcept
{
    take(nullptr);
}

void Str1::adjustLength(std::int32_t difference) noexcept
{
    const std::int64_t room = m_buffer != nullptr ? std::int64_t {m_buffer->getCapacityValue()} - m_offset : 0;
    const std::int64_t length = std::int64_t {m_length} + difference;
    m_length = static_cast<std::int32_t>(std::clamp<std::int64_t>(length, 0, std::max<std::int64_t>(room, m_length)));
}

bool Str1::operator==(const char16_t* text) const noexcept
{
    return view() == viewOf(text);
}

bool Str1::operator==(const String& text) const
{
    const StringReadLock other(text);
    return view() == std::u16string_view(other.data(), static_cast<std::size_t>(other.length()));
}

std::strong_ordering Str1::operator<=>(const char16_t* text) const noexcept
{
    return view() <=> viewOf(text);
}

std::strong_ordering Str1::operator<=>(const String& text) const
{
    const StringReadLock other(text);
    return view() <=> std::u16string_view(other.data(), static_cast<std::size_t>(other.length()));
}

// Flat, so that the hash is compiled for this case alone: keys of maps are short, and looked up often.
[[gnu::flatten]] std::uint32_t Str1::hashCode() const noexcept
{
    return detail::hashText(getData0(), m_length, false);
}

int Str1::indexOf(char16_t ch, int from, bool ignoreCase) const noexcept
{
    if (from < 0 || from >= m_length)
        return -1;
    const char16_t* begin = first();
    const char16_t* end = begin + m_length;
    const char16_t* found = nullptr;
    if (ignoreCase) {
        const char16_t lower = VXToLowerW(ch);
        found = std::find_if(begin + from, end, [lower](char16_t unit) { return VXToLowerW(unit) == lower; });
    } else {
        found = std::find(begin + from, end, ch);
    }
    return found != end ? static_cast<int>(found - begin) : -1;
}

bool Str1::startsWith(const Str1& text, bool ignoreCase) const noexcept
{
    return startsWith(text.getData0(), text.m_length, ignoreCase);
}

bool Str1::startsWith(const char16_t* text, int length, bool ignoreCase) const noexcept
{
    length = measured(text, length);
    if (length == 0)
        return true;
    if (length > m_length)
        return false;
    return ignoreCase ? VXMemNICmpW(first(), text, length) == 0
                      : Units::compare(first(), text, static_cast<std::size_t>(length)) == 0;
}

std::int32_t Str1::toLower()
{
    return changeCase(VXToLowerW);
}

std::int32_t Str1::toUpper()
{
    return changeCase(VXToUpperW);
}

String Str1::toVXString() const
{
    return String(getData0(), m_length);
}

Str1 Str1::detached() const
{
    if (m_buffer == nullptr || (m_buffer->ownsData() && !m_buffer->isStaticInstance()))
        return *this;
    return Str1(getData0(), m_length);
}

std::uint32_t Str1::ensureCapacity1(std::uint32_t capacity, std::int32_t start, std::int32_t end)
{
    if (end == -1 || end > m_length)
        end = m_length;
    start = std::max(start, 0);
    const std::int32_t kept = start < end ? end - start : 0;
    const std::uint32_t needed = std::max(capacity, static_cast<std::uint32_t>(kept));

    const std::uint32_t available = m_buffer != nullptr ? m_buffer->isPrivatelyHeld(0) : 0;
    if (available != 0) {
        const std::uint32_t offset = kept != 0 ? m_offset : 0; // of this text only once nothing can fail
        if (std::uint64_t {offset} + capacity <= available) {
            m_offset = offset;
            return available - offset;
        }
        if (offset != 0 && needed <= available) {
            moveTo(m_buffer, start, kept);
            return available;
        }
        if (StrBuf1* own = fastAllocBuffer(needed)) {
            moveTo(own, start, kept);
            return own->getCapacityValue();
        }
    }
    if (capacity == 0)
        return 0;

    StrBuf1* buffer = fastAllocBuffer(needed);
    if (buffer == nullptr) {
        std::int64_t grown = needed;
        if (kept != 0 && grown <= MAX_CAPACITY)
            grown = std::min(std::max(grown, roundedUp(grown) * 5 / 4), MAX_CAPACITY);
        buffer = newStrBuf1Cap(static_cast<std::uint32_t>(grown));
    }
    moveTo(buffer, start, kept);
    return buffer->getCapacityValue();
}

std::int32_t Str1::normalizeCapacity(std::uint32_t n)
{
    const std::int64_t units = roundedUp(n);
    if (units > std::numeric_limits<std::int32_t>::max())
        throw OutOfMemoryException();
    return static_cast<std::int32_t>(units);
}

StrBuf1* Str1::newStrBuf1Cap(std::uint32_t capacity)
{
    if (capacity > MAX_CAPACITY)
        throw OutOfMemoryException();
    // Rounding up the highest value gives one more than the capacity field can hold.
    const std::int64_t units = std::min(roundedUp(capacity), MAX_CAPACITY);
    void* memory = vxsys::allocate(sizeof(StrBuf1Wrap) + static_cast<std::size_t>(units) * sizeof(char16_t));
    void* data = static_cast<std::byte*>(memory) + sizeof(StrBuf1Wrap);
    return countedPlainly(new (memory) StrBuf1Wrap(static_cast<char16_t*>(data), static_cast<std::uint32_t>(units)));
}

void Str1::take(StrBuf1* buffer, std::int32_t length) noexcept
{
    if (buffer != nullptr)
        addReference(*buffer);
    StrBuf1* old = std::exchange(m_buffer, buffer);
    if (old != nullptr)
        release(*old);
    m_offset = 0;
    m_length = length;
}

std::int32_t Str1::measured(const char16_t* text, std::int32_t length) noexcept
{
    if (text == nullptr)
        return 0;
    return length == -1 ? VXStrLenW(text) : std::max(length, 0);
}

void Str1::share(const Str1& other, std::int32_t start, std::int32_t length) noexcept
{
    const std::uint32_t offset = other.m_offset + static_cast<std::uint32_t>(start);
    take(other.m_buffer, length);
    m_offset = offset;
}

bool Str1::isOwnText(const char16_t* text) const noexcept
{
    if (m_buffer == nullptr)
        return false;
    const char16_t* begin = m_buffer->getData();
    const std::int64_t used = std::int64_t {m_offset} + m_length;
    return !std::less<>()(text, begin)
        && std::less<>()(text, begin + std::max<std::int64_t>(used, m_buffer->getCapacityValue()));
}

/// Makes a part of the text the whole text, and moves it to the start of `buffer`.
void Str1::moveTo(StrBuf1* buffer, std::int32_t start, std::int32_t kept) noexcept
{
    if (kept != 0)
        Units::move(buffer->getData(), first() + start, static_cast<std::size_t>(kept));
    take(buffer, kept);
}

/// Makes the text `count` units longer and returns the place of the new units.
char16_t* Str1::extend(std::int32_t count)
{
    const std::int64_t length = std::int64_t {m_length} + count;
    if (length > MAX_CAPACITY)
        throw OutOfMemoryException();
    ensureCapacity1(static_cast<std::uint32_t>(length), 0, -1);
    char16_t* place = first() + m_length;
    m_length = static_cast<std::int32_t>(length);
    return place;
}

/// Makes room for `more` units after the text, as far as a buffer can hold them.
void Str1::reserve(std::int64_t more)
{
    ensureCapacity1(static_cast<std::uint32_t>(std::min(m_length + more, MAX_CAPACITY)), 0, -1);
}

std::int32_t Str1::changeCase(char16_t (*map)(char16_t) noexcept)
{
    std::int32_t index = 0;
    while (index < m_length && map(first()[index]) == first()[index])
        ++index;
    if (index == m_length)
        return 0;
    ensureCapacity1(static_cast<std::uint32_t>(m_length), 0, -1);
    std::transform(first() + index, first() + m_length, first() + index, map);
    return 0;
}

Str1::Appendor::Appendor(Str1& target, std::int32_t firstReserve, std::int32_t laterReserve) noexcept
    : m_target(target)
    , m_firstReserve(std::max(firstReserve, 0))
    , m_laterReserve(std::max(laterReserve, 0))
{
}

char16_t* Str1::Appendor::checkAvailable(std::int32_t n)
{
    n = std::max(n, 0);
    if (n > m_room)
        setRemCap(n);
    m_room -= n;
    char16_t* place = m_target.getData1();
    if (place != nullptr)
        place += m_target.m_length;
    m_target.m_length += n;
    return place;
}

std::int32_t Str1::Appendor::fastAppend(const char16_t* text, std::int32_t n)
{
    if (text == nullptr || n < 1)
        return 0;
    if (n > m_room && m_target.isOwnText(text)) { // it would move away
        const Str1Copy piece(text, n);
        return fastAppend(piece.getData0(), n);
    }
    Units::copy(checkAvailable(n), text, static_cast<std::size_t>(n));
    return 0;
}

std::int32_t Str1::Appendor::fastAppend(char16_t ch)
{
    *checkAvailable(1) = ch;
    return 0;
}

std::int32_t Str1::Appendor::firstAppend(const char16_t* text, std::int32_t n)
{
    if (text != nullptr && n > 0)
        return fastAppend(text, n);
    setRemCap(0);
    return 0;
}

void Str1::Appendor::setRemCap(std::int32_t n)
{
    const std::int64_t length = std::int64_t {m_target.m_length} + std::max(n, 0);
    if (length > MAX_CAPACITY)
        throw OutOfMemoryException();
    const std::int64_t reserve = used() != 0 ? m_laterReserve : m_firstReserve;
    const std::uint32_t capacity
        = m_target.ensureCapacity1(static_cast<std::uint32_t>(std::min(length + reserve, MAX_CAPACITY)), 0, -1);
    m_firstReserve = SPENT;
    m_room = std::max(static_cast<std::int32_t>(capacity) - m_target.m_length, 0);
}

std::ostream& operator<<(std::ostream& stream, const Str1& text)
{
    return detail::insertUtf8(stream, text);
}

} // namespace vx
