#pragma once

#include "vx/String.h"
#include "vx/detail/RawArray.h"

#include <charconv>
#include <cstdint>
#include <string_view>

namespace vx::log::detail {

/// The text of an entry while it is made, without storage of its own as long as it is short.
class EntryText {
public:
    EntryText() noexcept = default;
    EntryText(const EntryText&) = delete;
    EntryText& operator=(const EntryText&) = delete;

    const char16_t* data() const noexcept { return m_data; }
    char16_t* data() noexcept { return m_data; }
    std::int32_t length() const noexcept { return static_cast<std::int32_t>(m_length); }
    String toString() const { return String(m_data, length()); }

    void append(std::u16string_view text) { text.copy(extend(static_cast<std::int64_t>(text.size())), text.size()); }
    void append(char16_t unit) { *extend(1) = unit; }

    /// In decimal digits.
    template <class Number>
    void appendNumber(Number number)
    {
        char digits[24];
        const std::int64_t count = std::to_chars(digits, digits + sizeof digits, number).ptr - digits;
        char16_t* const place = extend(count);
        for (std::int64_t index = 0; index < count; ++index)
            place[index] = static_cast<char16_t>(digits[index]);
    }

private:
    static constexpr std::int64_t SHORT = 1024;

    /// Counts `more` units in and gives their place.
    char16_t* extend(std::int64_t more)
    {
        if (more > m_capacity - m_length)
            grow(m_length + more);
        char16_t* const place = m_data + m_length;
        m_length += more;
        return place;
    }
    /// A text that is no String's any more throws std::bad_alloc.
    void grow(std::int64_t needed);

    char16_t m_short[SHORT];
    vx::detail::RawArray<char16_t> m_long;
    char16_t* m_data = m_short;
    std::int64_t m_length = 0;
    std::int64_t m_capacity = SHORT;
};

} // namespace vx::log::detail
