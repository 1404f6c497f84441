#include "vx/String.h"

#include "vx/AnsiBytes.h"
#include "vx/Exception.h"
#include "vx/Result.h"
#include "vx/detail/StringLocks.h"
#include "vx/detail/TextRange.h"
#include "vx/text/charset/BTCUTF8.h"
#include "vx/text/charset/ByteToCharConverter.h"
#include "vx/text/charset/CharsetException.h"
#include "vx/text/charset/detail/EncodeText.h"
#include "vx/text/charset/detail/Utf8Text.h"
#include "vx/util/BufferLocks.h"
#include "vx/util/RWCharBuffer.h"
#include "vxsys/Text.h"

#include <algorithm>
#include <limits>
#include <new>
#include <string>
#include <utility>

namespace vx {

using detail::lengthOf;
using detail::PlainBuffer;
using detail::StringReadLock;
using text::charset::BTCUTF8;
using text::charset::ByteToCharConverter;
using text::charset::InvalidCharacterException;
using text::charset::detail::EncoderFor;
using util::ByteWriteLock;
using util::RWCharBuffer;

namespace {

/// Room for `length` items that become at most `factor` each, and for a terminator.
int room(int length, int factor)
{
    const std::int64_t needed = std::int64_t {length} * std::max(factor, 1) + 1;
    if (needed > std::numeric_limits<int>::max())
        throwBadAllocation();
    return static_cast<int>(needed);
}

/// Decodes `length` bytes into room for at least `capacity` units. `read` becomes the number of bytes read.
Reference<IVXCharBuffer> decoded(
    ByteToCharConverter& decoder, const char* bytes, int length, int capacity, std::int32_t& read)
{
    constexpr int SHORT_TEXT = 256;
    // One unit more than the text can have: some decoders replace a bad byte only if that leaves a unit free.
    const int limit = room(length, decoder.getMaxCharsPerByte());
    char16_t units[SHORT_TEXT];
    Reference<RWCharBuffer> buffer;
    char16_t* text = units;
    if (limit > SHORT_TEXT) {
        buffer = PlainBuffer::make(std::max(capacity, limit));
        text = buffer->getWriteLock(limit);
    }
    std::int32_t written = 0;
    if (bytes != nullptr) {
        decoder.convert(reinterpret_cast<const signed char*>(bytes), &read, length, text, &written, limit);
        decoder.flush(text, &written, limit);
    }
    if (buffer == nullptr)
        return PlainBuffer::copyOf(text, written, capacity);
    if (written == limit) // the decoder has given more than it had announced
        text = buffer->ensureCapacity(room(limit, 1));
    text[written] = 0;
    buffer->releaseWriteLock(written + 1);
    PlainBuffer::releaseExtra(*buffer, capacity);
    return buffer;
}

/// The same from UTF-8. It fails at the same length, though it takes less room.
Reference<IVXCharBuffer> decodedUtf8(const char* bytes, int length, int capacity, std::int32_t& read)
{
    constexpr int SHORT_TEXT = 1 << 16;
    if (length > SHORT_TEXT)
        std::ignore = room(length, BTCUTF8().getMaxCharsPerByte());
    return PlainBuffer::filled(
        length, capacity, [&](char16_t* out) { return text::charset::detail::decodeUtf8(bytes, length, out, &read); });
}

/// A buffer with the decoded text, without a character that is incomplete at the end. Null for an empty text without room.
Reference<IVXCharBuffer> decoded(const char* bytes, int length, const char16_t* encoding, int capacity)
{
    if (length == -1)
        length = VXStrLenA(bytes);
    length = std::max(length, 0);
    if (length < 1 && capacity < 1)
        return nullptr;
    std::int32_t read = 0;
    if (bytes != nullptr && text::charset::detail::isUtf8(encoding)) [[likely]]
        return decodedUtf8(bytes, length, capacity, read);
    const Reference<ByteToCharConverter> decoder(ByteToCharConverter::getConverter(encoding));
    return decoded(*decoder, bytes, length, capacity, read);
}

/// Decodes a text that is not empty and not cut off within a character. In one frame, since most texts are short.
[[gnu::flatten]] Reference<IVXCharBuffer> decodedUtf8(std::string_view bytes)
{
    std::int32_t read = 0;
    Reference<IVXCharBuffer> text = decodedUtf8(bytes.data(), lengthOf(bytes), 0, read);
    if (read != lengthOf(bytes))
        throw InvalidCharacterException(u"Invalid UTF-8 sequence (incomplete at the end)");
    return text;
}

std::u16string_view viewOf(const StringReadLock& text)
{
    return {text.data(), static_cast<std::size_t>(text.length())};
}

/// Adds a zero byte if that fits. Returns the bytes written.
std::int32_t terminate(signed char* out, std::int32_t written, std::int32_t size) noexcept
{
    if (written < size)
        out[written++] = 0;
    return written;
}

[[gnu::always_inline]] inline std::int32_t encodeAsUtf8(const StringReadLock& text, signed char* out, std::int32_t size)
{
    std::int32_t written = text::charset::detail::encodeUtf8AtOnce(viewOf(text), out, size);
    if (written < 0) {
        std::int32_t read = 0;
        written = 0;
        text::charset::detail::encodeUtf8(viewOf(text), read, out, written, size);
    }
    return terminate(out, written, size);
}

std::int32_t encode(EncoderFor& encoder, const StringReadLock& text, signed char* out, std::int32_t size)
{
    if (encoder.isUtf8())
        return encodeAsUtf8(text, out, size);
    std::int32_t read = 0;
    std::int32_t written = 0;
    text::charset::detail::encodeText(*encoder, viewOf(text), read, out, written, size);
    return terminate(out, written, size);
}

/// Kept out of the way of UTF-8, which needs none of its registers. An unknown name is an error even without room.
[[gnu::noinline]] std::int32_t encodeByName(
    const String& source, signed char* out, std::int32_t size, const char16_t* encoding)
{
    EncoderFor encoder(encoding);
    if (out == nullptr || size < 1)
        return 0;
    const StringReadLock text(source);
    return encode(encoder, text, out, size);
}

void encode(EncoderFor& encoder, const StringReadLock& text, util::IByteBuffer& out)
{
    const int needed = room(text.length(), encoder->getMaxBytesPerChar());
    ByteWriteLock target(out, needed);
    target.setLength(encode(encoder, text, target.data(), needed));
}

std::string_view bytesOf(std::u8string_view utf8) noexcept
{
    return {reinterpret_cast<const char*>(utf8.data()), utf8.size()};
}

std::string_view bytesOf(const char8_t* utf8) noexcept
{
    return utf8 != nullptr ? bytesOf(std::u8string_view(utf8)) : std::string_view();
}

char16_t upperAscii(char16_t unit) noexcept
{
    return unit >= u'a' && unit <= u'z' ? static_cast<char16_t>(unit - u'a' + u'A') : unit;
}

} // namespace

String::AnsiBytes::AnsiBytes(const char16_t* encoding)
{
    if (encoding == nullptr)
        return;
    const std::size_t units = std::char_traits<char16_t>::length(encoding) + 1;
    m_encoding = std::make_unique<char16_t[]>(units);
    std::copy_n(encoding, units, m_encoding.get());
}

String::AnsiBytes::AnsiBytes(AnsiBytes& other)
    : RWByteBuffer(other)
    , m_encoding(std::move(other.m_encoding))
{
}

String::AnsiBytes& String::AnsiBytes::operator=(AnsiBytes& other)
{
    if (this == &other)
        return *this;
    RWByteBuffer::operator=(other);
    m_encoding = std::move(other.m_encoding);
    return *this;
}

String::AnsiBytes::~AnsiBytes() noexcept = default;

void String::AnsiBytes::releaseExtra() noexcept
{
    try {
        freeExtra();
    } catch (const std::bad_alloc&) { // then the text stays where it is
    }
}

bool String::AnsiBytes::encodingEquals(const char16_t* name) const
{
    const char16_t* own = m_encoding.get();
    if (own == nullptr || name == nullptr)
        return own == name;
    while (*own != 0 && upperAscii(*own) == upperAscii(*name)) {
        ++own;
        ++name;
    }
    return upperAscii(*own) == upperAscii(*name);
}

String::String(const char* bytes, int length, const char16_t* encoding, int capacity)
    : m_buffer(decoded(bytes, length, encoding, capacity))
{
    if (m_buffer == nullptr) [[unlikely]]
        setAddRef(String());
}

String::String(const signed char* bytes, int length, const char16_t* encoding, int capacity)
    : String(reinterpret_cast<const char*>(bytes), length, encoding, capacity)
{
}

String::String(const unsigned char* bytes, int length, const char16_t* encoding, int capacity)
    : String(reinterpret_cast<const char*>(bytes), length, encoding, capacity)
{
}

String::String(std::string_view utf8)
    : m_buffer(utf8.empty() ? nullptr : decodedUtf8(utf8))
{
    if (m_buffer == nullptr) [[unlikely]]
        setAddRef(String());
}

String::String(std::u8string_view utf8)
    : String(bytesOf(utf8))
{
}

String::String(const std::string& utf8)
    : String(std::string_view(utf8))
{
}

String::String(const std::u8string& utf8)
    : String(bytesOf(utf8))
{
}

String::String(const char8_t* utf8)
    : String(bytesOf(utf8))
{
}

String& String::operator=(const char* bytes)
{
    return setTo(bytes, -1, nullptr);
}

String& String::operator=(std::u16string_view text)
{
    return setTo(text.data(), lengthOf(text));
}

String& String::operator=(std::string_view utf8)
{
    return setToUtf8(utf8);
}

String& String::operator=(std::u8string_view utf8)
{
    return setToUtf8(bytesOf(utf8));
}

String& String::operator=(const std::string& utf8)
{
    return setToUtf8(utf8);
}

String& String::operator=(const std::u8string& utf8)
{
    return setToUtf8(bytesOf(utf8));
}

String& String::operator=(const char8_t* utf8)
{
    return setToUtf8(bytesOf(utf8));
}

String& String::setTo(const char* bytes, int length, const char16_t* encoding)
{
    internalSetTo(bytes, length, encoding, 0);
    return *this;
}

void String::internalSetTo(const char* bytes, int length, const char16_t* encoding, int capacity)
{
    const Reference<AnsiBytes> cache = std::move(m_ansi); // `bytes` may be part of it
    m_buffer = decoded(bytes, length, encoding, capacity);
    if (m_buffer == nullptr)
        setAddRef(String());
}

String& String::setToUtf8(std::string_view bytes)
{
    if (bytes.empty())
        return setAddRef(String());
    const Reference<AnsiBytes> cache = std::move(m_ansi); // `bytes` may be part of it
    m_buffer = decodedUtf8(bytes);
    return *this;
}

const char* String::getDataT(bool) const
{
    return getBytes();
}

const char* String::getReadLockT(bool) const
{
    return getBytesReadLock();
}

const char* String::getBytes(const char16_t* encoding) const
{
    if (m_ansi == nullptr || !m_ansi->encodingEquals(encoding)) {
        Reference<AnsiBytes> bytes(new AnsiBytes(encoding));
        getBytes(bytes.get(), encoding);
        bytes->releaseExtra();
        m_ansi = std::move(bytes);
    }
    return reinterpret_cast<const char*>(m_ansi->getData());
}

const char* String::getBytesReadLock(const char16_t* encoding) const
{
    getReadLock();
    try {
        return getBytes(encoding);
    } catch (...) {
        releaseReadLock();
        throw;
    }
}

void String::getBytes(util::IByteBuffer* out, const char16_t* encoding) const
{
    if (out == nullptr)
        throwResult(RESULT_POINTER);
    const StringReadLock text(*this);
    EncoderFor encoder(encoding);
    encode(encoder, text, *out);
}

std::int32_t String::getBytes(char* out, std::int32_t size, const char16_t* encoding) const
{
    return getBytes(reinterpret_cast<signed char*>(out), size, encoding);
}

std::int32_t String::getBytes(signed char* out, std::int32_t size, const char16_t* encoding) const
{
    if (out == nullptr || size < 1 || !text::charset::detail::isUtf8(encoding))
        return encodeByName(*this, out, size, encoding);
    const StringReadLock text(*this);
    return encodeAsUtf8(text, out, size);
}

std::int32_t String::getBytes(unsigned char* out, std::int32_t size, const char16_t* encoding) const
{
    return getBytes(reinterpret_cast<signed char*>(out), size, encoding);
}

std::string String::toUtf8() const
{
    std::u16string_view units;
    if (PlainBuffer::readExact(*this, &units)) [[likely]]
        return text::charset::detail::encodeUtf8(units);
    std::string bytes;
    { // The release of a lock may throw, and some compilers then leak what is already returned.
        const StringReadLock text(*this);
        bytes = text::charset::detail::encodeUtf8(viewOf(text));
    }
    return bytes;
}

} // namespace vx
