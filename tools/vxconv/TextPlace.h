#pragma once

#include <cstdint>
#include <string_view>

namespace vxconv {

/// The current position in a text that arrives in pieces: the line and the character in it, both from 1. A line ends
/// with LF.
class TextPlace {
public:
    void advance(std::u16string_view text) noexcept;

    std::int64_t line() const noexcept { return m_line; }
    std::int64_t column() const noexcept { return m_column; }

private:
    std::int64_t m_line = 1;
    std::int64_t m_column = 1;
};

/// Finds lone halves of surrogate pairs in a text that arrives in pieces.
class SurrogatePairs {
public:
    /// The index in this piece at which a lone half was found, or at which the missing half should be; npos for none.
    std::size_t findLone(std::u16string_view text) noexcept;
    /// Whether the text so far ends with the first half of a pair.
    bool isOpen() const noexcept { return m_isOpen; }

private:
    bool m_isOpen = false;
};

} // namespace vxconv
