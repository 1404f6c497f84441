#pragma once

#include <concepts>
#include <cstddef>
#include <string_view>
#include <utility>

namespace vx::detail {

// The check of a pattern calls these, which is an error in a constant expression. Compilers show their names.
void aNumberInThePatternHasNoArgument();
void aNumberIsMissingInThePattern();
void aPlaceholderIsANumberInBracesWithoutOptions();

/// The pattern of `String::formatted` with `count` arguments. The compiler checks a literal:
/// - Each number in braces has an argument, and the numbers have no gap; otherwise the placeholder would stay in the text.
/// - A brace before a digit begins a placeholder. So does one before "}" or ":", as in other libraries, if the pattern does
///   not use any of the arguments.
/// Any other text in braces is plain text.
template <std::size_t count>
class FormatPattern {
public:
    constexpr FormatPattern() noexcept = default;
    constexpr FormatPattern(const char16_t* text, std::size_t length) noexcept
        : m_text(text)
        , m_length(length)
    {
    }
    /// A literal. A named array must be static, or be passed as a view.
    template <std::size_t size>
    consteval FormatPattern(const char16_t (&text)[size])
        : m_text(text)
    {
        if (!__builtin_constant_p(text[0])) // an array that is not constexpr
            return;
        m_length = std::u16string_view(text).size();
        if constexpr (count > 0) // otherwise it is plain text
            check({text, m_length});
    }
    template <std::convertible_to<std::u16string_view> Text>
    constexpr FormatPattern(Text&& text) // NOLINT(bugprone-forwarding-reference-overload): not for a FormatPattern
        : FormatPattern(std::u16string_view(std::forward<Text>(text)))
    {
    }
    constexpr FormatPattern(std::u16string_view text) noexcept
        : FormatPattern(text.data(), text.size())
    {
    }

    constexpr std::u16string_view view() const noexcept
    {
        return m_length != ZERO_TERMINATED ? std::u16string_view(m_text, m_length) : std::u16string_view(m_text);
    }

private:
    static consteval bool isDigit(char16_t unit) { return unit >= u'0' && unit <= u'9'; }

    static consteval void check(std::u16string_view text)
    {
        bool isUsed[count] = {};
        std::size_t beyond = 0; // one more than the largest number
        bool isForeign = false;
        for (std::size_t place = text.find(u'{'); place != text.npos; place = text.find(u'{', place + 1)) {
            const char16_t next = place + 1 < text.size() ? text[place + 1] : u'\0';
            isForeign = isForeign || next == u'}' || next == u':';
            if (!isDigit(next))
                continue;
            std::size_t number = 0;
            std::size_t end = place + 1;
            for (; end < text.size() && isDigit(text[end]); ++end) {
                number = number * 10 + (text[end] - u'0');
                if (number >= count)
                    aNumberInThePatternHasNoArgument();
            }
            if (end == text.size() || text[end] != u'}' || (next == u'0' && end > place + 2))
                aPlaceholderIsANumberInBracesWithoutOptions();
            isUsed[number] = true;
            beyond = number + 1 > beyond ? number + 1 : beyond;
        }
        for (std::size_t number = 0; number < beyond; ++number) {
            if (!isUsed[number])
                aNumberIsMissingInThePattern();
        }
        if (isForeign && beyond == 0)
            aPlaceholderIsANumberInBracesWithoutOptions();
    }

    static constexpr std::size_t ZERO_TERMINATED = std::u16string_view::npos;

    const char16_t* m_text = u"";
    std::size_t m_length = ZERO_TERMINATED;
};

} // namespace vx::detail
