#pragma once

#include "ReverseTable.h"

namespace vx::components {

/// Codes of two bytes and their characters, in both directions. It is filled at its first use from a compact table.
class DoubleByteTable {
public:
    static constexpr char16_t NO_CHARACTER = 0xFFFD;

    DoubleByteTable()
        : m_characters(PAGE, NO_CHARACTER)
    {
        for (std::uint16_t ascii = 1; ascii < 0x80; ++ascii)
            addCode(static_cast<char16_t>(ascii), ascii);
    }

    /// The first bytes of all codes, from 0x80 on.
    void addFirst(unsigned char from, unsigned char to) noexcept
    {
        std::fill(m_isFirst.begin() + (from - 0x80), m_isFirst.begin() + (to - 0x80) + 1, true);
    }

    /// `code`: the first byte is the upper one, from 0x80 on.
    void add(std::uint16_t code, char16_t character)
    {
        if (character == NO_CHARACTER)
            return;
        std::uint32_t& page = m_pages[(code >> 8) - 0x80];
        if (page == 0) {
            page = static_cast<std::uint32_t>(m_characters.size());
            m_characters.resize(m_characters.size() + PAGE, NO_CHARACTER);
        }
        m_characters[page + (code & 0xFF)] = character;
        m_codes.add(character, code);
    }

    bool isFirst(unsigned char byte) const noexcept { return m_isFirst[byte - 0x80]; }
    char16_t characterOf(unsigned char first, unsigned char second) const noexcept
    {
        return m_characters[m_pages[first - 0x80] + second];
    }
    /// 0 if the character has none.
    std::uint16_t codeOf(char16_t character) const noexcept { return m_codes.find(character); }
    const ReverseTable& codes() const noexcept { return m_codes; }
    /// Adds a code of any length to this direction only.
    void addCode(char16_t character, std::uint16_t code) { m_codes.add(character, code); }

private:
    static constexpr std::size_t PAGE = 256;

    std::array<std::uint32_t, 0x80> m_pages {}; ///< page 0 is empty
    std::array<bool, 0x80> m_isFirst {};
    std::vector<char16_t> m_characters;
    ReverseTable m_codes;
};

} // namespace vx::components
