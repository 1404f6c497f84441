#pragma once

namespace vx::startup::detail {

/// Registers with the hash maps the classes whose `compareTo` orders all their objects. Keys of these classes are found
/// quickly even if an attacker has chosen them so that they share one hash.
void registerKeyClasses() noexcept;

} // namespace vx::startup::detail
