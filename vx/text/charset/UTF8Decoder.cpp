#include "vx/text/charset/BTCUTF8.h"
#include "vx/text/charset/CharsetException.h"
#include "vx/text/charset/detail/ByteRuns.h"
#include "vx/text/charset/detail/Pass.h"
#include "vx/text/charset/detail/Substitution.h"
#include "vx/text/charset/detail/Unicode.h"
#include "vx/text/charset/detail/Utf8DecodeBlocks.h"

#include <array>

namespace vx::text::charset {

using namespace detail;

namespace {

/// So much is decoded one by one before there may be plain text again.
constexpr std::ptrdiff_t STRETCH = 16;

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
        decodePlain(pass);
        const std::ptrdiff_t run
            = decodeRun<Itself::ASCII>(pass.in, pass.out, std::min(pass.left(), pass.room()), asciiCharacter);
        pass.in += run;
        pass.out += run;

        const signed char* const faster = pass.in + std::min(pass.left(), STRETCH);
        while (pass.in < faster) {
            const Sequence sequence = sequenceAt(pass);
            if (sequence.length == 0 || pass.room() < 1)
                return pass.produced();
            if (isSurrogate(sequence.value))
                throw InvalidCharacterException(u"Invalid UTF-8 sequence (decoded chars in surrogate range)");
            if (sequence.value <= 0xFFFF) {
                *pass.out++ = static_cast<char16_t>(sequence.value);
            } else if (sequence.value > LAST_CODE_POINT) {
                if (!storeSubstitution(pass, m_substitutionMode, m_substitutionChars, m_substitutionLength))
                    return pass.produced();
            } else if (!storePair(pass, sequence.value)) {
                return pass.produced();
            }
            pass.in += sequence.length;
        }
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

} // namespace vx::text::charset
