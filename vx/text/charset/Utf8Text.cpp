#include "vx/text/charset/detail/Utf8Text.h"

#include "vx/Exception.h"
#include "vx/detail/TextRange.h"
#include "vx/text/charset/CharsetException.h"
#include "vx/text/charset/detail/ByteRuns.h"
#include "vx/text/charset/detail/CodecStart.h"
#include "vx/text/charset/detail/EncodeText.h"
#include "vx/text/charset/detail/Pass.h"
#include "vx/text/charset/detail/Utf8DecodeBlocks.h"
#include "vx/text/charset/detail/Utf8DecodeShort.h"
#include "vx/text/charset/detail/Utf8EncodeBlocks.h"
#include "vxsys/Defaults.h"
#include "vxsys/Surrogate.h"
#include "vxsys/detail/EncodingName.h"

#include <algorithm>
#include <cstddef>

namespace vx::text::charset::detail {

namespace {

/// Units of a text that is encoded without a converter.
constexpr std::int32_t SHORT_TEXT = 256;
constexpr std::int32_t SHORT_ROOM = 3 * SHORT_TEXT + ENCODE_SPARE;

#if VX_VECTOR_PATHS

/// As `widenAscii`, in pieces of `size` bytes, 8 or 16. `count` is not below that. The last piece may overlap the one
/// before.
template <std::ptrdiff_t size>
std::ptrdiff_t widenPieces(const signed char* in, char16_t* out, std::ptrdiff_t count) noexcept
{
    for (std::ptrdiff_t done = 0;;) {
        const __m128i bytes = loadBytes<size>(in + done);
        if constexpr (size < BLOCK)
            storeBlock(out + done, _mm_unpacklo_epi8(bytes, _mm_setzero_si128()));
        else
            storeWidened(out + done, bytes);
        if (const unsigned others = lanes8(bytes); others != 0)
            return done + std::countr_zero(others);
        if (done == count - size)
            return count;
        done = std::min(done + size, count - size);
    }
}

#endif

/// Widens bytes up to the first that is not ASCII. Returns how many. All `count` units of `out` may be written.
std::ptrdiff_t widenAscii(const signed char* in, char16_t* out, std::ptrdiff_t count) noexcept
{
#if VX_VECTOR_PATHS
    if (count >= 4 * BLOCK)
        return decodeRun<Itself::ASCII>(in, out, count, asciiCharacter);
    if (count >= BLOCK)
        return widenPieces<BLOCK>(in, out, count);
    if (count >= BLOCK / 2)
        return widenPieces<BLOCK / 2>(in, out, count);
#endif
    std::ptrdiff_t done = 0;
    for (; done < count && in[done] >= 0; ++done)
        out[done] = static_cast<char16_t>(in[done]);
    return done;
}

/// Narrows units up to one that is not ASCII, or near that one. Returns how many. All `count` bytes of `out` may be written.
[[gnu::always_inline]] inline std::ptrdiff_t narrowAscii(
    const char16_t* in, signed char* out, std::ptrdiff_t count) noexcept
{
#if VX_VECTOR_PATHS
    if (count >= 8) {
        for (std::ptrdiff_t done = 0;;) { // the last block may overlap the one before
            const __m128i units = loadBlock(in + done);
            _mm_storel_epi64(reinterpret_cast<__m128i*>(out + done), _mm_packus_epi16(units, units));
            if (lanes8(has16(units, 0xFF80, 0)) != 0xFFFF)
                return done;
            if (done == count - 8)
                return count;
            done = std::min(done + 8, count - 8);
        }
    }
#endif
    return narrowRun<Itself::ASCII>(in, out, count);
}

/// The length of the text in UTF-8, if it has no lone surrogates.
std::int64_t lengthInUtf8(std::u16string_view text) noexcept
{
    const char16_t* in = text.data();
    const char16_t* const end = in + text.size();
    std::int64_t bytes = static_cast<std::int64_t>(text.size());
#if VX_VECTOR_PATHS
    while (end - in >= 8) { // sums of -1 in 8 lanes: at most 127 blocks, twice each, before they are added up
        __m128i less = _mm_setzero_si128();
        const char16_t* const stop = in + std::min<std::ptrdiff_t>(end - in, 8 * 127) / 8 * 8;
        for (; in < stop; in += 8) {
            const __m128i units = loadBlock(in);
            const __m128i twoBytes = either(has16(units, 0xF800, 0), has16(units, 0xF800, 0xD800));
            less = _mm_add_epi16(less, _mm_add_epi16(has16(units, 0xFF80, 0), twoBytes));
            bytes += 16;
        }
        const __m128i pairs = _mm_madd_epi16(less, _mm_set1_epi16(1));
        alignas(BLOCK) std::int32_t sums[4];
        _mm_store_si128(reinterpret_cast<__m128i*>(sums), pairs);
        bytes += sums[0] + sums[1] + sums[2] + sums[3];
    }
#endif
    for (; in < end; ++in)
        bytes += (*in >= 0x80 ? 1 : 0) + (*in >= 0x800 && !vxsys::isSurrogate(*in) ? 1 : 0);
    return bytes;
}

/// The encoder writes three bytes for a lone trailing surrogate, and two for each half of a pair.
void throwIfLoneTrail(std::size_t bytes, std::int64_t expected)
{
    if (static_cast<std::int64_t>(bytes) != expected)
        throw InvalidCharacterException(u"trailing surrogate without leading");
}

/// Encodes the characters that begin before `until` one by one, up to a lone surrogate. `end` ends the text.
void encodeUnits(const char16_t*& in, const char16_t* until, const char16_t* end, signed char*& out) noexcept
{
    const auto store = [&](std::uint32_t byte) { *out++ = static_cast<signed char>(byte); };
    for (; in < until; ++in) {
        const std::uint32_t unit = *in;
        if (unit < 0x80) {
            store(unit);
        } else if (unit < 0x800) {
            store(0xC0 | unit >> 6);
            store(0x80 | (unit & 0x3F));
        } else if (!vxsys::isSurrogate(unit)) {
            store(0xE0 | unit >> 12);
            store(0x80 | (unit >> 6 & 0x3F));
            store(0x80 | (unit & 0x3F));
        } else {
            if (unit >= 0xDC00 || end - in < 2 || (in[1] & 0xFC00) != 0xDC00)
                return;
            const std::uint32_t value = 0x10000 + ((unit & 0x3FF) << 10 | (*++in & 0x3FF));
            store(0xF0 | value >> 18);
            store(0x80 | (value >> 12 & 0x3F));
            store(0x80 | (value >> 6 & 0x3F));
            store(0x80 | (value & 0x3F));
        }
    }
}

/// Encodes from `position` on, up to a lone surrogate. Returns whether that was all. It encodes nothing if the text is long
/// or `out` is small.
bool encodeRest(std::u16string_view text, std::int32_t& position, signed char* out, std::int32_t& written,
    std::int32_t size) noexcept
{
    const std::ptrdiff_t rest = std::ssize(text) - position;
    const std::ptrdiff_t spare = size - written - 3 * rest;
    if (rest > SHORT_TEXT || spare < 0)
        return false;
    const char16_t* const end = text.data() + text.size();
    const char16_t* in = end - rest;
    signed char* to = out + written;
    while (in < end) {
        if (spare >= ENCODE_SPARE)
            encodeSome(text.data(), in, end, to);
        const char16_t* const start = in;
        encodeUnits(in, in + std::min<std::ptrdiff_t>(end - in, 8), end, to);
        if (in == start)
            break;
    }
    position = static_cast<std::int32_t>(in - text.data());
    written = static_cast<std::int32_t>(to - out);
    return in == end;
}

/// The same, but plain text is also encoded if it is long.
bool encodeShort(std::u16string_view text, std::int32_t& position, signed char* out, std::int32_t& written,
    std::int32_t size) noexcept
{
    const std::ptrdiff_t count = std::min<std::ptrdiff_t>(std::ssize(text) - position, std::max(size - written, 0));
    const auto plain = static_cast<std::int32_t>(narrowAscii(text.data() + position, out + written, count));
    position += plain;
    written += plain;
    return position == std::ssize(text) || encodeRest(text, position, out, written, size);
}

#if VX_VECTOR_PATHS

/// Encodes a short text from its unit `plain` on, after as many bytes, and returns the number of all bytes; -1 for a surrogate.
VX_USES_COMPRESS std::int32_t encodeByLanes(
    std::u16string_view text, std::ptrdiff_t plain, signed char* bytes, std::int32_t size) noexcept
{
    const char16_t* in = text.data() + plain;
    const char16_t* const end = text.data() + text.size();
    signed char* out = bytes + plain;
    encodeLanes(in, end, out, bytes + size);
    return in == end ? static_cast<std::int32_t>(out - bytes) : -1;
}

/// Encodes a text of at least eight units from `in` on, and returns where the bytes end; null for a surrogate. Kept out of the
/// way of plain text, which needs none of its registers.
[[gnu::noinline]] VX_USES_SHUFFLE const signed char* encodeFrom(
    const char16_t* in, const char16_t* end, signed char* out) noexcept
{
    encodeToEnd(in, end, out);
    return in == end ? out : nullptr;
}

#endif

#if VX_VECTOR_PATHS

/// Decodes from the start as far as `decodeLanes` does, and returns the units stored.
VX_USES_COMPRESS std::int32_t decodeByLanes(
    const signed char* bytes, std::int32_t length, char16_t* units, std::int32_t* read) noexcept
{
    const signed char* in = bytes;
    char16_t* out = units;
    decodeLanes(in, bytes + length, out, units + length);
    *read = static_cast<std::int32_t>(in - bytes);
    return static_cast<std::int32_t>(out - units);
}

#endif

/// Kept out of the way of short texts, which need none of its registers.
[[gnu::noinline]] std::int32_t decodeRest(
    const signed char* in, std::int32_t length, char16_t* out, std::int32_t written, std::int32_t* read)
{
    BTCUTF8 decoder;
    decoder.convert(in, read, length, out, &written, length);
    return written;
}

/// Encodes text of any length by way of a short array, since a string fills the room that it is given with zeros. Returns
/// the number of bytes that a text without lone surrogates has.
std::int64_t appendPieces(std::string& bytes, std::u16string_view text)
{
    constexpr std::size_t PIECE = 1024;
    signed char piece[3 * PIECE + 1]; // the first half of a pair is written with the second
    CTBUTF8 encoder;
    auto expected = static_cast<std::int64_t>(text.size());
    for (std::size_t start = 0; start < text.size(); start += PIECE) {
        const auto end = static_cast<std::int32_t>(std::min(text.size() - start, PIECE));
        std::int32_t read = 0;
        std::int32_t written = 0;
        encoder.convert(text.data() + start, &read, end, piece, &written, sizeof piece);
        if (written != end && expected == std::ssize(text))
            expected = lengthInUtf8(text);
        if (start == 0)
            bytes.reserve(static_cast<std::size_t>(expected));
        bytes.append(reinterpret_cast<const char*>(piece), static_cast<std::size_t>(written));
    }
    std::int32_t written = 0;
    encoder.flush(piece, &written, sizeof piece);
    return expected;
}

/// See `encodeUtf8AtOnce`.
[[gnu::always_inline]] inline std::int32_t encodeAtOnce(
    std::u16string_view text, signed char* out, std::int32_t size) noexcept
{
    const std::ptrdiff_t length = std::ssize(text);
    if (length > SHORT_TEXT || 3 * length + ENCODE_SPARE > size)
        return -1;
    const std::ptrdiff_t plain = narrowAscii(text.data(), out, length);
    if (plain == length)
        return static_cast<std::int32_t>(length);
#if VX_VECTOR_PATHS
    if (hasCompress())
        return encodeByLanes(text, plain, out, size);
    if (length >= 8 && hasShuffle()) {
        if (const signed char* const end = encodeFrom(text.data() + plain, text.data() + length, out + plain))
            return static_cast<std::int32_t>(end - out);
    }
#endif
    return -1;
}

/// Encodes what `encodeAtOnce` does not. Kept out of the way of short texts.
[[gnu::noinline]] std::string encodeAny(std::u16string_view text)
{
    std::string bytes;
    std::int64_t expected;
    if (text.size() <= SHORT_TEXT) {
        signed char out[SHORT_ROOM];
        std::int32_t position = 0;
        std::int32_t written = 0;
        encodeUtf8(text, position, out, written, SHORT_ROOM);
        bytes.assign(reinterpret_cast<const char*>(out), static_cast<std::size_t>(written));
        expected = lengthInUtf8(text);
    } else {
        expected = appendPieces(bytes, text);
    }
    if (bytes.size() > static_cast<std::size_t>(vx::detail::LONGEST_TEXT))
        throwBadAllocation();
    throwIfLoneTrail(bytes.size(), expected);
    return bytes;
}

} // namespace

bool isUtf8(const char16_t* encoding)
{
    const bool isUtf8 = encoding != nullptr ? vxsys::isNameOfUtf8(encoding) : VXIsDefaultCharEncodingUtf8() != 0;
    return isUtf8 && areCodecsRegistered();
}

std::int32_t decodeUtf8(const char* bytes, std::int32_t length, char16_t* out, std::int32_t* read)
{
    const auto* const in = reinterpret_cast<const signed char*>(bytes);
    std::int32_t written = 0;
#if VX_VECTOR_PATHS
    if (hasCompress()) {
        written = decodeByLanes(in, length, out, read);
    } else
#endif
    {
        written = static_cast<std::int32_t>(widenAscii(in, out, length));
        *read = written;
    }
    if (*read == length)
        return written;
    if (length - *read < PLAIN_BYTES) { // too short for the blocks of the converter
        Decoding pass(in, read, length, out, &written, length);
        decodeShort(pass, pass.inEnd);
    }
    return *read == length ? written : decodeRest(in, length, out, written, read);
}

std::int32_t encodeUtf8AtOnce(std::u16string_view text, signed char* out, std::int32_t size) noexcept
{
    return encodeAtOnce(text, out, size);
}

std::string encodeUtf8(std::u16string_view text)
{
    signed char out[SHORT_ROOM];
    const std::int32_t written = encodeAtOnce(text, out, SHORT_ROOM);
    if (written < 0) [[unlikely]]
        return encodeAny(text);
    return std::string(reinterpret_cast<const char*>(out), static_cast<std::size_t>(written));
}

void encodeUtf8(
    std::u16string_view text, std::int32_t& position, signed char* out, std::int32_t& written, std::int32_t size)
{
    if (encodeShort(text, position, out, written, size))
        return;
    CTBUTF8 encoder;
    encodeText(encoder, text, position, out, written, size);
}

} // namespace vx::text::charset::detail
