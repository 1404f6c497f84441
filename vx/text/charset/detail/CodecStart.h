#pragma once

namespace vx::text::charset::detail {

/// What the start of the library does for encodings, once its classes are registered, and its stop before they go.
void registerCodecs();
void buildEncInfo();
void freeEncInfo() noexcept;
void freeCodecs();

} // namespace vx::text::charset::detail
