#include "vx/text/charset/CTBUTF8.h"
#include "vx/text/charset/detail/Pass.h"
#include "vx/text/charset/detail/Substitution.h"
#include "vx/text/charset/detail/Unicode.h"
#include "vx/text/charset/detail/Utf8EncodeBlocks.h"

namespace vx::text::charset {

using namespace detail;

namespace {

/// After other characters, this many units are encoded one by one before the fast path for plain text is tried again.
constexpr std::ptrdiff_t STRETCH = 16;

/// The continuation byte for the six bits of `value` from `shift` on.
constexpr signed char follower(std::uint32_t value, int shift) noexcept
{
    return static_cast<signed char>(0x80 | (value >> shift & 0x3F));
}

/// Encodes units that are no lead surrogates, up to `until` or one without room.
void encodeShort(Encoding& pass, const char16_t* until) noexcept
{
    const char16_t* in = pass.in;
    signed char* out = pass.out;
    for (; in < until; ++in) {
        const std::uint32_t unit = *in;
        const std::ptrdiff_t room = pass.outEnd - out;
        if (unit < 0x80) {
            if (room < 1)
                break;
            *out++ = static_cast<signed char>(unit);
        } else if (unit < 0x800) {
            if (room < 2)
                break;
            out[0] = static_cast<signed char>(0xC0 | unit >> 6);
            out[1] = follower(unit, 0);
            out += 2;
        } else {
            if (room < 3 || isLead(unit))
                break;
            out[0] = static_cast<signed char>(0xE0 | unit >> 12);
            out[1] = follower(unit, 6);
            out[2] = follower(unit, 0);
            out += 3;
        }
    }
    pass.in = in;
    pass.out = out;
}

/// False: no room.
bool storePair(Encoding& pass, std::uint32_t value) noexcept
{
    if (pass.room() < 4)
        return false;
    *pass.out++ = static_cast<signed char>(0xF0 | value >> 18);
    *pass.out++ = follower(value, 12);
    *pass.out++ = follower(value, 6);
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
        const char16_t* const until = pass.in + std::min(pass.left(), STRETCH);
        while (pass.in < until) {
            if (m_lead == 0) {
                encodeShort(pass, until);
                if (pass.in == until)
                    break;
                if (!isLead(*pass.in))
                    return pass.produced(); // no room
                m_lead = *pass.in; // whether or not there is room: the next unit decides
            } else {
                if (!isTrail(*pass.in))
                    throw InvalidCharacterException(LEAD_WITHOUT_TRAIL);
                if (!storePair(pass, codePoint(m_lead, *pass.in)))
                    return pass.produced();
                m_lead = 0;
            }
            ++pass.in;
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
