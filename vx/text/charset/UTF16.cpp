#include "vx/text/charset/BTCUTF16.h"
#include "vx/text/charset/CTBUTF16.h"
#include "vx/text/charset/detail/Block.h"
#include "vx/text/charset/detail/ByteOrder.h"
#include "vx/text/charset/detail/Pass.h"
#include "vx/text/charset/detail/Substitution.h"
#include "vxsys/detail/Vector.h"

#include <algorithm>
#include <typeinfo>

namespace vx::text::charset {

using namespace detail;

ByteToCharUTF::~ByteToCharUTF() noexcept = default;

std::int32_t ByteToCharUTF::flush(char16_t*, std::int32_t*, std::int32_t)
{
    return 0;
}

void ByteToCharUTF::reset() { }

int ByteToCharUTF::getMaxBytesPerChar()
{
    return 4;
}

int ByteToCharUTF::getMaxCharsPerByte()
{
    return 4;
}

std::int32_t ByteToCharUTF::sameEncodingConvert(const signed char* src, std::int32_t* srcPos, std::int32_t srcLen,
    char16_t* dst, std::int32_t* dstPos, std::int32_t dstLen)
{
    Decoding pass(src, srcPos, srcLen, dst, dstPos, dstLen);
    for (std::ptrdiff_t count = std::min(pass.left() / 2, pass.room()); count > 0; --count) {
        *pass.out++ = convertChar(loadNumber<char16_t>(pass.in));
        pass.in += 2;
    }
    return pass.produced();
}

CharToByteUTF::~CharToByteUTF() noexcept = default;

int CharToByteUTF::getMaxBytesPerChar()
{
    return 4;
}

int CharToByteUTF::getMaxCharsPerByte()
{
    return 4;
}

std::int32_t CharToByteUTF::sameEncodingConvert(const char16_t* src, std::int32_t* srcPos, std::int32_t srcLen,
    signed char* dst, std::int32_t* dstPos, std::int32_t dstLen)
{
    Encoding pass(src, srcPos, srcLen, dst, dstPos, dstLen);
    for (std::ptrdiff_t count = std::min(pass.left(), pass.room() / 2); count > 0; --count) {
        storeNumber(pass.out, convertChar(*pass.in++));
        pass.out += 2;
    }
    return pass.produced() / 2;
}

namespace {

/// Copies `count` units of 16 bits, and swaps the bytes of each if `swapped`.
template <bool swapped>
void moveUnits(const void* from, void* to, std::ptrdiff_t count) noexcept
{
    const auto* in = static_cast<const signed char*>(from);
    auto* out = static_cast<signed char*>(to);
    if constexpr (!swapped) {
        std::copy_n(in, 2 * count, out);
    } else {
        const signed char* const end = in + 2 * count;
#if VX_VECTOR_PATHS
        for (; end - in >= BLOCK; in += BLOCK, out += BLOCK) {
            const __m128i units = loadBlock(in);
            storeBlock(out, _mm_or_si128(_mm_slli_epi16(units, 8), _mm_srli_epi16(units, 8)));
        }
#endif
        for (; in < end; in += 2, out += 2)
            storeNumber(out, ordered<swapped>(loadNumber<char16_t>(in)));
    }
}

/// As `sameEncodingConvert`, for a known byte order.
template <bool swapped>
std::int32_t decodeUnits(Decoding&& pass) noexcept
{
    const std::ptrdiff_t count = std::min(pass.left() / 2, pass.room());
    moveUnits<swapped>(pass.in, pass.out, count);
    pass.in += 2 * count;
    pass.out += count;
    return static_cast<std::int32_t>(count);
}

template <bool swapped>
std::int32_t encodeUnits(Encoding&& pass) noexcept
{
    const std::ptrdiff_t count = std::min(pass.left(), pass.room() / 2);
    moveUnits<swapped>(pass.in, pass.out, count);
    pass.in += count;
    pass.out += 2 * count;
    return static_cast<std::int32_t>(count);
}

} // namespace

BTCUTF16::~BTCUTF16() noexcept = default;

std::int32_t BTCUTF16::convert(const signed char* src, std::int32_t* srcPos, std::int32_t srcLen, char16_t* dst,
    std::int32_t* dstPos, std::int32_t dstLen)
{
    const std::type_info& type = typeid(*this);
    if (type == typeid(BTCUTF16LE))
        return decodeUnits<SWAPS_LITTLE>({src, srcPos, srcLen, dst, dstPos, dstLen});
    if (type == typeid(BTCUTF16BE))
        return decodeUnits<SWAPS_BIG>({src, srcPos, srcLen, dst, dstPos, dstLen});
    return sameEncodingConvert(src, srcPos, srcLen, dst, dstPos, dstLen);
}

BTCUTF16BE::~BTCUTF16BE() noexcept = default;

const char16_t* BTCUTF16BE::getEncodingName()
{
    return u"UTF-16BE";
}

char16_t BTCUTF16BE::convertChar(char16_t unit)
{
    return ordered<SWAPS_BIG>(unit);
}

std::uint16_t BTCUTF16BE::convertUTF16(std::uint16_t unit)
{
    return ordered<SWAPS_BIG>(unit);
}

BTCUTF16LE::~BTCUTF16LE() noexcept = default;

const char16_t* BTCUTF16LE::getEncodingName()
{
    return u"UTF-16LE";
}

char16_t BTCUTF16LE::convertChar(char16_t unit)
{
    return ordered<SWAPS_LITTLE>(unit);
}

std::uint16_t BTCUTF16LE::convertUTF16(std::uint16_t unit)
{
    return ordered<SWAPS_LITTLE>(unit);
}

CTBUTF16::~CTBUTF16() noexcept = default;

std::int32_t CTBUTF16::convert(const char16_t* src, std::int32_t* srcPos, std::int32_t srcLen, signed char* dst,
    std::int32_t* dstPos, std::int32_t dstLen)
{
    const std::type_info& type = typeid(*this);
    if (type == typeid(CTBUTF16LE))
        return encodeUnits<SWAPS_LITTLE>({src, srcPos, srcLen, dst, dstPos, dstLen});
    if (type == typeid(CTBUTF16BE))
        return encodeUnits<SWAPS_BIG>({src, srcPos, srcLen, dst, dstPos, dstLen});
    return sameEncodingConvert(src, srcPos, srcLen, dst, dstPos, dstLen);
}

std::int32_t CTBUTF16::flush(signed char*, std::int32_t*, std::int32_t)
{
    return 0;
}

void CTBUTF16::reset() { }

CTBUTF16BE::CTBUTF16BE() noexcept
{
    constexpr signed char bytes[] = {-1, -3}; // FF FD
    m_substitutionLength = takeSubstitution(m_substitutionBytes, bytes, 2);
}

CTBUTF16BE::~CTBUTF16BE() noexcept = default;

const char16_t* CTBUTF16BE::getEncodingName()
{
    return u"UTF-16BE";
}

char16_t CTBUTF16BE::convertChar(char16_t unit)
{
    return ordered<SWAPS_BIG>(unit);
}

std::uint16_t CTBUTF16BE::convertUTF16(std::uint16_t unit)
{
    return ordered<SWAPS_BIG>(unit);
}

CTBUTF16LE::CTBUTF16LE() noexcept
{
    constexpr signed char bytes[] = {-3, -1}; // FD FF
    m_substitutionLength = takeSubstitution(m_substitutionBytes, bytes, 2);
}

CTBUTF16LE::~CTBUTF16LE() noexcept = default;

const char16_t* CTBUTF16LE::getEncodingName()
{
    return u"UTF-16LE";
}

char16_t CTBUTF16LE::convertChar(char16_t unit)
{
    return ordered<SWAPS_LITTLE>(unit);
}

std::uint16_t CTBUTF16LE::convertUTF16(std::uint16_t unit)
{
    return ordered<SWAPS_LITTLE>(unit);
}

} // namespace vx::text::charset
