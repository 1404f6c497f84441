#include "Utf8Check.h"

#include <cstring>

namespace vxconv {

namespace {

bool isAscii(const signed char* eightBytes)
{
    std::uint64_t bits;
    std::memcpy(&bits, eightBytes, sizeof bits);
    return (bits & 0x8080808080808080U) == 0;
}

} // namespace

/// By table 3-7 of the Unicode Standard: the first byte of a sequence narrows the range of the second.
std::int64_t Utf8Check::findFault(const signed char* bytes, std::int32_t length) noexcept
{
    for (std::int32_t index = 0; index < length; ++index) {
        while (m_bytesMissing == 0 && length - index >= 8 && isAscii(bytes + index))
            index += 8;
        if (index == length)
            break;

        const auto byte = static_cast<unsigned char>(bytes[index]);
        if (m_bytesMissing > 0) {
            if (byte < m_lowest || byte > m_highest)
                return m_position + index - m_bytesHere;
            ++m_bytesHere;
            --m_bytesMissing;
            m_lowest = 0x80;
            m_highest = 0xBF;
        } else if (byte >= 0x80) {
            if (byte < 0xC2 || byte > 0xF4)
                return m_position + index;
            m_bytesHere = 1;
            m_bytesMissing = byte < 0xE0 ? 1 : byte < 0xF0 ? 2 : 3;
            m_lowest = byte == 0xE0 ? 0xA0 : byte == 0xF0 ? 0x90 : 0x80;
            m_highest = byte == 0xED ? 0x9F : byte == 0xF4 ? 0x8F : 0xBF;
        }
    }
    m_position += length;
    return NONE;
}

} // namespace vxconv
