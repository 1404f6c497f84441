#include "CheckedInput.h"

#include "common/Failure.h"

#include <vx/io/FileInputStream.h>

#include <cstring>

namespace vxconv {

using namespace vxtools;

namespace {

bool isAscii(const signed char* eightBytes)
{
    std::uint64_t bits;
    std::memcpy(&bits, eightBytes, sizeof bits);
    return (bits & 0x8080808080808080U) == 0;
}

} // namespace

CheckedInput::CheckedInput(const Input& input, std::u16string_view encoding, vxtools::Progress& progress)
    : FilterInputStream(new vx::io::FileInputStream(static_cast<std::uint32_t>(input.descriptor()), false))
    , m_name(input.name())
    , m_progress(progress)
    , m_isUtf8(encoding == u"UTF-8")
{
    if (encoding.starts_with(u"UTF-16"))
        m_unitSize = 2;
    else if (encoding.starts_with(u"UTF-32"))
        m_unitSize = 4;
}

std::int32_t CheckedInput::read(signed char* target, std::int32_t length)
{
    const std::int32_t got = FilterInputStream::read(target, length);
    if (got < 0) {
        checkEnd();
        return got;
    }
    if (m_isUtf8)
        checkUtf8(target, got);
    m_position += got;
    m_progress.update(m_position);
    return got;
}

/// By table 3-7 of the Unicode Standard: the first byte of a sequence narrows the range of the second.
void CheckedInput::checkUtf8(const signed char* bytes, std::int32_t length)
{
    for (std::int32_t index = 0; index < length; ++index) {
        while (m_bytesMissing == 0 && length - index >= 8 && isAscii(bytes + index))
            index += 8;
        if (index == length)
            return;

        const auto byte = static_cast<unsigned char>(bytes[index]);
        if (m_bytesMissing > 0) {
            if (byte < m_lowest || byte > m_highest)
                failAt(m_position + index - m_bytesHere, "not UTF-8");
            ++m_bytesHere;
            --m_bytesMissing;
            m_lowest = 0x80;
            m_highest = 0xBF;
        } else if (byte >= 0x80) {
            if (byte < 0xC2 || byte > 0xF4)
                failAt(m_position + index, "not UTF-8");
            m_bytesHere = 1;
            m_bytesMissing = byte < 0xE0 ? 1 : byte < 0xF0 ? 2 : 3;
            m_lowest = byte == 0xE0 ? 0xA0 : byte == 0xF0 ? 0x90 : 0x80;
            m_highest = byte == 0xED ? 0x9F : byte == 0xF4 ? 0x8F : 0xBF;
        }
    }
}

void CheckedInput::checkEnd() const
{
    const std::int64_t left = m_bytesMissing > 0 ? m_bytesHere : m_position % m_unitSize;
    if (left > 0)
        failAt(m_position - left, "the input ends inside a character");
}

void CheckedInput::failAt(std::int64_t place, const char* why) const
{
    throw Failure(m_name, "byte " + std::to_string(place) + ": " + why);
}

} // namespace vxconv
