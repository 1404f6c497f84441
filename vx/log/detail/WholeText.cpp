#include "vx/log/detail/WholeText.h"

#include "vx/text/charset/detail/Unicode.h"
#include "vxsys/Surrogate.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>

namespace vx::log::detail {

using text::charset::detail::REPLACEMENT;
using vx::detail::TextBuilder;
using vxsys::isLoneSurrogate;
using vxsys::isSurrogate;

bool hasHighUnits(std::u16string_view text) noexcept
{
    constexpr std::uint64_t HIGH = 0x8000'8000'8000'8000;
    using Block = std::array<std::uint64_t, 4>;
    constexpr std::size_t BLOCK_UNITS = sizeof(Block) / sizeof(char16_t);
    Block all {}; // sixteen units in one step: most entries have no high ones
    const auto add = [&](const char16_t* units) {
        Block block;
        std::memcpy(block.data(), units, sizeof block);
        for (std::size_t word = 0; word < block.size(); ++word)
            all[word] |= block[word];
    };
    std::size_t index = 0;
    for (; text.size() - index >= BLOCK_UNITS; index += BLOCK_UNITS)
        add(text.data() + index);
    if (text.size() >= BLOCK_UNITS)
        add(text.data() + text.size() - BLOCK_UNITS); // checks some units twice
    else
        all[0] |= std::any_of(text.begin(), text.end(), [](char16_t unit) { return unit >= 0x8000; }) ? HIGH : 0;
    return ((all[0] | all[1] | all[2] | all[3]) & HIGH) != 0;
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
    text.append(part);
    if (hasHighUnits(part))
        replaceHalves(text, start);
}

} // namespace vx::log::detail
