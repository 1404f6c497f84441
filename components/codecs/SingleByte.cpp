#include "ReverseTable.h"
#include "TextCodec.h"

namespace vx::components {

namespace {

constexpr char16_t NO_CHARACTER = 0xFFFD;

class SingleByte {
public:
    static constexpr int MOST_BYTES = 1;

    explicit SingleByte(const CodePage& page)
        : m_upper(*page.upper)
    {
        for (int index = 0; index < 0x80; ++index) {
            if (m_upper[index] != NO_CHARACTER)
                m_bytes.add(m_upper[index], static_cast<std::uint16_t>(0x80 + index));
        }
    }

    Decoded decode(const unsigned char* bytes, std::ptrdiff_t) const noexcept
    {
        const char16_t character = m_upper[*bytes - 0x80];
        return {character == NO_CHARACTER ? Decoded::UNMAPPED : character, 1};
    }

    int encode(std::uint32_t codePoint, unsigned char* bytes) const noexcept
    {
        const std::uint16_t byte = codePoint < 0x10000 ? m_bytes.find(static_cast<char16_t>(codePoint)) : 0;
        *bytes = static_cast<unsigned char>(byte);
        return byte != 0 ? 1 : 0;
    }

private:
    const char16_t (&m_upper)[128];
    ReverseTable m_bytes;
};

} // namespace

Codec* makeSingleByteCodec(const CodePage& page)
{
    return new CharsetCodec<SingleByte>(page);
}

} // namespace vx::components
