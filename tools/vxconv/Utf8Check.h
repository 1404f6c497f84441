#pragma once

#include <cstdint>

namespace vxconv {

/// Checks whether bytes that arrive in pieces are UTF-8.
class Utf8Check {
public:
    static constexpr std::int64_t NONE = -1;

    /// The position, in all bytes so far, of a sequence that is not UTF-8, or NONE. Not called again after an error.
    std::int64_t findFault(const signed char* bytes, std::int32_t length) noexcept;
    /// The number of bytes at the end that are an incomplete character.
    int incomplete() const noexcept { return m_bytesMissing > 0 ? m_bytesHere : 0; }

private:
    std::int64_t m_position = 0;
    // Of an incomplete character: the number of bytes read and missing, and the range of the next byte.
    int m_bytesHere = 0;
    int m_bytesMissing = 0;
    unsigned char m_lowest = 0x80;
    unsigned char m_highest = 0xBF;
};

} // namespace vxconv
