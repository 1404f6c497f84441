#include "vx/text/charset/BTCUTF32.h"
#include "vx/text/charset/CTBUTF32.h"
#include "vx/text/charset/CharsetException.h"
#include "vx/text/charset/detail/ByteOrder.h"
#include "vx/text/charset/detail/Pass.h"
#include "vx/text/charset/detail/Substitution.h"
#include "vx/text/charset/detail/Unicode.h"

#include <typeinfo>

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
    const auto decode = [&](auto&& valueOf) {
        while (pass.left() >= UNIT_BYTES && pass.room() >= 1) {
            const std::uint32_t value = valueOf(loadNumber<std::uint32_t>(pass.in));
            if (isSurrogate(value))
                throw InvalidCharacterException(u"Illegal UTF-32 char in surrogate range");
            if (value <= 0xFFFF) {
                *pass.out++ = static_cast<char16_t>(value);
            } else if (value > LAST_CODE_POINT) {
                if (!storeSubstitution(pass, m_substitutionMode, m_substitutionChars, m_substitutionLength))
                    break;
            } else if (!storePair(pass, value)) {
                break;
            }
            pass.in += UNIT_BYTES;
        }
    };
    const std::type_info& type = typeid(*this);
    if (type == typeid(BTCUTF32LE))
        decode(ordered<SWAPS_LITTLE, std::uint32_t>);
    else if (type == typeid(BTCUTF32BE))
        decode(ordered<SWAPS_BIG, std::uint32_t>);
    else // a derived class may override the hook
        decode([this](std::uint32_t value) { return convertUTF32(value); });
    return pass.produced();
}

BTCUTF32BE::~BTCUTF32BE() noexcept = default;

const char16_t* BTCUTF32BE::getEncodingName()
{
    return u"UTF-32BE";
}

char16_t BTCUTF32BE::convertChar(char16_t unit)
{
    return ordered<SWAPS_BIG>(unit);
}

std::uint32_t BTCUTF32BE::convertUTF32(std::uint32_t value)
{
    return ordered<SWAPS_BIG>(value);
}

BTCUTF32LE::~BTCUTF32LE() noexcept = default;

const char16_t* BTCUTF32LE::getEncodingName()
{
    return u"UTF-32LE";
}

char16_t BTCUTF32LE::convertChar(char16_t unit)
{
    return ordered<SWAPS_LITTLE>(unit);
}

std::uint32_t BTCUTF32LE::convertUTF32(std::uint32_t value)
{
    return ordered<SWAPS_LITTLE>(value);
}

CTBUTF32::~CTBUTF32() noexcept = default;

std::int32_t CTBUTF32::convert(const char16_t* src, std::int32_t* srcPos, std::int32_t srcLen, signed char* dst,
    std::int32_t* dstPos, std::int32_t dstLen)
{
    Encoding pass(src, srcPos, srcLen, dst, dstPos, dstLen);
    const auto encode = [&](auto&& wireValueOf) {
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
    };
    const std::type_info& type = typeid(*this);
    if (type == typeid(CTBUTF32LE))
        encode(ordered<SWAPS_LITTLE, std::uint32_t>);
    else if (type == typeid(CTBUTF32BE))
        encode(ordered<SWAPS_BIG, std::uint32_t>);
    else
        encode([this](std::uint32_t value) { return convertUTF32(value); });
    return pass.produced();
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

CTBUTF32BE::CTBUTF32BE() noexcept
{
    constexpr signed char bytes[] = {0, 0, -1, -3}; // 00 00 FF FD
    m_substitutionLength = takeSubstitution(m_substitutionBytes, bytes, UNIT_BYTES);
}

CTBUTF32BE::~CTBUTF32BE() noexcept = default;

const char16_t* CTBUTF32BE::getEncodingName()
{
    return u"UTF-32BE";
}

char16_t CTBUTF32BE::convertChar(char16_t unit)
{
    return ordered<SWAPS_BIG>(unit);
}

std::uint32_t CTBUTF32BE::convertUTF32(std::uint32_t value)
{
    return ordered<SWAPS_BIG>(value);
}

CTBUTF32LE::CTBUTF32LE() noexcept
{
    constexpr signed char bytes[] = {-3, -1, 0, 0}; // FD FF 00 00
    m_substitutionLength = takeSubstitution(m_substitutionBytes, bytes, UNIT_BYTES);
}

CTBUTF32LE::~CTBUTF32LE() noexcept = default;

const char16_t* CTBUTF32LE::getEncodingName()
{
    return u"UTF-32LE";
}

char16_t CTBUTF32LE::convertChar(char16_t unit)
{
    return ordered<SWAPS_LITTLE>(unit);
}

std::uint32_t CTBUTF32LE::convertUTF32(std::uint32_t value)
{
    return ordered<SWAPS_LITTLE>(value);
}

} // namespace vx::text::charset
