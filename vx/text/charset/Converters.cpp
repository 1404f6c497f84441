#include "vx/Exceptions.h"
#include "vx/Reference.h"
#include "vx/text/charset/BTCSingleByte.h"
#include "vx/text/charset/CTBSingleByte.h"
#include "vx/text/charset/CharsetException.h"
#include "vx/text/charset/CodecManager.h"
#include "vx/text/charset/detail/Substitution.h"
#include "vxsys/Defaults.h"

namespace vx::text::charset {

namespace {

/// A converter for `name` from the manager's `get`.
template <class Converter>
Converter* converterNamed(const char16_t* name, Object* (CodecManager::*get)(const char16_t*))
{
    if (name == nullptr)
        return Converter::getDefaultConverter();
    Object* const object = (CodecManager::getInstance()->*get)(name);
    if (object == nullptr)
        throw UnknownEncodingException(String(name));
    auto* const converter = dynamic_cast<Converter*>(object);
    if (converter == nullptr) { // another class was registered under the name
        const Reference<Object> unwanted(object);
        throw CastFailedException();
    }
    return converter;
}

/// A converter for the platform's default encoding, or a `Fallback`.
template <class Converter, class Fallback>
Converter* defaultConverter()
{
    char16_t name[40] = {};
    VXGetDefaultCharEncoding(name, 40);
    if (name[0] != 0) {
        try {
            return Converter::getConverter(name);
        } catch (...) { // an encoding that only the platform knows
        }
    }
    return new Fallback;
}

} // namespace

ByteToCharConverter::ByteToCharConverter(const ByteToCharConverter& other) noexcept
    : Object()
{
    *this = other;
}

ByteToCharConverter& ByteToCharConverter::operator=(const ByteToCharConverter& other) noexcept
{
    m_substitutionMode = other.m_substitutionMode;
    std::copy(std::begin(other.m_substitutionChars), std::end(other.m_substitutionChars), m_substitutionChars);
    m_substitutionLength = other.m_substitutionLength;
    return *this;
}

ByteToCharConverter::~ByteToCharConverter() noexcept = default;

ByteToCharConverter* ByteToCharConverter::getConverter(const char16_t* name)
{
    return converterNamed<ByteToCharConverter>(name, &CodecManager::getDecoder);
}

ByteToCharConverter* ByteToCharConverter::getDefaultConverter()
{
    return defaultConverter<ByteToCharConverter, BTCASCII>();
}

bool ByteToCharConverter::getSubstitutionMode()
{
    return m_substitutionMode;
}

void ByteToCharConverter::setSubstitutionMode(bool mode)
{
    m_substitutionMode = mode;
}

int ByteToCharConverter::getSubstitutionChars(char16_t* chars, int length)
{
    return detail::copySubstitution(m_substitutionChars, m_substitutionLength, chars, length);
}

void ByteToCharConverter::setSubstitutionChars(const char16_t* chars, int length)
{
    m_substitutionLength = detail::takeSubstitution(m_substitutionChars, chars, length);
}

CharToByteConverter::CharToByteConverter(const CharToByteConverter& other) noexcept
    : Object()
{
    *this = other;
}

CharToByteConverter& CharToByteConverter::operator=(const CharToByteConverter& other) noexcept
{
    m_substitutionMode = other.m_substitutionMode;
    std::copy(std::begin(other.m_substitutionBytes), std::end(other.m_substitutionBytes), m_substitutionBytes);
    m_substitutionLength = other.m_substitutionLength;
    return *this;
}

CharToByteConverter::~CharToByteConverter() noexcept = default;

CharToByteConverter* CharToByteConverter::getConverter(const char16_t* name)
{
    return converterNamed<CharToByteConverter>(name, &CodecManager::getEncoder);
}

CharToByteConverter* CharToByteConverter::getDefaultConverter()
{
    return defaultConverter<CharToByteConverter, CTBASCII>();
}

bool CharToByteConverter::getSubstitutionMode()
{
    return m_substitutionMode;
}

void CharToByteConverter::setSubstitutionMode(bool mode)
{
    m_substitutionMode = mode;
}

int CharToByteConverter::getSubstitutionBytes(signed char* bytes, int length)
{
    return detail::copySubstitution(m_substitutionBytes, m_substitutionLength, bytes, length);
}

void CharToByteConverter::setSubstitutionBytes(const signed char* bytes, int length)
{
    m_substitutionLength = detail::takeSubstitution(m_substitutionBytes, bytes, length);
}

} // namespace vx::text::charset
