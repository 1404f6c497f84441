#pragma once

#include <cstdint>
#include <exception>
#include <functional>

namespace vx::log {

class ILogEntry;

/// What happens to an entry if the queue has no room for it.
enum class WhenFull {
    WAIT, ///< the caller waits for room
    DROP_NEWEST, ///< the entry is dropped
    DROP_OLDEST ///< the entries that have waited longest are dropped to make room
};

/// How an `AsyncProcessor` works: the size of its queue, and what it does with entries that it cannot keep or that its
/// target refuses.
///
/// The functions are called on several threads, at the same time if there are several. They may log, and read the
/// counts. An exception of `onFailure` or `onDrop` is ignored.
struct AsyncOptions {
    /// The number of worker threads. With 0, entries wait for the destructor.
    int threads = 1;

    /// Limits for the number of waiting entries, and for their bytes together. 0 means no limit. The bytes of an entry
    /// are estimated from the lengths of its names and texts. An empty queue has room for any entry.
    std::int64_t mostEntries = 0;
    std::int64_t mostBytes = 0;
    /// If the queue is full, an entry that the target itself logs while it processes another one is dropped: the target
    /// would wait for itself.
    WhenFull whenFull = WhenFull::WAIT;
    /// Replaces `whenFull`: called with each entry that finds no room, on the thread of the caller of `process`. Its
    /// exception reaches that caller, and the entry is dropped.
    std::function<WhenFull(const ILogEntry&)> onFull {};
    /// Called with the first entry that is dropped, and again only after the queue has been empty in between.
    std::function<void(const ILogEntry&)> onDrop {};

    /// How often an entry is passed to a target that throws, at least once.
    int tries = 1;
    /// Milliseconds before the second try. Each further pause is twice as long, up to `longestPause`. The destructor of
    /// the `AsyncProcessor` ends a pause, and the next try is the last one.
    std::uint32_t firstPause = 100;
    std::uint32_t longestPause = 10'000;
    /// Called with each entry for which the last try failed, and with the exception of that try. Without this function,
    /// the destructor of the `AsyncProcessor` throws the first failure of the entries that were still waiting.
    std::function<void(const ILogEntry&, const std::exception_ptr&)> onFailure {};
};

/// Counts the entries of an `AsyncProcessor`. If no entry waits or is being processed, `received` is the sum of
/// `processed`, `failed` and `dropped`.
struct AsyncCounts {
    std::int64_t received = 0; ///< calls of `process`
    std::int64_t queued = 0; ///< entries that wait now
    std::int64_t processed = 0; ///< by the target without an exception
    std::int64_t failed = 0; ///< the last try failed
    std::int64_t dropped = 0; ///< because there was no room
    std::int64_t deepest = 0; ///< the largest number that waited at one time
};

} // namespace vx::log
