#pragma once

#include "vx/String.h"
#include "vx/detail/RawArray.h"
#include "vx/detail/TextRange.h"

#include <algorithm>
#include <charconv>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

namespace vx::detail {

/// A constant text in ASCII of at most 16 units, which is appended by a copy of all 16: that takes no call and no branch.
struct Label {
    static constexpr std::size_t SIZE = 16;

    template <std::size_t SIZE_WITH_ZERO>
    constexpr Label(const char16_t (&text)[SIZE_WITH_ZERO]) noexcept
        : length(SIZE_WITH_ZERO - 1)
    {
        static_assert(SIZE_WITH_ZERO - 1 <= SIZE);
        std::copy_n(text, length, units);
        std::transform(text, text + length, bytes, [](char16_t unit) { return static_cast<signed char>(unit); });
    }

    char16_t units[SIZE] {};
    signed char bytes[SIZE] {};
    std::int32_t length;
};

/// A text that is written piece by piece. It allocates memory only if it is too long for the room in `ShortTextBuilder`.
/// A text longer than any String throws std::bad_alloc.
class TextBuilder {
public:
    TextBuilder(const TextBuilder&) = delete;
    TextBuilder& operator=(const TextBuilder&) = delete;

    char16_t* data() noexcept { return m_data; }
    std::int32_t length() const noexcept { return static_cast<std::int32_t>(m_length); }
    std::u16string_view view() const noexcept { return {m_data, static_cast<std::size_t>(m_length)}; }
    String toString() const { return String(m_data, length()); }

    void append(std::u16string_view text) { text.copy(extend(static_cast<std::int64_t>(text.size())), text.size()); }
    void append(char16_t unit) { *extend(1) = unit; }
    inline void appendLabel(const Label& label);

    /// Appends decimal digits.
    template <std::integral Number>
    void appendNumber(Number number);

    /// Makes the text `more` units longer, and returns the place of the new units.
    char16_t* extend(std::int64_t more)
    {
        if (more > m_capacity - m_length)
            grow(m_length + more);
        return m_data + std::exchange(m_length, m_length + more);
    }

protected:
    TextBuilder(char16_t* storage, std::int64_t capacity) noexcept
        : m_data(storage)
        , m_capacity(capacity)
    {
    }
    ~TextBuilder() = default;

private:
    void grow(std::int64_t needed);

    char16_t* m_data;
    std::int64_t m_length = 0;
    std::int64_t m_capacity;
    RawArray<char16_t> m_long;
};

inline void TextBuilder::appendLabel(const Label& label)
{
    std::copy_n(label.units, Label::SIZE, extend(Label::SIZE));
    m_length -= static_cast<std::int64_t>(Label::SIZE) - label.length;
}

template <std::integral Number>
void TextBuilder::appendNumber(Number number)
{
    char digits[24];
    const char* const end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    std::copy(static_cast<const char*>(digits), end, extend(end - digits));
}

inline void TextBuilder::grow(std::int64_t needed)
{
    if (needed > LONGEST_TEXT)
        throwBadAllocation();
    const std::int64_t capacity = std::max(needed, 2 * m_capacity);
    RawArray<char16_t> larger = makeRawArray<char16_t>(capacity);
    std::copy_n(m_data, m_length, larger.get());
    m_long = std::move(larger);
    m_data = m_long.get();
    m_capacity = capacity;
}

/// A builder with room for `UNITS` units inside the object.
template <std::size_t UNITS = 1024>
class ShortTextBuilder final : public TextBuilder {
public:
    ShortTextBuilder() noexcept
        : TextBuilder(m_short, UNITS)
    {
    }

private:
    char16_t m_short[UNITS];
};

/// The text that `write(TextBuilder&)` writes.
template <class Write>
String builtText(Write write)
{
    ShortTextBuilder<> text;
    write(text);
    return text.toString();
}

} // namespace vx::detail
