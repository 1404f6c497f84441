#include "vx/text/charset/BTCUTF16.h"
#include "vx/text/charset/CTBUTF16.h"
#include "vx/text/charset/detail/Block.h"
#include "vx/text/charset/detail/OrderedConverter.h"
#include "vx/text/charset/detail/Pass.h"
#include "vxsys/detail/Vector.h"

#include <algorithm>
#include <bit>
#include <type_traits>

namespace vx::text::charset {

using namespace detail;

namespace {

using Native = Ordered<std::endian::native>;
using Swapped = Ordered<std::endian::native == std::endian::little ? std::endian::big : std::endian::little>;

/// Converts as many units as both sides have. `orderUnit` converts one between the two byte orders.
template <class Pass, class OrderUnit>
std::int32_t convertUnits(Pass&& pass, OrderUnit orderUnit)
{
    constexpr std::ptrdiff_t IN_STEP = sizeof(char16_t) / sizeof *pass.in;
    constexpr std::ptrdiff_t OUT_STEP = sizeof(char16_t) / sizeof *pass.out;
    const std::ptrdiff_t count = std::min(pass.left() / IN_STEP, pass.room() / OUT_STEP);
    const auto* const end = pass.in + count * IN_STEP;
    if constexpr (std::is_same_v<OrderUnit, Native>) {
        std::copy_n(reinterpret_cast<const char*>(pass.in), 2 * count, reinterpret_cast<char*>(pass.out));
        pass.in = end;
        pass.out += count * OUT_STEP;
    }
#if VX_VECTOR_PATHS
    if constexpr (std::is_same_v<OrderUnit, Swapped>) {
        constexpr std::ptrdiff_t UNITS = BLOCK / 2;
        for (; end - pass.in >= UNITS * IN_STEP; pass.in += UNITS * IN_STEP, pass.out += UNITS * OUT_STEP) {
            const __m128i units = loadBlock(pass.in);
            storeBlock(pass.out, _mm_or_si128(_mm_slli_epi16(units, 8), _mm_srli_epi16(units, 8)));
        }
    }
#endif
    for (; pass.in < end; pass.in += IN_STEP, pass.out += OUT_STEP)
        storeNumber(pass.out, orderUnit(loadNumber<char16_t>(pass.in)));
    return static_cast<std::int32_t>(count);
}

} // namespace

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
    return convertUnits(
        Decoding(src, srcPos, srcLen, dst, dstPos, dstLen), [this](char16_t unit) { return convertChar(unit); });
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
    return convertUnits(
        Encoding(src, srcPos, srcLen, dst, dstPos, dstLen), [this](char16_t unit) { return convertChar(unit); });
}

BTCUTF16::~BTCUTF16() noexcept = default;

std::int32_t BTCUTF16::convert(const signed char* src, std::int32_t* srcPos, std::int32_t srcLen, char16_t* dst,
    std::int32_t* dstPos, std::int32_t dstLen)
{
    return convertInOrder<BTCUTF16LE, BTCUTF16BE>(
        *this,
        [&](auto orderUnit) { return convertUnits(Decoding(src, srcPos, srcLen, dst, dstPos, dstLen), orderUnit); },
        [this](char16_t unit) { return convertChar(unit); });
}

VX_ORDERED_CONVERTER(BTCUTF16LE, u"UTF-16LE", std::endian::little, std::uint16_t, convertUTF16)
VX_ORDERED_CONVERTER(BTCUTF16BE, u"UTF-16BE", std::endian::big, std::uint16_t, convertUTF16)

CTBUTF16::~CTBUTF16() noexcept = default;

std::int32_t CTBUTF16::convert(const char16_t* src, std::int32_t* srcPos, std::int32_t srcLen, signed char* dst,
    std::int32_t* dstPos, std::int32_t dstLen)
{
    return convertInOrder<CTBUTF16LE, CTBUTF16BE>(
        *this,
        [&](auto orderUnit) { return convertUnits(Encoding(src, srcPos, srcLen, dst, dstPos, dstLen), orderUnit); },
        [this](char16_t unit) { return convertChar(unit); });
}

std::int32_t CTBUTF16::flush(signed char*, std::int32_t*, std::int32_t)
{
    return 0;
}

void CTBUTF16::reset() { }

VX_ORDERED_ENCODER(CTBUTF16LE, u"UTF-16LE", std::endian::little, std::uint16_t, convertUTF16)
VX_ORDERED_ENCODER(CTBUTF16BE, u"UTF-16BE", std::endian::big, std::uint16_t, convertUTF16)

} // namespace vx::text::charset
