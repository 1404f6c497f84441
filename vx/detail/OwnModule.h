#pragma once

namespace vx::detail {

/// What names this library to the platform layer, as long as it is loaded: an address inside it. Null in a static build:
/// the library is the program then.
const void* getOwnModule() noexcept;
void setOwnModule(const void* module) noexcept;

} // namespace vx::detail
