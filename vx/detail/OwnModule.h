#pragma once

namespace vx::detail {

/// An address inside this library, by which the platform layer identifies it. Null in a static build, where the library
/// is part of the program.
const void* getOwnModule() noexcept;
void setOwnModule(const void* module) noexcept;

} // namespace vx::detail
