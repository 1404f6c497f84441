#pragma once

#include <cstdint>

namespace vxsys::detail {

/// A process as it runs now. Its number alone may be another's tomorrow, and a program that it becomes by `exec` knows
/// nothing of what it had open.
struct ProcessIdentity {
    std::uint32_t id = 0;
    /// Clock ticks from the system's start to its own; 0 if unknown.
    std::uint64_t started = 0;
    /// Where its stack begins, which the system picks anew for each program; 0 if unknown.
    std::uint64_t stack = 0;

    static ProcessIdentity ofCaller() noexcept;

    /// Whether it still runs, as far as `observer`, the caller, can see. In doubt it does.
    bool isAlive(const ProcessIdentity& observer) const noexcept;

    friend bool operator==(const ProcessIdentity&, const ProcessIdentity&) noexcept = default;
};

/// A number for the caller's namespace of process numbers; 0 if unknown.
std::uint64_t processNamespace() noexcept;

} // namespace vxsys::detail
