#pragma once

#include <cstdint>

namespace vxsys::detail {

/// Identifies a running process. The system gives its number to a later process, and a program that it starts by `exec`
/// knows nothing of what was open before. So the number alone is not enough.
struct ProcessIdentity {
    std::uint32_t id = 0;
    /// When it was started, in clock ticks since the start of the system; 0 if unknown.
    std::uint64_t started = 0;
    /// The address of its stack, which the system chooses anew for each program; 0 if unknown.
    std::uint64_t stack = 0;

    static ProcessIdentity ofCaller() noexcept;

    /// Whether it still runs, as far as `observer` (the calling process) can see. True if that is unknown.
    bool isAlive(const ProcessIdentity& observer) const noexcept;

    friend bool operator==(const ProcessIdentity&, const ProcessIdentity&) noexcept = default;
};

/// A number for the caller's namespace of process numbers; 0 if unknown.
std::uint64_t processNamespace() noexcept;

} // namespace vxsys::detail
