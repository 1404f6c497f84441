#include "vx/log/detail/WholeText.h"

#include "vx/text/charset/detail/Block.h"
#include "vx/text/charset/detail/Unicode.h"
#include "vxsys/Surrogate.h"

#include <algorithm>
#include <cstddef>

namespace vx::log::detail {

using text::charset::detail::REPLACEMENT;
using vx::detail::TextBuilder;
using vxsys::isLoneSurrogate;
using vxsys::isSurrogate;

namespace {

#if VX_VECTOR_PATHS

using text::charset::detail::either;
using text::charset::detail::lanes8;
using text::charset::detail::loadBlock;
using text::charset::detail::storeBlock;

constexpr std::size_t BLOCK_UNITS = text::charset::detail::BLOCK / sizeof(char16_t);

/// Calls `take(block, index)` with all blocks of a text that is no shorter than one. The last may overlap the one before.
/// Returns whether there is a high unit, of which most texts have none.
template <class Take>
bool takeBlocks(std::u16string_view text, Take take) noexcept
{
    __m128i all = _mm_setzero_si128();
    const auto next = [&](std::size_t index) {
        const __m128i block = loadBlock(text.data() + index);
        take(block, index);
        all = either(all, block);
    };
    const std::size_t last = text.size() - BLOCK_UNITS;
    for (std::size_t index = 0; index < last; index += BLOCK_UNITS)
        next(index);
    next(last);
    return (lanes8(all) & 0xAAAA) != 0;
}

#endif

/// Returns whether there is a high unit.
bool copyUnits(std::u16string_view text, char16_t* copy) noexcept
{
#if VX_VECTOR_PATHS
    if (text.size() >= BLOCK_UNITS)
        return takeBlocks(text, [copy](__m128i block, std::size_t index) { storeBlock(copy + index, block); });
#endif
    unsigned all = 0;
    for (const char16_t unit : text) {
        *copy++ = unit;
        all |= unit;
    }
    return all >= 0x8000;
}

} // namespace

bool hasHighUnits(std::u16string_view text) noexcept
{
#if VX_VECTOR_PATHS
    if (text.size() >= BLOCK_UNITS)
        return takeBlocks(text, [](__m128i, std::size_t) {});
#endif
    return std::ranges::any_of(text, [](char16_t unit) { return unit >= 0x8000; });
}

void replaceHalves(TextBuilder& text, std::int32_t start) noexcept
{
    char16_t* const units = text.data();
    for (std::int32_t index = start; index < text.length(); ++index) {
        if (isSurrogate(units[index]) && isLoneSurrogate(text.view(), static_cast<std::size_t>(index)))
            units[index] = REPLACEMENT;
    }
}

void appendWhole(TextBuilder& text, std::u16string_view part)
{
    const std::int32_t start = text.length();
    if (copyUnits(part, text.extend(static_cast<std::int64_t>(part.size()))))
        replaceHalves(text, start);
}

} // namespace vx::log::detail
