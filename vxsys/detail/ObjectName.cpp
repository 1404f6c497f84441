#include "vxsys/detail/ObjectName.h"

#include "vxsys/detail/Sha256.h"

#include <cstdint>

namespace vxsys::detail {

namespace {

/// The longest file name that is not shortened, and the length of the readable part of a shortened one.
constexpr std::size_t WHOLE_LIMIT = 250;
constexpr std::size_t HEAD_LIMIT = 150;

bool isPlain(char character) noexcept
{
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z')
        || (character >= '0' && character <= '9') || character == '_' || character == '.' || character == '-';
}

std::size_t encodedLength(std::string_view name) noexcept
{
    std::size_t length = 0;
    for (const char character : name)
        length += isPlain(character) ? 1 : 3;
    return length;
}

} // namespace

ObjectName::ObjectName(char kind, std::string_view name) noexcept
{
    append(kind);
    append('-');
    const bool isWhole = m_length + encodedLength(name) <= WHOLE_LIMIT;
    for (const char character : name) {
        if (!isWhole && m_length > HEAD_LIMIT)
            break;
        if (isPlain(character)) {
            append(character);
        } else {
            append('%');
            appendHex(static_cast<unsigned char>(character));
        }
    }
    if (isWhole)
        return;
    append('~');
    for (const std::uint8_t byte : sha256(name))
        appendHex(byte);
}

void ObjectName::append(char character) noexcept
{
    m_text[m_length++] = character;
}

void ObjectName::appendHex(unsigned char byte) noexcept
{
    constexpr char DIGITS[] = "0123456789ABCDEF";
    append(DIGITS[byte >> 4]);
    append(DIGITS[byte & 15]);
}

} // namespace vxsys::detail
