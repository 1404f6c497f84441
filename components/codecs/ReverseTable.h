#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace vx::components {

/// From characters to their codes, in pages of 256 characters: the opposite of a table of characters.
class ReverseTable {
public:
    ReverseTable()
        : m_codes(PAGE)
    {
    }

    /// The first code that is added for a character remains. 0 is no code.
    void add(char16_t character, std::uint16_t code)
    {
        std::uint16_t& page = m_pages[character / PAGE];
        if (page == 0) {
            page = static_cast<std::uint16_t>(m_codes.size() / PAGE);
            m_codes.resize(m_codes.size() + PAGE);
        }
        std::uint16_t& held = m_codes[page * PAGE + character % PAGE];
        if (held == 0)
            held = code;
    }

    /// 0 if the character has none.
    std::uint16_t find(char16_t character) const noexcept
    {
        return m_codes[m_pages[character / PAGE] * PAGE + character % PAGE];
    }

private:
    static constexpr std::size_t PAGE = 256;

    std::array<std::uint16_t, 0x10000 / PAGE> m_pages {}; ///< page 0 is empty
    std::vector<std::uint16_t> m_codes;
};

} // namespace vx::components
