#pragma once

namespace vx::startup::detail {

/// Tells the hash maps which classes have a `compareTo` that orders all their objects. Keys of these classes are found
/// quickly also where an attacker has chosen them so that they share one hash.
void registerKeyClasses() noexcept;

} // namespace vx::startup::detail
