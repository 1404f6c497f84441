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

/// `memmove` for units. Most texts are short and need no call: they are loaded as a whole before the first store.
inline void moveUnits(char16_t* target, const char16_t* source, std::size_t count) noexcept
{
    constexpr std::size_t BLOCK = sizeof(CopyBlock);
    const std::size_t bytes = count * sizeof(char16_t);
    auto* const to = reinterpret_cast<unsigned char*>(target);
    const auto* const from = reinterpret_cast<const unsigned char*>(source);
    if (bytes > 4 * BLOCK) {
        std::memmove(to, from, bytes);
    } else if (bytes >= BLOCK) {
        const CopyBlock first(from);
        const CopyBlock last(from + (bytes - BLOCK));
        if (bytes > 2 * BLOCK) {
            const CopyBlock second(from + BLOCK);
            const CopyBlock third(from + (bytes - 2 * BLOCK));
            second.store(to + BLOCK);
            third.store(to + (bytes - 2 * BLOCK));
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

} // namespace vx::detail
