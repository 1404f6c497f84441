#include "vx/text/charset/BTCSingleByte.h"
#include "vx/text/charset/CharsetException.h"
#include "vx/text/charset/detail/ByteRuns.h"
#include "vx/text/charset/detail/CodePages.h"
#include "vx/text/charset/detail/Pass.h"
#include "vx/text/charset/detail/Unicode.h"

#include <typeinfo>

namespace vx::text::charset {

using namespace detail;

namespace {

/// How a decoder treats a byte that has no character.
struct Substitution {
    bool mode;
    const char16_t* units;
    int length;
};

/// The loop of all decoders. If no byte is known to be the character of its value, `characterOf` is a hook, which is
/// called once for each byte.
template <Itself itself, class CharacterOf>
void decodeBytes(Decoding& pass, const Substitution& substitution, const CharacterOf& characterOf)
{
    for (;;) {
        if constexpr (itself != Itself::NONE) {
            const std::ptrdiff_t run
                = decodeRun<itself>(pass.in, pass.out, std::min(pass.left(), pass.room()), characterOf);
            pass.in += run;
            pass.out += run;
        }
        if (pass.in == pass.inEnd)
            return;
        char16_t unit = characterOf(*pass.in);
        if (unit == REPLACEMENT) {
            if (!substitution.mode)
                throw UnmappableCharacterException();
            if (substitution.length != 1) {
                ++pass.in;
                continue;
            }
            unit = substitution.units[0];
        }
        if (pass.room() < 1)
            return;
        *pass.out++ = unit;
        ++pass.in;
    }
}

char16_t latin1Character(signed char byte) noexcept
{
    return static_cast<std::uint8_t>(byte);
}

} // namespace

BTCSingleByte::~BTCSingleByte() noexcept = default;

std::int32_t BTCSingleByte::convert(const signed char* src, std::int32_t* srcPos, std::int32_t srcLen, char16_t* dst,
    std::int32_t* dstPos, std::int32_t dstLen)
{
    Decoding pass(src, srcPos, srcLen, dst, dstPos, dstLen);
    decodeBytes<Itself::NONE>(pass, {m_substitutionMode, m_substitutionChars, m_substitutionLength},
        [this](signed char byte) { return convertByte(byte); });
    return pass.produced();
}

std::int32_t BTCSingleByte::flush(char16_t*, std::int32_t*, std::int32_t)
{
    return 0;
}

void BTCSingleByte::reset() { }

int BTCSingleByte::getMaxBytesPerChar()
{
    return 1;
}

int BTCSingleByte::getMaxCharsPerByte()
{
    return 1;
}

BTCASCII::~BTCASCII() noexcept = default;

std::int32_t BTCASCII::convert(const signed char* src, std::int32_t* srcPos, std::int32_t srcLen, char16_t* dst,
    std::int32_t* dstPos, std::int32_t dstLen)
{
    if (typeid(*this) != typeid(BTCASCII)) // a derived class may override the hook
        return BTCSingleByte::convert(src, srcPos, srcLen, dst, dstPos, dstLen);
    Decoding pass(src, srcPos, srcLen, dst, dstPos, dstLen);
    decodeBytes<Itself::ASCII>(pass, {m_substitutionMode, m_substitutionChars, m_substitutionLength}, asciiCharacter);
    return pass.produced();
}

const char16_t* BTCASCII::getEncodingName()
{
    return u"ASCII";
}

char16_t BTCASCII::convertByte(signed char byte)
{
    return asciiCharacter(byte);
}

BTCISO8859_1::~BTCISO8859_1() noexcept = default;

std::int32_t BTCISO8859_1::convert(const signed char* src, std::int32_t* srcPos, std::int32_t srcLen, char16_t* dst,
    std::int32_t* dstPos, std::int32_t dstLen)
{
    Decoding pass(src, srcPos, srcLen, dst, dstPos, dstLen);
    const std::ptrdiff_t count = std::min(pass.left(), pass.room());
    decodeRun<Itself::ALL>(pass.in, pass.out, count, latin1Character);
    pass.in += count;
    pass.out += count;
    return pass.produced();
}

const char16_t* BTCISO8859_1::getEncodingName()
{
    return u"ISO8859_1";
}

char16_t BTCISO8859_1::convertByte(signed char byte)
{
    return latin1Character(byte);
}

BTCSingleByteTable::BTCSingleByteTable(const char16_t* name, const char16_t* table) noexcept
    : m_name(name)
    , m_table(table)
{
}

BTCSingleByteTable::~BTCSingleByteTable() noexcept = default;

std::int32_t BTCSingleByteTable::convert(const signed char* src, std::int32_t* srcPos, std::int32_t srcLen,
    char16_t* dst, std::int32_t* dstPos, std::int32_t dstLen)
{
    const std::type_info& type = typeid(*this);
    if (type != typeid(BTCCP1252) && type != typeid(BTCCP437) && type != typeid(BTCSingleByteTable))
        return BTCSingleByte::convert(src, srcPos, srcLen, dst, dstPos, dstLen);
    Decoding pass(src, srcPos, srcLen, dst, dstPos, dstLen);
    const Substitution substitution {m_substitutionMode, m_substitutionChars, m_substitutionLength};
    const auto characterOf = [table = m_table](signed char byte) { return table[static_cast<unsigned char>(byte)]; };
    if (m_table == CP1252_CHARS)
        decodeBytes<Itself::ALL_BUT_C1>(pass, substitution, characterOf);
    else if (m_table == CP437_CHARS)
        decodeBytes<Itself::ASCII>(pass, substitution, characterOf);
    else
        decodeBytes<Itself::NONE>(pass, substitution, characterOf);
    return pass.produced();
}

const char16_t* BTCSingleByteTable::getEncodingName()
{
    return m_name;
}

char16_t BTCSingleByteTable::convertByte(signed char byte)
{
    return m_table[static_cast<unsigned char>(byte)];
}

BTCCP437::BTCCP437() noexcept
    : BTCSingleByteTable(u"CP437", CP437_CHARS)
{
}

BTCCP437::~BTCCP437() noexcept = default;

BTCCP1252::BTCCP1252() noexcept
    : BTCSingleByteTable(u"CP1252", CP1252_CHARS)
{
}

BTCCP1252::~BTCCP1252() noexcept = default;

} // namespace vx::text::charset
