#pragma once

#include "vx/detail/TextBuilder.h"

#include <cstdint>
#include <string_view>

namespace vx::log::detail {

/// Whether there is a unit from U+8000 up, which half of a surrogate pair is.
bool hasHighUnits(std::u16string_view text) noexcept;

/// Puts U+FFFD in the place of each half of a surrogate pair from `start` on: one of them must not keep its entry out of the
/// log.
void replaceHalves(vx::detail::TextBuilder& text, std::int32_t start) noexcept;

/// Appends `part` without halves of surrogate pairs. It reads `part` and not the text: units that were written a moment ago
/// are slow to read.
void appendWhole(vx::detail::TextBuilder& text, std::u16string_view part);

} // namespace vx::log::detail
