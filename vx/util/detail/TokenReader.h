#pragma once

#include "vxsys/Text.h"

namespace vx::util::detail {

/// Reads the tokens of a text and writes terminators into it. A token ends at a separator, or at the next double quote if it
/// begins with one. With `pairIsEmpty`, two double quotes are an empty token.
class TokenReader {
public:
    TokenReader(char16_t* text, bool pairIsEmpty) noexcept
        : m_position(text)
        , m_pairIsEmpty(pairIsEmpty)
    {
    }

    /// Null when no token is left.
    char16_t* next(const char16_t* separators) noexcept;

    /// The unit after the last token and its separator; 0 at the end.
    char16_t peek() const noexcept { return m_position != nullptr ? *m_position : u'\0'; }

private:
    char16_t* m_position;
    bool m_pairIsEmpty;
};

inline char16_t* TokenReader::next(const char16_t* separators) noexcept
{
    if (m_position == nullptr)
        return nullptr;
    if (m_pairIsEmpty && m_position[0] == u'"' && m_position[1] == u'"') {
        char16_t* const empty = m_position + 1;
        *empty = 0;
        m_position += 2;
        return empty;
    }
    if (*m_position != u'"')
        return VXStrTokW(nullptr, separators, &m_position);
    char16_t* const token = VXStrTokW(nullptr, u"\"", &m_position);
    while (m_position != nullptr && *m_position != 0 && VXStrChrW(separators, *m_position) != nullptr)
        ++m_position;
    return token;
}

} // namespace vx::util::detail
