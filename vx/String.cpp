#include "vx/String.h"

#include "vx/AnsiBytes.h"
#include "vx/Exceptions.h"
#include "vx/Result.h"
#include "vx/detail/StringLocks.h"
#include "vx/detail/TextHash.h"
#include "vx/detail/TextRange.h"
#include "vx/util/BufferLocks.h"
#include "vx/util/ROCharBuffer.h"
#include "vx/util/RWCharBuffer.h"
#include "vxsys/Text.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <functional>
#include <string_view>
#include <typeinfo>

namespace vx {

using detail::clipped;
using detail::EmptyBuffer;
using detail::measured;
using detail::MOST_SHORT;
using detail::PlainBuffer;
using detail::StringReadLock;
using detail::StringSource;
using detail::withTerminator;
using util::CharReadLock;
using util::ROCharBuffer;
using util::RWCharBuffer;

namespace {

/// The place of the buffer that all empty strings share. It is never destroyed, because strings of other libraries may
/// outlive the static objects of this file.
class SharedEmptyBuffer {
public:
    SharedEmptyBuffer() noexcept { s_buffer = new (m_place) EmptyBuffer(); }

    /// A string that is constructed before the static objects of this file gets a new buffer.
    static Reference<IVXCharBuffer> get()
    {
        if (s_buffer == nullptr) [[unlikely]]
            return getEarly();
        Reference<IVXCharBuffer> shared;
        shared.attach(s_buffer);
        return shared;
    }

private:
    [[gnu::noinline]] static Reference<IVXCharBuffer> getEarly() { return PlainBuffer::own(new ROCharBuffer(u"", 1)); }

    alignas(EmptyBuffer) std::byte m_place[sizeof(EmptyBuffer)];
    static constinit IVXCharBuffer* s_buffer;
};

constinit IVXCharBuffer* SharedEmptyBuffer::s_buffer = nullptr;
SharedEmptyBuffer g_sharedEmptyBuffer;

Reference<IVXCharBuffer> wrapped(const char16_t* text, int length)
{
    if (text == nullptr)
        return SharedEmptyBuffer::get();
    return PlainBuffer::own(new ROCharBuffer(text, withTerminator(length)));
}

/// A buffer with the text, which AcquireWrap uses in place.
Reference<IVXCharBuffer> acquired(String::AcquireMode mode, const char16_t* text, int length, int capacity)
{
    if (length < 1 && capacity < 1)
        return SharedEmptyBuffer::get();
    return mode == String::AcquireWrap ? wrapped(text, length) : PlainBuffer::copyOf(text, length, capacity);
}

/// In one frame with the constructor: most texts are short.
inline Reference<IVXCharBuffer> copied(std::u16string_view text)
{
    if (text.size() - 1 < PlainBuffer::Storage::MOST_FOLLOWING - 1) [[likely]]
        return PlainBuffer::copyOfShort(text.data(), static_cast<int>(text.size()));
    return acquired(String::AcquireCopy, text.data(), detail::lengthOf(text), 0);
}

/// The capacity includes the terminator. There is memory for one unit more, so that `capacity` units fit too.
Reference<IVXCharBuffer> emptyWithRoom(int capacity)
{
    if (capacity >= PlainBuffer::Storage::MOST_FOLLOWING)
        return PlainBuffer::copyOf(u"", 0, capacity);
    return PlainBuffer::filled(capacity, capacity, [](char16_t*) { return 0; });
}

Reference<IVXCharBuffer> rangeOf(String::AcquireMode mode, std::u16string_view text, int start, int end, int capacity)
{
    end = clipped(end, static_cast<int>(text.size()));
    start = clipped(start, end);
    return acquired(mode, text.data() + start, end - start, capacity);
}

Reference<IVXCharBuffer> rangeOf(String::AcquireMode mode, const String& other, int start, int end, int capacity)
{
    std::u16string_view units;
    if (PlainBuffer::readExact(other, &units))
        return rangeOf(mode, units, start, end, capacity);
    Reference<IVXCharBuffer> range;
    { // The release of a lock may throw, and some compilers then leak what is already returned.
        const StringReadLock source(other);
        units = {source.data(), static_cast<std::size_t>(source.length())};
        range = rangeOf(mode, units, start, end, capacity);
    }
    return range;
}

/// The slow part of an assignment. It is separate so that the fast part needs no stack frame.
[[gnu::noinline]] String& setElsewhere(String& target, const String& other)
{
    std::u16string_view units;
    if (PlainBuffer::readExact(other, &units)
        && PlainBuffer::overwrite(target, units.data(), static_cast<int>(units.size())))
        return target;
    return target.replace(0, -1, other, 0);
}

} // namespace

String::String()
    : m_buffer(SharedEmptyBuffer::get())
{
}

String::String(const String& other) noexcept
    : AbstractCharBuffer()
    , m_buffer(PlainBuffer::share(other.m_buffer))
{
}

String::String(int capacity)
    : m_buffer(capacity > 0 ? emptyWithRoom(capacity) : SharedEmptyBuffer::get())
{
}

String::String(const char16_t* text, int length, int capacity)
    : m_buffer(acquired(AcquireCopy, text, measured(text, length), capacity))
{
}

String::String(std::u16string_view text)
    : m_buffer(copied(text))
{
}

String::String(char16_t ch, int count, int capacity)
    : m_buffer(PlainBuffer::filled(std::max(count, 0), capacity, [=](char16_t* out) {
        std::fill_n(out, std::max(count, 0), ch);
        return std::max(count, 0);
    }))
{
}

String::String(const STRUCT_VX_STR_LIT_INFO& literal)
    : m_buffer(wrapped(literal.text, literal.length))
{
}

String::String(util::ICharBuffer* buffer)
    : String(AcquireCopy, buffer)
{
}

String::String(AcquireMode mode, const String& other, int start, int end, int capacity)
    : m_buffer(mode != AcquireShare ? rangeOf(mode, other, start, end, capacity) : other.m_buffer)
{
    if (mode == AcquireUpper && getLength() > 0)
        toUpper();
}

String::String(AcquireMode mode, const char16_t* text, int length, int capacity)
    : m_buffer(acquired(mode, text, measured(text, length), capacity))
{
    if (mode == AcquireUpper && getLength() > 0)
        toUpper();
}

String::String(AcquireMode mode, util::ICharBuffer* buffer)
{
    if (buffer == nullptr) {
        m_buffer = SharedEmptyBuffer::get();
        return;
    }
    if (mode == AcquireShare) {
        m_buffer = Reference<IVXCharBuffer>(static_cast<IVXUnknown*>(buffer));
        if (m_buffer == nullptr)
            m_buffer = dynamic_cast<IVXCharBuffer*>(buffer);
        if (m_buffer == nullptr)
            throwResult(RESULT_NO_INTERFACE);
        return;
    }
    const CharReadLock source(*buffer);
    const int length = std::max(source.length(), 0);
    m_buffer = mode == AcquireWrap ? wrapped(source.data(), length) : PlainBuffer::copyOf(source.data(), length);
    if (mode == AcquireUpper && getLength() > 0)
        toUpper();
}

String String::CVXString(const String& other)
{
    return other;
}

String String::CVXString(const char16_t* text, int length, int capacity)
{
    return String(text, length, capacity);
}

String String::CVXString(const char* bytes, int length, const char16_t* encoding, int capacity)
{
    return String(bytes, length, encoding, capacity);
}

// Here, so that the destructor of strings, which runs more often than any other, needs no call for its base.
util::AbstractCharBuffer::~AbstractCharBuffer() noexcept(false) = default;

String::~String() noexcept
{
    PlainBuffer::release(m_buffer);
    // Mostly both are null now, and the destructors of the fields need no branch.
    if (m_ansi != nullptr) [[unlikely]]
        m_ansi = nullptr;
    if (m_buffer != nullptr) [[unlikely]]
        m_buffer = nullptr;
}

String& String::operator=(const String& other)
{
    return setTo(other);
}

String& String::operator=(String&& other)
{
    if (m_buffer == other.m_buffer) // as in the moves of a sort, where the text has never left
        return *this;
    // A string keeps an adopted buffer, such as one with a lock, and an assignment does not make it depend on memory of another
    // owner. A derived class may have its own reads and writes.
    const bool isPlain = detail::isExactly<String>(*this) && PlainBuffer::isKnown(*m_buffer)
        && detail::isExactly<String>(other) && PlainBuffer::soleStorage(*other.m_buffer) != nullptr;
    if (!isPlain)
        return setTo(other);
    swap(other);
    return *this;
}

String& String::operator=(const char16_t* text)
{
    return setTo(text);
}

String& String::operator=(char16_t ch)
{
    return setTo(ch);
}

String& String::setTo(const String& other)
{
    std::u16string_view units;
    if (PlainBuffer::readExact(other, &units) && units.size() <= MOST_SHORT
        && PlainBuffer::overwrite<MOST_SHORT>(*this, units.data(), static_cast<int>(units.size()))) [[likely]]
        return *this;
    return setElsewhere(*this, other);
}

String& String::setTo(const char16_t* text, int length)
{
    length = measured(text, length);
    if (PlainBuffer::overwrite(*this, text, length))
        return *this;
    return replace(0, -1, text, length, 0);
}

String& String::setTo(char16_t ch, int count)
{
    return replace(0, -1, ch, count);
}

String& String::setTo(AcquireMode mode, const char16_t* text, int length)
{
    // A wrap replaces the buffer, and a text inside that buffer would be freed with it.
    if (mode == AcquireWrap && text != nullptr && !isOwnText(text)) {
        m_buffer = wrapped(text, measured(text, length));
        m_ansi = nullptr;
        return *this;
    }
    replace(0, -1, text, length, 0);
    if (mode == AcquireUpper && getLength() > 0)
        toUpper();
    return *this;
}

String& String::setTo(AcquireMode mode, const String& other, int start, int end)
{
    if (mode == AcquireShare)
        return setAddRef(other);
    if (mode == AcquireWrap && &other != this) {
        const String range(AcquireWrap, other, start, end);
        return setAddRef(range);
    }
    const StringSource source(*this, other);
    end = clipped(end, source.length());
    start = clipped(start, end);
    return setTo(mode == AcquireWrap ? AcquireCopy : mode, source.data() + start, end - start);
}

String& String::setAddRef(const String& other) noexcept
{
    m_buffer = other.m_buffer;
    m_ansi = nullptr;
    return *this;
}

void String::swap(String& other) noexcept
{
    m_buffer.swap(other.m_buffer);
    m_ansi.swap(other.m_ansi);
}

int String::getLength() const
{
    const char16_t* data = nullptr;
    int length = 0;
    if (!PlainBuffer::read(*m_buffer, &data, &length))
        length = m_buffer->GetLength();
    return std::max(length - 1, 0);
}

const char16_t* String::getData() const
{
    const char16_t* data = nullptr;
    int length = 0;
    return PlainBuffer::read(*m_buffer, &data, &length) ? data : m_buffer->GetData();
}

const char16_t* String::getReadLock() const
{
    const char16_t* data = nullptr;
    throwIfFailed(m_buffer->GetReadLock(&data));
    return data;
}

void String::releaseReadLock() const
{
    throwIfFailed(m_buffer->ReleaseReadLock());
}

bool String::isWritable() const
{
    return true;
}

char16_t* String::getWriteLock(int minimumLength)
{
    const int needed = withTerminator(std::max(minimumLength, 0));
    m_ansi = nullptr;
    copyOnWrite(needed);
    char16_t* data = nullptr;
    throwIfFailed(m_buffer->GetWriteLock(needed, &data));
    return data;
}

char16_t* String::ensureCapacity(int minimumLength)
{
    char16_t* data = nullptr;
    throwIfFailed(m_buffer->EnsureCapacity(withTerminator(std::max(minimumLength, 0)), &data));
    return data;
}

void String::releaseWriteLock(int length)
{
    m_ansi = nullptr; // bytes that were encoded under the lock are not those of the new text
    if (length < 0)
        length = VXStrLenW(m_buffer->GetData());
    try {
        char16_t* data = nullptr;
        throwIfFailed(m_buffer->EnsureCapacity(withTerminator(length), &data));
        data[length] = 0;
    } catch (...) { // the lock is released nevertheless, and the old text is dropped
        char16_t* data = nullptr;
        const int held = m_buffer->GetLength();
        if (held > 0 && m_buffer->EnsureCapacity(held, &data) >= 0)
            data[held - 1] = 0;
        m_buffer->ReleaseWriteLock(held);
        throw;
    }
    throwIfFailed(m_buffer->ReleaseWriteLock(length + 1));
}

void String::freeExtra()
{
    if (detail::isExactly<RWCharBuffer>(*m_buffer) && !isSoleWriter())
        return;
    throwIfFailed(m_buffer->FreeExtra());
}

const char16_t* String::getDataT(int) const
{
    return getData();
}

const char16_t* String::getReadLockT(int) const
{
    return getReadLock();
}

bool String::isSoleWriter() const
{
    if (detail::isExactly<RWCharBuffer>(*m_buffer))
        return static_cast<const RWCharBuffer&>(*m_buffer).GetRefCount() < 2;
    if (detail::isExactly<ROCharBuffer>(*m_buffer))
        return false;
    m_buffer->AddRef();
    return m_buffer->Release() < 2 && m_buffer->IsWritable() != 0;
}

bool String::isOwnText(const char16_t* text) const
{
    const char16_t* begin = nullptr;
    int length = 0;
    if (!PlainBuffer::read(*m_buffer, &begin, &length)) {
        begin = m_buffer->GetData();
        length = m_buffer->GetLength();
    }
    return begin != nullptr && !std::less<>()(text, begin) && std::less<>()(text, begin + std::max(length, 1));
}

void String::copyOnWrite(int capacity)
{
    if (isSoleWriter())
        return;
    const Reference<IVXCharBuffer> old = m_buffer; // outlives its lock
    const char16_t* text = nullptr;
    int length = 0;
    if (PlainBuffer::read(*old, &text, &length)) {
        m_buffer = PlainBuffer::copyOf(text, std::max(length - 1, 0), capacity);
    } else {
        const CharReadLock source(*old);
        m_buffer = PlainBuffer::copyOf(source.data(), std::max(source.length() - 1, 0), capacity);
    }
    m_ansi = nullptr;
}

Object* String::clone() const
{
    if (typeid(*this) != typeid(String))
        throw CloneNotSupportedException();
    return new String(*this);
}

std::uint32_t String::hashCode() const
{
    return hashCode(false);
}

std::uint32_t String::hashCode(bool ignoreCase) const
{
    const StringReadLock text(*this);
    return detail::hashText(text.data(), text.length(), ignoreCase);
}

String String::substring(int start, int end) const
{
    std::u16string_view units;
    if (!PlainBuffer::readExact(*this, &units))
        return String(AcquireCopy, *this, start, end);
    end = clipped(end, static_cast<int>(units.size()));
    start = clipped(start, end);
    return PlainBuffer::part(units, start, end);
}

String detail::PlainBuffer::part(std::u16string_view text, int start, int end)
{
    const std::u16string_view range(text.data() + start, static_cast<std::size_t>(end - start));
    const bool isShort = range.size() - 1 < LEAST_UNITS - 1; // and not empty
    return isShort && text.size() - static_cast<std::size_t>(start) >= LEAST_UNITS ? copyOfLeast(range) : String(range);
}

inline String detail::PlainBuffer::copyOfLeast(std::u16string_view text)
{
    util::RWCharBuffer* const buffer = makeShort(LEAST_UNITS, LEAST_UNITS, static_cast<int>(text.size()) + 1);
    char16_t* const units = buffer->m_storage.following();
    std::memcpy(units, text.data(), LEAST_UNITS * sizeof(char16_t));
    units[text.size()] = 0;
    Reference<IVXCharBuffer> first = own(buffer);
    String copy;
    release(copy.m_buffer);
    copy.m_buffer.attach(first.detach());
    return copy;
}

String String::toString() const
{
    return *this;
}

std::u16string_view String::view() const
{
    std::u16string_view units;
    return PlainBuffer::readExact(*this, &units)
        ? units
        : std::u16string_view(getData(), static_cast<std::size_t>(getLength()));
}

} // namespace vx
