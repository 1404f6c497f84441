#pragma once

#include "vxsys/Text.h"

namespace vx::util::detail {

/// Reads the tokens of a writable text, which it cuts up: a token is what stands between separators, or between double
/// quotes where it begins with one. Two double quotes are an empty token where `pairIsEmpty`.
class TokenReader {
public:
    TokenReader(char16_t* text, bool pairIsEmpty) noexcept
        : m_position(text)
        , m_pairIsEmpty(pairIsEmpty)
    {
    }

    /// Null when no token is left.
    char16_t* next(const char16_t* separators) noexcept
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

    /// The unit behind the last token and its separator; 0 at the end.
    char16_t peek() const noexcept { return m_position != nullptr ? *m_position : u'\0'; }

private:
    char16_t* m_position;
    bool m_pairIsEmpty;
};

} // namespace vx::util::detail
