#include "ReverseTable.h"
#include "TextCodec.h"

namespace vx::components {

namespace {

constexpr char16_t NO_CHARACTER = 0xFFFD;

class SingleByteCodec final : public TextCodec {
public:
    explicit SingleByteCodec(const CodePage& codePage)
        : TextCodec(codePage)
    {
        for (int byte = 0; byte < 0x100; ++byte) {
            const char16_t character = byte < 0x80 ? static_cast<char16_t>(byte) : (*codePage.upper)[byte - 0x80];
            m_characters[static_cast<std::size_t>(byte)] = character;
            if (character != NO_CHARACTER)
                m_bytes.add(character, static_cast<std::uint16_t>(byte));
            else
                m_isComplete = false;
        }
    }

private:
    static constexpr std::ptrdiff_t BLOCK = 16;

    /// Converts unit by unit until `convert`, which stores one, returns false. No branch depends on a unit of a block that
    /// is converted.
    template <class Pass, class Convert>
    static std::int32_t run(Pass& pass, Convert convert) noexcept
    {
        while (pass.left() >= BLOCK && pass.room() >= BLOCK) {
            bool isDone = true;
            for (std::ptrdiff_t index = 0; index < BLOCK; ++index)
                isDone &= convert(pass.in[index], pass.out[index]);
            if (!isDone)
                break;
            pass.in += BLOCK;
            pass.out += BLOCK;
        }
        for (; pass.in < pass.inEnd; ++pass.in, ++pass.out) {
            std::remove_reference_t<decltype(*pass.out)> converted;
            if (!convert(*pass.in, converted))
                return RESULT_UNMAPPABLE_CHARACTER;
            if (pass.out == pass.outEnd)
                return RESULT_BUFFER_TOO_SMALL;
            *pass.out = converted;
        }
        return RESULT_OK;
    }

    std::int32_t decodeText(Decoding& pass) override
    {
        if (m_isComplete) {
            return run(pass, [this](unsigned char byte, char16_t& character) {
                character = m_characters[byte];
                return true;
            });
        }
        return run(pass, [this](unsigned char byte, char16_t& character) {
            character = m_characters[byte];
            return character != NO_CHARACTER;
        });
    }

    std::int32_t encodeText(Encoding& pass) override
    {
        return run(pass, [this](char16_t character, unsigned char& byte) {
            byte = static_cast<unsigned char>(m_bytes.find(character));
            return byte != 0 || character == 0;
        });
    }

    int decode(const signed char* bytes, int, std::uint32_t& codePoint) override
    {
        codePoint = m_characters[static_cast<unsigned char>(*bytes)];
        return 1;
    }

    int encode(std::uint32_t codePoint, char* bytes) override
    {
        const std::uint16_t byte = codePoint < 0x10000 ? m_bytes.find(static_cast<char16_t>(codePoint)) : 0;
        *bytes = static_cast<char>(byte);
        return byte != 0 || codePoint == 0 ? 1 : 0;
    }

    std::array<char16_t, 0x100> m_characters;
    ReverseTable m_bytes;
    bool m_isComplete = true; ///< each byte has a character
};

} // namespace

Codec* makeSingleByteCodec(const CodePage& page)
{
    return new SingleByteCodec(page);
}

} // namespace vx::components
