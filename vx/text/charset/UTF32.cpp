#include "vx/text/charset/BTCUTF32.h"
#include "vx/text/charset/CTBUTF32.h"
#include "vx/text/charset/CharsetException.h"
#include "vx/text/charset/detail/OrderedConverter.h"
#include "vx/text/charset/detail/Pass.h"
#include "vx/text/charset/detail/Substitution.h"
#include "vx/text/charset/detail/Unicode.h"

#include <bit>

namespace vx::text::charset {

using namespace detail;

namespace {

constexpr int UNIT_BYTES = 4;

} // namespace

BTCUTF32::~BTCUTF32() noexcept = default;

std::int32_t BTCUTF32::convert(const signed char* src, std::int32_t* srcPos, std::int32_t srcLen, char16_t* dst,
    std::int32_t* dstPos, std::int32_t dstLen)
{
    Decoding pass(src, srcPos, srcLen, dst, dstPos, dstLen);
    const auto decode = [&](auto valueOf) {
        while (pass.left() >= UNIT_BYTES && pass.room() >= 1) {
            const std::uint32_t value = valueOf(loadNumber<std::uint32_t>(pass.in));
            if (isSurrogate(value))
                throw InvalidCharacterException(u"Illegal UTF-32 char in surrogate range");
            if (!storeCharacter(pass, value, [&] {
                    return storeSubstitution(pass, m_substitutionMode, m_substitutionChars, m_substitutionLength, 1);
                }))
                break;
            pass.in += UNIT_BYTES;
        }
        return pass.produced();
    };
    return convertInOrder<BTCUTF32LE, BTCUTF32BE>(
        *this, decode, [this](std::uint32_t value) { return convertUTF32(value); });
}

VX_ORDERED_CONVERTER(BTCUTF32LE, u"UTF-32LE", std::endian::little, std::uint32_t, convertUTF32)
VX_ORDERED_CONVERTER(BTCUTF32BE, u"UTF-32BE", std::endian::big, std::uint32_t, convertUTF32)

CTBUTF32::~CTBUTF32() noexcept = default;

std::int32_t CTBUTF32::convert(const char16_t* src, std::int32_t* srcPos, std::int32_t srcLen, signed char* dst,
    std::int32_t* dstPos, std::int32_t dstLen)
{
    Encoding pass(src, srcPos, srcLen, dst, dstPos, dstLen);
    const auto encode = [&](auto wireValueOf) {
        while (pass.left() >= 1 && pass.room() >= UNIT_BYTES) {
            const char16_t unit = *pass.in;
            std::uint32_t value = unit;
            if (m_lead != 0) {
                if (!isTrail(unit))
                    throw InvalidCharacterException(LEAD_WITHOUT_TRAIL);
                value = codePoint(m_lead, unit);
                m_lead = 0;
            } else if (isLead(unit)) {
                m_lead = unit;
                ++pass.in;
                continue;
            }
            storeNumber(pass.out, wireValueOf(value));
            pass.out += UNIT_BYTES;
            ++pass.in;
        }
        return pass.produced();
    };
    return convertInOrder<CTBUTF32LE, CTBUTF32BE>(
        *this, encode, [this](std::uint32_t value) { return convertUTF32(value); });
}

std::int32_t CTBUTF32::flush(signed char*, std::int32_t*, std::int32_t)
{
    throwIfHeld(m_lead);
    return 0;
}

void CTBUTF32::reset()
{
    m_lead = 0;
}

VX_ORDERED_ENCODER(CTBUTF32LE, u"UTF-32LE", std::endian::little, std::uint32_t, convertUTF32)
VX_ORDERED_ENCODER(CTBUTF32BE, u"UTF-32BE", std::endian::big, std::uint32_t, convertUTF32)

} // namespace vx::text::charset
