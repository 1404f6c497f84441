#pragma once

namespace vx::text::charset::detail {

/// Called when the library starts, after its classes are registered, and when it stops, before they are removed.
void registerCodecs();
void buildEncInfo();
void freeEncInfo() noexcept;
void freeCodecs();
/// The names of the library have their own codecs. Once registered, a name keeps its codec until all are removed.
bool areCodecsRegistered() noexcept;

} // namespace vx::text::charset::detail
