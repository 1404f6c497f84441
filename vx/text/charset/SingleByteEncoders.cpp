#include "vx/text/charset/CTBSingleByte.h"
#include "vx/text/charset/CharsetException.h"
#include "vx/text/charset/detail/ByteRuns.h"
#include "vx/text/charset/detail/CodePages.h"
#include "vx/text/charset/detail/Pass.h"
#include "vx/text/charset/detail/Substitution.h"
#include "vx/text/charset/detail/Unicode.h"

#include <typeinfo>

namespace vx::text::charset {

using namespace detail;

namespace {

/// How an encoder treats a character that has no byte, and the lead surrogate that it holds.
struct State {
    bool substitute;
    const signed char* bytes;
    int length;
    char16_t& lead;

    /// Returns false if there is no room. A substitution whose length is not 1 stores nothing.
    bool store(Encoding& pass) const
    {
        if (length != 1)
            return true;
        if (pass.room() < 1)
            return false;
        *pass.out++ = bytes[0];
        return true;
    }
};

/// The loop of all encoders. `byteOf` returns the byte, or 0, of units that are not known to be the byte of their
/// value.
template <Itself itself, class ByteOf>
void encodeUnits(Encoding& pass, const State& state, ByteOf&& byteOf)
{
    while (pass.in < pass.inEnd) {
        const char16_t unit = *pass.in;
        if (state.lead != 0) { // no pair has a byte
            if (!isTrail(unit))
                throw InvalidCharacterException(LEAD_WITHOUT_TRAIL);
            if (!state.substitute) {
                state.lead = 0;
                throw UnmappableCharacterException();
            }
            if (!state.store(pass))
                return;
            state.lead = 0;
            ++pass.in;
            continue;
        }
        if (isItself<itself>(unit)) {
            const std::ptrdiff_t run = narrowRun<itself>(pass.in, pass.out, std::min(pass.left(), pass.room()));
            if (run == 0)
                return;
            pass.in += run;
            pass.out += run;
            continue;
        }
        if (const signed char byte = byteOf(unit); byte != 0 || unit == 0) {
            if (pass.room() < 1)
                return;
            *pass.out++ = byte;
        } else if (isLead(unit)) {
            state.lead = unit;
        } else if (isTrail(unit)) {
            throw InvalidCharacterException(u"trailing surrogate without leading");
        } else if (!state.substitute) {
            throw UnmappableCharacterException();
        } else if (!state.store(pass)) {
            return;
        }
        ++pass.in;
    }
}

/// The opposite of a table of characters: for each high byte, the offset of its page in `bytes`. Page 0 is empty.
struct Pages {
    int index[256] {};
    unsigned char bytes[8 * 256] {};

    constexpr explicit Pages(const char16_t (&characters)[256]) noexcept
    {
        int last = 0;
        for (std::size_t byte = 0; byte < 256; ++byte) {
            const char16_t unit = characters[byte];
            if (unit == REPLACEMENT)
                continue;
            int& page = index[unit >> 8];
            if (page == 0)
                page = last += 256;
            bytes[page + (unit & 0xFF)] = static_cast<unsigned char>(byte);
        }
    }
};
constexpr Pages CP437_PAGES(CP437_CHARS);
constexpr Pages CP1252_PAGES(CP1252_CHARS);

signed char byteBelow(char16_t unit, char16_t limit) noexcept
{
    return unit < limit ? static_cast<signed char>(unit) : static_cast<signed char>(0);
}

signed char noByte(char16_t) noexcept
{
    return 0;
}

} // namespace

CTBSingleByte::~CTBSingleByte() noexcept = default;

std::int32_t CTBSingleByte::convert(const char16_t* src, std::int32_t* srcPos, std::int32_t srcLen, signed char* dst,
    std::int32_t* dstPos, std::int32_t dstLen)
{
    Encoding pass(src, srcPos, srcLen, dst, dstPos, dstLen);
    encodeUnits<Itself::NONE>(pass, {m_substitutionMode, m_substitutionBytes, m_substitutionLength, m_lead},
        [this](char16_t unit) { return convertChar(unit); });
    return pass.produced();
}

std::int32_t CTBSingleByte::flush(signed char*, std::int32_t*, std::int32_t)
{
    throwIfHeld(m_lead);
    return 0;
}

void CTBSingleByte::reset()
{
    m_lead = 0;
}

int CTBSingleByte::getMaxBytesPerChar()
{
    return 1;
}

int CTBSingleByte::getMaxCharsPerByte()
{
    return 1;
}

CTBASCII::~CTBASCII() noexcept = default;

std::int32_t CTBASCII::convert(const char16_t* src, std::int32_t* srcPos, std::int32_t srcLen, signed char* dst,
    std::int32_t* dstPos, std::int32_t dstLen)
{
    if (typeid(*this) != typeid(CTBASCII)) // a derived class may override the hook
        return CTBSingleByte::convert(src, srcPos, srcLen, dst, dstPos, dstLen);
    Encoding pass(src, srcPos, srcLen, dst, dstPos, dstLen);
    encodeUnits<Itself::ASCII>(pass, {m_substitutionMode, m_substitutionBytes, m_substitutionLength, m_lead}, noByte);
    return pass.produced();
}

const char16_t* CTBASCII::getEncodingName()
{
    return u"ASCII";
}

signed char CTBASCII::convertChar(char16_t unit)
{
    return byteBelow(unit, 0x80);
}

CTBISO8859_1::~CTBISO8859_1() noexcept = default;

std::int32_t CTBISO8859_1::convert(const char16_t* src, std::int32_t* srcPos, std::int32_t srcLen, signed char* dst,
    std::int32_t* dstPos, std::int32_t dstLen)
{
    if (typeid(*this) != typeid(CTBISO8859_1))
        return CTBSingleByte::convert(src, srcPos, srcLen, dst, dstPos, dstLen);
    Encoding pass(src, srcPos, srcLen, dst, dstPos, dstLen);
    encodeUnits<Itself::ALL>(pass, {m_substitutionMode, m_substitutionBytes, m_substitutionLength, m_lead}, noByte);
    return pass.produced();
}

const char16_t* CTBISO8859_1::getEncodingName()
{
    return u"ISO8859_1";
}

signed char CTBISO8859_1::convertChar(char16_t unit)
{
    return byteBelow(unit, 0x100);
}

CTBSingleByteTable::CTBSingleByteTable(const char16_t* name, const int* pageIndex, const unsigned char* pages) noexcept
    : m_name(name)
    , m_pageIndex(pageIndex)
    , m_pages(pages)
{
}

CTBSingleByteTable::~CTBSingleByteTable() noexcept = default;

std::int32_t CTBSingleByteTable::convert(const char16_t* src, std::int32_t* srcPos, std::int32_t srcLen,
    signed char* dst, std::int32_t* dstPos, std::int32_t dstLen)
{
    const std::type_info& type = typeid(*this);
    if (type != typeid(CTBCP1252) && type != typeid(CTBCP437) && type != typeid(CTBSingleByteTable))
        return CTBSingleByte::convert(src, srcPos, srcLen, dst, dstPos, dstLen);
    Encoding pass(src, srcPos, srcLen, dst, dstPos, dstLen);
    const State state {m_substitutionMode, m_substitutionBytes, m_substitutionLength, m_lead};
    const auto byteOf = [index = m_pageIndex, pages = m_pages](char16_t unit) {
        return static_cast<signed char>(pages[index[unit >> 8] + (unit & 0xFF)]);
    };
    if (m_pages == CP1252_PAGES.bytes)
        encodeUnits<Itself::ALL_BUT_C1>(pass, state, byteOf);
    else if (m_pages == CP437_PAGES.bytes)
        encodeUnits<Itself::ASCII>(pass, state, byteOf);
    else
        encodeUnits<Itself::NONE>(pass, state, byteOf);
    return pass.produced();
}

const char16_t* CTBSingleByteTable::getEncodingName()
{
    return m_name;
}

signed char CTBSingleByteTable::convertChar(char16_t unit)
{
    return static_cast<signed char>(m_pages[m_pageIndex[unit >> 8] + (unit & 0xFF)]);
}

CTBCP437::CTBCP437() noexcept
    : CTBSingleByteTable(u"CP437", CP437_PAGES.index, CP437_PAGES.bytes)
{
}

CTBCP437::~CTBCP437() noexcept = default;

CTBCP1252::CTBCP1252() noexcept
    : CTBSingleByteTable(u"CP1252", CP1252_PAGES.index, CP1252_PAGES.bytes)
{
}

CTBCP1252::~CTBCP1252() noexcept = default;

} // namespace vx::text::charset
