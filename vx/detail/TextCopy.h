#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace vx::detail {

/// Sixteen bytes in a register.
struct CopyBlock {
    explicit CopyBlock(const unsigned char* from) noexcept { std::memcpy(bytes, from, sizeof bytes); }
    void store(unsigned char* to) const noexcept { std::memcpy(to, bytes, sizeof bytes); }

    std::uint64_t bytes[2];
};

/// Copies all `bytes` as a first and a last word, which may overlap. `bytes` is from one word up to two.
template <class Word>
void copyEnds(unsigned char* to, const unsigned char* from, std::size_t bytes) noexcept
{
    Word first = 0;
    Word last = 0;
    std::memcpy(&first, from, sizeof(Word));
    std::memcpy(&last, from + (bytes - sizeof(Word)), sizeof(Word));
    std::memcpy(to, &first, sizeof(Word));
    std::memcpy(to + (bytes - sizeof(Word)), &last, sizeof(Word));
}

/// The most units that `moveShort` takes.
inline constexpr int MOST_SHORT = 64;

/// `memmove` for at most MOST_SHORT units. It makes no call: all units are loaded before the first store. A function
/// without a call needs no stack frame, which matters for short texts.
inline void moveShort(char16_t* target, const char16_t* source, std::size_t count) noexcept
{
    constexpr std::size_t BLOCK = sizeof(CopyBlock);
    static_assert(MOST_SHORT * sizeof(char16_t) <= 8 * BLOCK);
    const std::size_t bytes = count * sizeof(char16_t);
    auto* const to = reinterpret_cast<unsigned char*>(target);
    const auto* const from = reinterpret_cast<const unsigned char*>(source);
    if (bytes >= BLOCK) [[likely]] {
        const CopyBlock first(from);
        const CopyBlock last(from + (bytes - BLOCK));
        if (bytes > 2 * BLOCK) {
            const CopyBlock second(from + BLOCK);
            const CopyBlock beforeLast(from + (bytes - 2 * BLOCK));
            if (bytes > 4 * BLOCK) {
                const CopyBlock third(from + 2 * BLOCK);
                const CopyBlock fourth(from + 3 * BLOCK);
                const CopyBlock fifth(from + (bytes - 4 * BLOCK));
                const CopyBlock sixth(from + (bytes - 3 * BLOCK));
                third.store(to + 2 * BLOCK);
                fourth.store(to + 3 * BLOCK);
                fifth.store(to + (bytes - 4 * BLOCK));
                sixth.store(to + (bytes - 3 * BLOCK));
            }
            second.store(to + BLOCK);
            beforeLast.store(to + (bytes - 2 * BLOCK));
        }
        first.store(to);
        last.store(to + (bytes - BLOCK));
    } else if (bytes >= sizeof(std::uint64_t)) {
        copyEnds<std::uint64_t>(to, from, bytes);
    } else if (bytes >= sizeof(std::uint32_t)) {
        copyEnds<std::uint32_t>(to, from, bytes);
    } else if (count == 1) {
        *target = *source;
    }
}

/// `memmove` for units.
inline void moveUnits(char16_t* target, const char16_t* source, std::size_t count) noexcept
{
    if (count > MOST_SHORT) [[unlikely]]
        std::memmove(target, source, count * sizeof(char16_t));
    else
        moveShort(target, source, count);
}

} // namespace vx::detail
