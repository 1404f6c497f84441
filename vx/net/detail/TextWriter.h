#pragma once

#include "vx/detail/StringLocks.h"
#include "vx/detail/TextRange.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

namespace vx::net::detail {

/// Writes a new text with `write(TextWriter&)`.
class TextWriter {
public:
    /// A text of more than `room` units needs another allocation.
    template <class Write>
    static String write(std::size_t room, Write write)
    {
        String text(vx::detail::withTerminator(static_cast<std::int64_t>(room)));
        {
            TextWriter target(text, room);
            write(target);
        }
        return text;
    }

    TextWriter(const TextWriter&) = delete;
    TextWriter& operator=(const TextWriter&) = delete;

    void append(std::u16string_view piece) { std::copy(piece.begin(), piece.end(), extend(piece.size())); }
    void append(char16_t unit) { *extend(1) = unit; }

private:
    TextWriter(String& text, std::size_t room)
        : m_text(text)
        , m_room(room)
    {
    }
    ~TextWriter() { m_text.setLength(static_cast<int>(m_length)); }

    char16_t* extend(std::size_t more)
    {
        const std::size_t length = m_length + more;
        if (length > m_room)
            grow(length);
        return m_text.data() + std::exchange(m_length, length);
    }

    void grow(std::size_t length)
    {
        const auto longest = static_cast<std::size_t>(vx::detail::LONGEST_TEXT);
        if (length > longest)
            throwBadAllocation();
        m_room = std::min(std::max(length, 2 * m_room), longest);
        m_text.ensureCapacity(static_cast<int>(m_room));
    }

    vx::detail::StringWriteLock m_text;
    std::size_t m_length = 0;
    std::size_t m_room;
};

} // namespace vx::net::detail
