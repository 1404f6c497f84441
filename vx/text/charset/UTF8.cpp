#include "vx/text/charset/BTCUTF8.h"
#include "vx/text/charset/CTBUTF8.h"
#include "vx/text/charset/CharsetException.h"
#include "vx/text/charset/detail/Ascii.h"
#include "vx/text/charset/detail/Pass.h"
#include "vx/text/charset/detail/Substitution.h"
#include "vx/text/charset/detail/Unicode.h"

#include <array>

namespace vx::text::charset {

using namespace detail;

namespace {

/// The length of a sequence by its first byte; 0 for a byte that is no first one.
constexpr std::array<std::uint8_t, 256> SEQUENCE_LENGTH = [] {
    std::array<std::uint8_t, 256> lengths {};
    for (std::size_t byte = 0; byte < 256; ++byte) {
        lengths[byte] = byte < 0x80 ? 1 : byte < 0xC2 ? 0 : byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : byte < 0xF5 ? 4 : 0;
    }
    return lengths;
}();

std::uint32_t byteAt(const signed char* in) noexcept
{
    return static_cast<std::uint8_t>(*in);
}

bool isFollower(const signed char* in) noexcept
{
    return *in < -0x40; // 0x80 to 0xBF
}

/// Runs of two-byte sequences, without looking at anything else.
void decodePairs(Decoding& pass) noexcept
{
    while (pass.left() >= 2 && pass.room() >= 1) {
        const std::uint32_t first = byteAt(pass.in);
        if (first - 0xC2 > 0xDF - 0xC2 || !isFollower(pass.in + 1))
            return;
        *pass.out++ = static_cast<char16_t>((first & 0x1F) << 6 | (byteAt(pass.in + 1) & 0x3F));
        pass.in += 2;
    }
}

/// Runs of three-byte sequences that are no surrogates.
void decodeTriples(Decoding& pass) noexcept
{
    while (pass.left() >= 3 && pass.room() >= 1) {
        const std::uint32_t first = byteAt(pass.in);
        if ((first & 0xF0) != 0xE0 || !isFollower(pass.in + 1) || !isFollower(pass.in + 2))
            return;
        const std::uint32_t value
            = (first & 0x0F) << 12 | (byteAt(pass.in + 1) & 0x3F) << 6 | (byteAt(pass.in + 2) & 0x3F);
        if (isSurrogate(value))
            return;
        *pass.out++ = static_cast<char16_t>(value);
        pass.in += 3;
    }
}

/// Runs of four-byte sequences that make surrogate pairs.
void decodeQuads(Decoding& pass) noexcept
{
    while (pass.left() >= 4 && pass.room() >= 2) {
        const std::uint32_t first = byteAt(pass.in);
        if (first - 0xF0 > 4 || !isFollower(pass.in + 1) || !isFollower(pass.in + 2) || !isFollower(pass.in + 3))
            return;
        const std::uint32_t value = (first & 0x07) << 18 | (byteAt(pass.in + 1) & 0x3F) << 12
            | (byteAt(pass.in + 2) & 0x3F) << 6 | (byteAt(pass.in + 3) & 0x3F);
        if (value - 0x10000 > LAST_CODE_POINT - 0x10000)
            return;
        pass.out[0] = leadOf(value);
        pass.out[1] = trailOf(value);
        pass.out += 2;
        pass.in += 4;
    }
}

struct Sequence {
    std::uint32_t value;
    std::size_t length; ///< 0: cut by the end of the source
};

Sequence sequenceAt(const Decoding& pass) noexcept
{
    const std::uint32_t first = byteAt(pass.in);
    const std::size_t length = SEQUENCE_LENGTH[first];
    if (length > static_cast<std::size_t>(pass.left()))
        return {0, 0};
    if (length == 0)
        return {REPLACEMENT, 1};
    std::uint32_t value = length == 1 ? first : first & (0x7FU >> length);
    for (std::size_t index = 1; index < length; ++index) {
        if (!isFollower(pass.in + index))
            return {REPLACEMENT, 1};
        value = value << 6 | (byteAt(pass.in + index) & 0x3F);
    }
    return {value, length};
}

} // namespace

BTCUTF8::~BTCUTF8() noexcept = default;

std::int32_t BTCUTF8::convert(const signed char* src, std::int32_t* srcPos, std::int32_t srcLen, char16_t* dst,
    std::int32_t* dstPos, std::int32_t dstLen)
{
    Decoding pass(src, srcPos, srcLen, dst, dstPos, dstLen);
    while (pass.in < pass.inEnd) {
        if (*pass.in >= 0) {
            const std::size_t run
                = widenAscii(pass.in, pass.out, static_cast<std::size_t>(std::min(pass.left(), pass.room())));
            if (run == 0)
                break;
            pass.in += run;
            pass.out += run;
            continue;
        }
        const signed char* const before = pass.in;
        decodePairs(pass);
        decodeTriples(pass);
        decodeQuads(pass);
        if (pass.in != before)
            continue;

        // What no run took: faults, borders, ends.
        const Sequence sequence = sequenceAt(pass);
        if (sequence.length == 0 || pass.room() < 1)
            break;
        if (isSurrogate(sequence.value))
            throw InvalidCharacterException(u"Invalid UTF-8 sequence (decoded chars in surrogate range)");
        if (sequence.value <= 0xFFFF) {
            *pass.out++ = static_cast<char16_t>(sequence.value);
        } else if (sequence.value > LAST_CODE_POINT) {
            if (!storeSubstitution(pass, m_substitutionMode, m_substitutionChars, m_substitutionLength))
                break;
        } else {
            break; // a pair that has no room: the run would have taken any other
        }
        pass.in += sequence.length;
    }
    return pass.produced();
}

std::int32_t BTCUTF8::flush(char16_t*, std::int32_t*, std::int32_t)
{
    return 0;
}

void BTCUTF8::reset() { }

const char16_t* BTCUTF8::getEncodingName()
{
    return u"UTF-8";
}

int BTCUTF8::getMaxBytesPerChar()
{
    return 6;
}

int BTCUTF8::getMaxCharsPerByte()
{
    return 4;
}

namespace {

/// Runs of units of 2 bytes, then of 3, then of surrogate pairs of 4.
void encodeRuns(Encoding& pass) noexcept
{
    while (pass.left() >= 1 && pass.room() >= 2 && *pass.in - 0x80U < 0x800 - 0x80) {
        const std::uint32_t unit = *pass.in++;
        *pass.out++ = static_cast<signed char>(0xC0 | unit >> 6);
        *pass.out++ = static_cast<signed char>(0x80 | (unit & 0x3F));
    }
    while (pass.left() >= 1 && pass.room() >= 3 && *pass.in >= 0x800 && !isLead(*pass.in)) {
        const std::uint32_t unit = *pass.in++;
        *pass.out++ = static_cast<signed char>(0xE0 | unit >> 12);
        *pass.out++ = static_cast<signed char>(0x80 | (unit >> 6 & 0x3F));
        *pass.out++ = static_cast<signed char>(0x80 | (unit & 0x3F));
    }
    while (pass.left() >= 2 && pass.room() >= 4 && isLead(pass.in[0]) && isTrail(pass.in[1])) {
        const std::uint32_t value = codePoint(pass.in[0], pass.in[1]);
        pass.in += 2;
        *pass.out++ = static_cast<signed char>(0xF0 | value >> 18);
        *pass.out++ = static_cast<signed char>(0x80 | (value >> 12 & 0x3F));
        *pass.out++ = static_cast<signed char>(0x80 | (value >> 6 & 0x3F));
        *pass.out++ = static_cast<signed char>(0x80 | (value & 0x3F));
    }
}

} // namespace

CTBUTF8::~CTBUTF8() noexcept = default;

std::int32_t CTBUTF8::convert(const char16_t* src, std::int32_t* srcPos, std::int32_t srcLen, signed char* dst,
    std::int32_t* dstPos, std::int32_t dstLen)
{
    Encoding pass(src, srcPos, srcLen, dst, dstPos, dstLen);
    while (pass.in < pass.inEnd) {
        const char16_t unit = *pass.in;
        if (m_lead != 0) {
            if (!isTrail(unit))
                throw InvalidCharacterException(LEAD_WITHOUT_TRAIL);
            if (pass.room() < 4)
                break;
            const char16_t pair[] = {m_lead, unit};
            std::int32_t at = 0;
            std::int32_t stored = 0;
            {
                Encoding whole(pair, &at, 2, pass.out, &stored, 4);
                encodeRuns(whole);
            }
            pass.out += stored;
            m_lead = 0;
            ++pass.in;
            continue;
        }
        if (unit < 0x80) {
            const std::size_t run
                = narrowUnits(pass.in, pass.out, static_cast<std::size_t>(std::min(pass.left(), pass.room())));
            if (run == 0)
                break;
            pass.in += run;
            pass.out += run;
            continue;
        }
        const char16_t* const before = pass.in;
        encodeRuns(pass);
        if (pass.in != before)
            continue;
        if (!isLead(unit))
            break; // no room
        // A pair is held by its lead, with or without room, and whatever comes next is looked at then.
        m_lead = unit;
        ++pass.in;
    }
    return pass.produced();
}

std::int32_t CTBUTF8::flush(signed char*, std::int32_t*, std::int32_t)
{
    throwIfHeld(m_lead);
    return 0;
}

void CTBUTF8::reset()
{
    m_lead = 0;
}

const char16_t* CTBUTF8::getEncodingName()
{
    return u"UTF-8";
}

int CTBUTF8::getMaxBytesPerChar()
{
    return 6;
}

int CTBUTF8::getMaxCharsPerByte()
{
    return 1;
}

} // namespace vx::text::charset
