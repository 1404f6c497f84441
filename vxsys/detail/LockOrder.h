#pragma once

#include "vxsys/Lock.h"
#include "vxsys/Result.h"

#include <atomic>
#include <cstdint>

namespace vxsys::detail {

/// Checks the order in which threads acquire locks (`VXLockOrderStart`). Each acquisition without a time limit adds
/// steps to a graph: from each lock that the thread holds to the one that it is about to acquire. A cycle of steps by
/// several threads can become a deadlock. Nothing is checked if memory is exhausted.
class LockOrder {
public:
    /// One load while the checks are off.
    static bool isChecked() noexcept
    {
        const State state = s_state.load(std::memory_order_relaxed);
        return state != State::OFF && (state == State::ON || readEnvironment());
    }

    static void start(VXLockOrderReport report, void* context) noexcept;
    static void stop() noexcept;

    /// The calling thread is about to wait for the lock without a limit.
    static void waits(VXHandle lock) noexcept;
    static void acquired(VXHandle lock, std::uint32_t depth) noexcept;
    enum class Release {
        ONCE,
        ALL, ///< however often the thread holds it
        BY_ANY_THREAD, ///< once; if another thread holds the lock, it is a signal, and is no longer checked
    };
    static void releases(VXHandle lock, Release kind) noexcept;
    static void destroyed(VXHandle lock) noexcept;

private:
    enum class State : std::uint8_t { UNKNOWN, OFF, ON };
    class Checker;

    static bool readEnvironment() noexcept;

    static constinit std::atomic<State> s_state;
};

/// Runs `acquire` on the lock. `milliseconds` is the limit of its wait, 0 for a try. `depth` is how often it acquires.
template <class Acquire>
std::int32_t acquireInOrder(
    VXHandle lock, std::uint32_t milliseconds, Acquire acquire, std::uint32_t depth = 1) noexcept
{
    const bool isChecked = LockOrder::isChecked();
    if (isChecked && milliseconds == VX_WAIT_FOREVER) [[unlikely]] // any other wait ends by itself
        LockOrder::waits(lock);
    const std::int32_t result = acquire();
    if (isChecked && result == results::RESULT_OK) [[unlikely]]
        LockOrder::acquired(lock, depth);
    return result;
}

/// To be called before the release: after it, another thread may destroy the lock.
inline void noteRelease(VXHandle lock, LockOrder::Release kind) noexcept
{
    if (LockOrder::isChecked()) [[unlikely]]
        LockOrder::releases(lock, kind);
}

} // namespace vxsys::detail
