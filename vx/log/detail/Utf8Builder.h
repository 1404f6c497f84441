#pragma once

#include "vx/detail/TextBuilder.h"
#include "vx/log/detail/WholeText.h"
#include "vx/text/charset/detail/ByteRuns.h"
#include "vx/text/charset/detail/Utf8Text.h"

#include <charconv>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

namespace vx::log::detail {

/// The twin of TextBuilder for text that is to be UTF-8: it needs no UTF-16 between. Lone halves of surrogate pairs are
/// replaced. If the text does not fit into the room, what was written has no meaning.
class Utf8Builder {
public:
    explicit Utf8Builder(std::span<signed char> room) noexcept
        : m_start(room.data())
        , m_place(m_start)
        , m_end(m_start + room.size())
    {
    }

    bool fits() const noexcept { return m_fits; }
    std::int32_t bytes() const noexcept { return static_cast<std::int32_t>(m_place - m_start); }
    /// The length of the text in UTF-16.
    std::int32_t units() const noexcept { return bytes() - m_moreBytes; }

    void append(std::u16string_view text)
    {
        if (!hasRoom(text.size()))
            return;
        if (text::charset::detail::narrowIfAscii(text.data(), m_place, std::ssize(text)))
            m_place += text.size();
        else
            appendOther(text);
    }
    /// `unit` is ASCII.
    void append(char16_t unit)
    {
        if (hasRoom(1))
            *m_place++ = static_cast<signed char>(unit);
    }
    void appendLabel(const vx::detail::Label& label)
    {
        if (hasRoom(vx::detail::Label::SIZE)) {
            std::memcpy(m_place, label.bytes, vx::detail::Label::SIZE);
            m_place += label.length;
        }
    }
    template <std::integral Number>
    void appendNumber(Number number)
    {
        constexpr std::size_t MOST_DIGITS = 24;
        if (hasRoom(MOST_DIGITS)) {
            char* const start = reinterpret_cast<char*>(m_place);
            m_place += std::to_chars(start, start + MOST_DIGITS, number).ptr - start;
        }
    }

private:
    bool hasRoom(std::size_t bytes) noexcept
    {
        if (bytes <= static_cast<std::size_t>(m_end - m_place)) [[likely]]
            return true;
        m_end = m_place;
        m_fits = false;
        return false;
    }
    inline void appendOther(std::u16string_view text);

    signed char* const m_start;
    signed char* m_place;
    signed char* m_end;
    std::int32_t m_moreBytes = 0; ///< than units
    bool m_fits = true;
};

inline void appendWhole(Utf8Builder& text, std::u16string_view part)
{
    text.append(part);
}

inline void Utf8Builder::appendOther(std::u16string_view text)
{
    constexpr std::size_t MOST_EACH = 3;
    const std::size_t most = MOST_EACH * text.size();
    if (!hasRoom(most))
        return;
    vx::detail::ShortTextBuilder<> whole;
    appendWhole(whole, text);
    std::int32_t position = 0;
    std::int32_t written = 0;
    text::charset::detail::encodeUtf8(whole.view(), position, m_place, written, static_cast<std::int32_t>(most));
    m_place += written;
    m_moreBytes += written - whole.length();
}

} // namespace vx::log::detail
