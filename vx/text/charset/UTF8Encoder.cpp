#include "vx/text/charset/CTBUTF8.h"
#include "vx/text/charset/detail/Pass.h"
#include "vx/text/charset/detail/Substitution.h"
#include "vx/text/charset/detail/Unicode.h"
#include "vx/text/charset/detail/Utf8EncodeBlocks.h"

namespace vx::text::charset {

using namespace detail;

namespace {

/// So much is encoded one by one before there may be plain text again.
constexpr std::ptrdiff_t STRETCH = 16;

/// The following byte that holds the six bits of `value` from `shift` on.
constexpr signed char follower(std::uint32_t value, int shift) noexcept
{
    return static_cast<signed char>(0x80 | (value >> shift & 0x3F));
}

/// False: no room.
bool storeSequence(Encoding& pass, std::uint32_t value) noexcept
{
    const int length = value < 0x80 ? 1 : value < 0x800 ? 2 : value < 0x10000 ? 3 : 4;
    if (pass.room() < length)
        return false;
    switch (length) {
    case 1:
        *pass.out++ = static_cast<signed char>(value);
        return true;
    case 2:
        *pass.out++ = static_cast<signed char>(0xC0 | value >> 6);
        break;
    case 3:
        *pass.out++ = static_cast<signed char>(0xE0 | value >> 12);
        *pass.out++ = follower(value, 6);
        break;
    default:
        *pass.out++ = static_cast<signed char>(0xF0 | value >> 18);
        *pass.out++ = follower(value, 12);
        *pass.out++ = follower(value, 6);
    }
    *pass.out++ = follower(value, 0);
    return true;
}

} // namespace

CTBUTF8::~CTBUTF8() noexcept = default;

std::int32_t CTBUTF8::convert(const char16_t* src, std::int32_t* srcPos, std::int32_t srcLen, signed char* dst,
    std::int32_t* dstPos, std::int32_t dstLen)
{
    Encoding pass(src, srcPos, srcLen, dst, dstPos, dstLen);
    while (pass.in < pass.inEnd) {
        if (m_lead == 0)
            encodePlain(pass);
        const char16_t* const faster = pass.in + std::min(pass.left(), STRETCH);
        for (; pass.in < faster; ++pass.in) {
            const char16_t unit = *pass.in;
            if (m_lead != 0) {
                if (!isTrail(unit))
                    throw InvalidCharacterException(LEAD_WITHOUT_TRAIL);
                if (!storeSequence(pass, codePoint(m_lead, unit)))
                    return pass.produced();
                m_lead = 0;
            } else if (isLead(unit)) {
                m_lead = unit; // with or without room: whatever comes next is looked at then
            } else if (!storeSequence(pass, unit)) {
                return pass.produced();
            }
        }
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
