#pragma once

#include "vx/Object.h"
#include "vx/String.h"

#include <string_view>

namespace vx::util {

/// Splits a text into tokens at delimiters. Each delimiter may also be returned as a token. One thread at a time.
class VX_API StringTokenizer : public Object {
public:
    /// Null `delimiters` mean blank, carriage return, line feed, tab and form feed.
    explicit StringTokenizer(const String& text, const char16_t* delimiters = nullptr, bool returnDelimiters = false);
    ~StringTokenizer() noexcept override;

    bool hasMoreTokens();
    /// Non-null `delimiters` are used from this call on, and the token that `hasMoreTokens` found is searched again.
    /// Throws Exception "No such element" after the last token.
    String nextToken(const char16_t* delimiters = nullptr);
    /// The number of remaining tokens.
    int getTokenCount() const;

protected:
    /// Where the next token at or after `start` begins; beyond the length if there is none.
    int skipDelims(int start) const;
    /// Where the token that begins at `start` ends; beyond the length for the last one.
    int scanToken(int start) const;
    /// The same for the units of the text, which the caller has read once.
    int skipDelims(std::u16string_view text, int start) const;
    int scanToken(std::u16string_view text, int start) const;

private:
    static const STRUCT_VX_STR_LIT_INFO s_defaultDelims;

    /// The first place from `start` on with a delimiter, or without one if the first argument is false. The length of
    /// the text if there is none.
    int find(bool isDelimiter, std::u16string_view text, int start) const;

    String m_text;
    String m_delimiters;
    bool m_returnDelimiters;
    int m_position = 0;
    int m_peeked = -1;
};

} // namespace vx::util
