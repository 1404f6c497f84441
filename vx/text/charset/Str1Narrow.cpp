#include "vx/Str1.h"

#include "vx/Exceptions.h"
#include "vx/Result.h"
#include "vx/detail/TextCopy.h"
#include "vx/text/charset/CharToByteConverter.h"
#include "vx/text/charset/CharsetException.h"
#include "vx/text/charset/detail/EncodeText.h"
#include "vx/text/charset/detail/Utf8Text.h"
#include "vx/vorb/Boundary.h"
#include "vxsys/Memory.h"
#include "vxsys/Text.h"

#include <algorithm>
#include <limits>
#include <string_view>

namespace vx {

using text::charset::CharToByteConverter;
using text::charset::InvalidCharacterException;
using text::charset::detail::DecoderFor;
using text::charset::detail::EncoderFor;

namespace {

constexpr const char16_t* UTF_8 = u"UTF-8";
constexpr std::int32_t BLOCK = 512;
constexpr std::int64_t LARGEST = std::numeric_limits<std::int32_t>::max();

std::int32_t checkedSize(std::int64_t size)
{
    if (size > LARGEST)
        throw OutOfMemoryException();
    return static_cast<std::int32_t>(size);
}

std::int32_t lengthOf(std::size_t length)
{
    return checkedSize(static_cast<std::int64_t>(std::min(length, static_cast<std::size_t>(LARGEST) + 1)));
}

/// Decodes at most BLOCK bytes of UTF-8 and gives the units to `store`. Returns whether the last character is whole.
template <class Store>
bool decodeBlock(const char* bytes, std::int32_t length, Store store)
{
    char16_t units[BLOCK];
    std::int32_t read = 0;
    const std::int32_t written = text::charset::detail::decodeUtf8(bytes, length, units, &read);
    if (written != 0)
        store(units, written);
    return read == length;
}

/// Calls `encode(position, written)` if there are units from `*position` (null: 0) on, and stores what it has done.
template <class Encode>
std::int32_t encodeFrom(
    std::u16string_view text, bool isValid, std::int32_t* written, std::int32_t* position, Encode encode)
{
    const auto length = static_cast<std::int32_t>(text.size());
    std::int32_t done = 0;
    std::int32_t place = position != nullptr ? *position : 0;
    std::int32_t result = isValid ? RESULT_OK : RESULT_INVALID_ARGUMENT;
    if (isValid && place >= 0 && place < length)
        result = vorb::atBoundary([&] { encode(place, done); });
    if (written != nullptr)
        *written = done;
    if (position != nullptr)
        *position = place;
    return result >= 0 && place < length ? RESULT_BUFFER_TOO_SMALL : result;
}

} // namespace

Str1::Str1(const char* bytes, std::int32_t length, const char16_t* encoding)
    : Str1()
{
    if (length == -1)
        length = VXStrLenA(bytes);
    if (bytes == nullptr || length < 1)
        return;
    if (length > BLOCK || !text::charset::detail::isUtf8(encoding)) {
        appendA(bytes, length, encoding);
        return;
    }
    decodeBlock(bytes, length, [this](const char16_t* units, std::int32_t count) {
        take(newStrBuf1Cap(static_cast<std::uint32_t>(count)), count);
        detail::moveUnits(first(), units, static_cast<std::size_t>(count));
    });
}

Str1::Str1(const signed char* bytes, std::int32_t length, const char16_t* encoding)
    : Str1(reinterpret_cast<const char*>(bytes), length, encoding)
{
}

Str1::Str1(std::string_view utf8)
    : Str1()
{
    const std::int32_t length = lengthOf(utf8.size());
    const auto store = [this](const char16_t* units, std::int32_t count) {
        take(newStrBuf1Cap(static_cast<std::uint32_t>(count)), count);
        detail::moveUnits(first(), units, static_cast<std::size_t>(count));
    };
    const bool isWhole
        = length <= BLOCK ? decodeBlock(utf8.data(), length, store) : !failed(appendA(utf8.data(), length, UTF_8));
    if (!isWhole)
        throw InvalidCharacterException(u"Invalid UTF-8 sequence (incomplete at the end)");
}

Str1::Str1(std::u8string_view utf8)
    : Str1(std::string_view(reinterpret_cast<const char*>(utf8.data()), utf8.size()))
{
}

Str1::Str1(const std::string& utf8)
    : Str1(std::string_view(utf8))
{
}

Str1::Str1(const std::u8string& utf8)
    : Str1(std::u8string_view(utf8))
{
}

Str1::Str1(const char8_t* utf8)
    : Str1(utf8 != nullptr ? std::u8string_view(utf8) : std::u8string_view())
{
}

std::int32_t Str1::copyA(const char* bytes, std::int32_t length, const char16_t* encoding)
{
    clear();
    return appendA(bytes, length, encoding);
}

std::int32_t Str1::copyA(const signed char* bytes, std::int32_t length, const char16_t* encoding)
{
    return copyA(reinterpret_cast<const char*>(bytes), length, encoding);
}

std::int32_t Str1::appendA(const char* bytes, std::int32_t length, const char16_t* encoding)
{
    return appendA(reinterpret_cast<const signed char*>(bytes), length, encoding);
}

std::int32_t Str1::appendA(const signed char* bytes, std::int32_t length, const char16_t* encoding)
{
    if (length == -1)
        length = VXStrLenA(reinterpret_cast<const char*>(bytes));
    if (bytes == nullptr || length < 1)
        return 0;
    if (length <= BLOCK && text::charset::detail::isUtf8(encoding)) {
        const bool isWhole = decodeBlock(reinterpret_cast<const char*>(bytes), length,
            [this](const char16_t* units, std::int32_t count) { append(units, count); });
        return isWhole ? RESULT_OK : RESULT_FAIL;
    }
    char16_t units[BLOCK];
    std::int32_t read = 0;
    DecoderFor decoder(encoding);
    const std::int32_t oldLength = m_length;
    try {
        while (read < length) {
            const std::int32_t before = read;
            std::int32_t produced = 0;
            decoder->convert(bytes, &read, length, units, &produced, BLOCK);
            const std::int64_t consumed = read - before;
            const std::int64_t open = length - read;
            if (open == 0)
                decoder->flush(units, &produced, BLOCK);
            else if (consumed == 0)
                return RESULT_FAIL;
            else
                reserve(produced + open * produced / consumed + 1);
            append(units, produced);
        }
    } catch (...) {
        m_length = oldLength;
        throw;
    }
    return 0;
}

std::int32_t Str1::convertToA(
    char* out, std::int32_t size, CharToByteConverter* converter, std::int32_t* written, std::int32_t* position) const
{
    size = std::max(size, 0);
    const bool isValid = converter != nullptr && (out != nullptr || size == 0);
    return encodeFrom(view(), isValid, written, position, [&](std::int32_t& place, std::int32_t& done) {
        text::charset::detail::encodeText(*converter, view(), place, reinterpret_cast<signed char*>(out), done, size);
    });
}

std::int32_t Str1::convertToAZ(
    char* out, std::int32_t size, const char16_t* encoding, std::int32_t* written, std::int32_t* position) const
{
    std::int32_t done = 0;
    std::int32_t result = RESULT_INVALID_ARGUMENT;
    if (out != nullptr && size > 0) {
        const std::int32_t failure = vorb::atBoundary([&] {
            if (text::charset::detail::isUtf8(encoding)) {
                result = encodeFrom(view(), true, &done, position, [&](std::int32_t& place, std::int32_t& count) {
                    text::charset::detail::encodeUtf8(
                        view(), place, reinterpret_cast<signed char*>(out), count, size - 1);
                });
                return;
            }
            EncoderFor encoder(encoding);
            result = convertToA(out, size - 1, &*encoder, &done, position);
        });
        if (failed(failure))
            result = failure;
        if (!failed(result))
            out[done] = 0;
    }
    if (written != nullptr)
        *written = done;
    return result;
}

std::int32_t Str1::getLengthA(std::int32_t* length, const char16_t* encoding, std::int32_t position) const
{
    return vorb::atBoundary(length, [&] {
        EncoderFor encoder(encoding);
        std::int64_t total = 0;
        for (;;) {
            char block[BLOCK];
            std::int32_t written = 0;
            const std::int32_t before = position;
            const std::int32_t result = convertToA(block, BLOCK, &*encoder, &written, &position);
            total += written;
            if (result != RESULT_BUFFER_TOO_SMALL) {
                throwIfFailed(result);
                return checkedSize(total);
            }
            if (position == before) // otherwise a block without room for one character would repeat for ever
                throwResult(RESULT_FAIL);
        }
    });
}

std::string Str1::toUtf8() const
{
    return text::charset::detail::encodeUtf8(view());
}

OwningArray<char> Str1::getBytesAZ(const char16_t* encoding) const
{
    EncoderFor encoder(encoding);
    const std::int32_t size = checkedSize(std::int64_t {encoder->getMaxBytesPerChar()} * m_length + 1);
    OwningArray<char> bytes(static_cast<char*>(vxsys::allocate(static_cast<std::size_t>(size))));
    std::int32_t written = 0;
    std::int32_t position = 0;
    if (m_length != 0)
        text::charset::detail::encodeText(
            *encoder, view(), position, reinterpret_cast<signed char*>(bytes.get()), written, size - 1);
    if (position != m_length)
        throwResult(RESULT_BUFFER_TOO_SMALL);
    bytes[static_cast<std::size_t>(written)] = 0;
    return bytes;
}

} // namespace vx
