#include "vx/text/charset/detail/TextCodecs.h"

#include "vx/Exception.h"
#include "vx/Result.h"
#include "vx/text/charset/detail/Substitution.h"
#include "vx/text/charset/detail/Unicode.h"

#include <algorithm>

namespace vx::text::charset::detail {

namespace {

std::int32_t roomOf(const std::int32_t* position, std::int32_t end) noexcept
{
    return std::max(end, *position) - *position;
}

/// Sets `position` forward by what a codec says, which must lie from 0 to `most`.
void advance(std::int32_t* position, std::int32_t count, std::int32_t most)
{
    if (count < 0 || count > most)
        throwResult(RESULT_FAIL);
    *position += count;
}

/// Whether a codec stopped at something without a mapping. Throws ResultException for a failure.
bool isUnmapped(std::int32_t result)
{
    if (result != RESULT_UNMAPPABLE_CHARACTER && result != RESULT_BUFFER_TOO_SMALL)
        throwIfFailed(result);
    return result == RESULT_UNMAPPABLE_CHARACTER;
}

/// Stores the whole substitution. Returns false if there is no room.
template <class Unit>
bool substitute(bool mode, const Unit* units, int length, Unit* dst, std::int32_t* dstPos, std::int32_t dstLen)
{
    if (!mode)
        throw UnmappableCharacterException();
    if (length > roomOf(dstPos, dstLen))
        return false;
    std::copy_n(units, length, dst + *dstPos);
    *dstPos += length;
    return true;
}

} // namespace

BTCText::BTCText(IVXCharCodec* codec, IVXTextCodec* text)
    : BTCCom(codec)
    , m_text(text)
{
}

BTCText::~BTCText() noexcept = default;

std::int32_t BTCText::convert(const signed char* src, std::int32_t* srcPos, std::int32_t srcLen, char16_t* dst,
    std::int32_t* dstPos, std::int32_t dstLen)
{
    const std::int32_t start = *dstPos;
    while (*srcPos < srcLen) {
        const std::int32_t left = roomOf(srcPos, srcLen);
        const std::int32_t room = roomOf(dstPos, dstLen);
        std::int32_t taken = left;
        std::int32_t stored = room;
        const std::int32_t result = m_text->Decode(src + *srcPos, &taken, dst + *dstPos, &stored);
        advance(dstPos, stored, room);
        advance(srcPos, taken, left);
        if (!isUnmapped(result))
            break;
        int length = left - taken;
        const std::uint32_t value = convertBytes(src + *srcPos, length);
        if (isSurrogate(value))
            throw InvalidCharacterException(u"Invalid byte sequence (decoded chars in surrogate range)");
        if (length < 1
            || !substitute(m_substitutionMode, m_substitutionChars, m_substitutionLength, dst, dstPos, dstLen))
            break;
        advance(srcPos, length, left - taken);
    }
    return *dstPos - start;
}

void BTCText::reset()
{
    throwIfFailed(m_text->Reset());
    BTCCom::reset();
}

CTBText::CTBText(IVXCharCodec* codec, IVXTextCodec* text)
    : CTBCom(codec)
    , m_text(text)
{
}

CTBText::~CTBText() noexcept = default;

std::int32_t CTBText::convert(const char16_t* src, std::int32_t* srcPos, std::int32_t srcLen, signed char* dst,
    std::int32_t* dstPos, std::int32_t dstLen)
{
    const std::int32_t start = *dstPos;
    while (*srcPos < srcLen) {
        const char16_t pair[] = {m_lead, src[*srcPos]};
        const bool isPair = m_lead != 0;
        if (isPair && !isTrail(pair[1]))
            throw InvalidCharacterException(LEAD_WITHOUT_TRAIL);
        const std::int32_t left = isPair ? 2 : roomOf(srcPos, srcLen);
        const std::int32_t room = roomOf(dstPos, dstLen);
        std::int32_t taken = left;
        std::int32_t stored = room;
        const std::int32_t result = m_text->Encode(isPair ? pair : src + *srcPos, &taken, dst + *dstPos, &stored);
        advance(dstPos, stored, room);
        if (!isPair) {
            advance(srcPos, taken, left);
        } else if (taken == 2) {
            m_lead = 0;
            ++*srcPos;
            continue;
        }
        const bool unmapped = isUnmapped(result);
        if (*srcPos == srcLen || result == RESULT_BUFFER_TOO_SMALL)
            break;
        if (!isPair && isLead(src[*srcPos])) {
            m_lead = src[(*srcPos)++];
            continue;
        }
        if (!unmapped)
            break;
        if (!isPair && isTrail(src[*srcPos]))
            throw InvalidCharacterException(u"trailing surrogate without leading");
        if (m_substitutionMode && !endText(dst, dstPos, dstLen)) // the substitution is text of the initial state
            break;
        if (!substitute(m_substitutionMode, m_substitutionBytes, m_substitutionLength, dst, dstPos, dstLen))
            break;
        m_lead = 0;
        ++*srcPos;
    }
    return *dstPos - start;
}

std::int32_t CTBText::flush(signed char* dst, std::int32_t* dstPos, std::int32_t dstLen)
{
    const std::int32_t start = *dstPos;
    CTBCom::flush(dst, dstPos, dstLen);
    endText(dst, dstPos, dstLen);
    return *dstPos - start;
}

void CTBText::reset()
{
    if (m_lead == 0)
        throwIfFailed(m_text->Reset());
    CTBCom::reset();
}

/// Returns false if there is no room.
bool CTBText::endText(signed char* dst, std::int32_t* dstPos, std::int32_t dstLen)
{
    const std::int32_t room = roomOf(dstPos, dstLen);
    std::int32_t stored = room;
    const std::int32_t result = m_text->EndText(dst + *dstPos, &stored);
    advance(dstPos, stored, room);
    if (result != RESULT_BUFFER_TOO_SMALL)
        throwIfFailed(result);
    return result != RESULT_BUFFER_TOO_SMALL;
}

} // namespace vx::text::charset::detail
