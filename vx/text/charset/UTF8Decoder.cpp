#include "vx/text/charset/BTCUTF8.h"
#include "vx/text/charset/CharsetException.h"
#include "vx/text/charset/detail/ByteRuns.h"
#include "vx/text/charset/detail/Pass.h"
#include "vx/text/charset/detail/Substitution.h"
#include "vx/text/charset/detail/Unicode.h"
#include "vx/text/charset/detail/Utf8DecodeBlocks.h"
#include "vx/text/charset/detail/Utf8DecodeShort.h"

#include <array>

namespace vx::text::charset {

using namespace detail;

namespace {

/// After other characters, this many bytes are decoded one by one before the fast path for plain text is tried again.
constexpr std::ptrdiff_t STRETCH = 16;

/// The length of a sequence by its first byte; 0 for a byte that begins none.
constexpr std::array<std::uint8_t, 256> SEQUENCE_LENGTH = [] {
    std::array<std::uint8_t, 256> lengths {};
    for (std::size_t byte = 0; byte < 256; ++byte) {
        lengths[byte] = byte < 0x80 ? 1 : byte < 0xC2 ? 0 : byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : byte < 0xF5 ? 4 : 0;
    }
    return lengths;
}();

struct Sequence {
    std::uint32_t value;
    std::size_t length; ///< 0: the source ends within the sequence
};

Sequence sequenceAt(const Decoding& pass) noexcept
{
    const auto byteAt = [&](std::size_t index) { return std::uint32_t {static_cast<std::uint8_t>(pass.in[index])}; };
    const std::size_t length = SEQUENCE_LENGTH[byteAt(0)];
    if (length > static_cast<std::size_t>(pass.left()))
        return {0, 0};
    if (length == 0)
        return {REPLACEMENT, 1};
    std::uint32_t value = length == 1 ? byteAt(0) : byteAt(0) & (0x7FU >> length);
    for (std::size_t index = 1; index < length; ++index) {
        if (!isFollower(byteAt(index)))
            return {REPLACEMENT, 1};
        value = value << 6 | (byteAt(index) & 0x3F);
    }
    return {value, length};
}

} // namespace

BTCUTF8::~BTCUTF8() noexcept = default;

std::int32_t BTCUTF8::convert(const signed char* src, std::int32_t* srcPos, std::int32_t srcLen, char16_t* dst,
    std::int32_t* dstPos, std::int32_t dstLen)
{
    Decoding pass(src, srcPos, srcLen, dst, dstPos, dstLen);
    const auto substitute
        = [&] { return storeSubstitution(pass, m_substitutionMode, m_substitutionChars, m_substitutionLength, 1); };
    while (pass.in < pass.inEnd) {
        decodePlain(pass);
        const std::ptrdiff_t run
            = decodeRun<Itself::ASCII>(pass.in, pass.out, std::min(pass.left(), pass.room()), asciiCharacter);
        pass.in += run;
        pass.out += run;

        const signed char* const until = pass.left() < PLAIN_BYTES ? pass.inEnd : pass.in + STRETCH;
        for (;;) {
            decodeShort(pass, until);
            if (pass.in >= until)
                break;
            const Sequence sequence = sequenceAt(pass);
            if (sequence.length == 0 || pass.room() < 1)
                return pass.produced();
            if (isSurrogate(sequence.value))
                throw InvalidCharacterException(u"Invalid UTF-8 sequence (decoded chars in surrogate range)");
            if (!storeCharacter(pass, sequence.value, substitute))
                return pass.produced();
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
