#pragma once

namespace vx::text::charset::detail {

/// Called when the library starts, after its classes are registered, and when it stops, before they are removed.
void registerCodecs();
void buildEncInfo();
void freeEncInfo() noexcept;
void freeCodecs();

} // namespace vx::text::charset::detail
