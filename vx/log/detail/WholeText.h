#pragma once

#include "vx/detail/TextBuilder.h"

#include <cstdint>
#include <string_view>

namespace vx::log::detail {

/// Whether there is a unit from U+8000 up, as every half of a surrogate pair is.
bool hasHighUnits(std::u16string_view text) noexcept;

/// Replaces each lone half of a surrogate pair from `start` on by U+FFFD, because it must not keep its entry out of the
/// log.
void replaceHalves(vx::detail::TextBuilder& text, std::int32_t start) noexcept;

/// Appends `part` with lone halves of surrogate pairs replaced. It checks `part` and not the text, since units that
/// were just written are slow to read.
void appendWhole(vx::detail::TextBuilder& text, std::u16string_view part);

} // namespace vx::log::detail
