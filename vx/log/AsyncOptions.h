#pragma once

#include <cstdint>
#include <exception>
#include <functional>

namespace vx::log {

class ILogEntry;

/// What happens to an entry for which a queue has no room.
enum class WhenFull {
    WAIT, ///< the caller waits for room
    DROP_NEWEST, ///< the entry is dropped
    DROP_OLDEST ///< the entry takes the place of those that have waited longest
};

/// How an `AsyncProcessor` works: the size of its queue, and what it does with entries that it cannot keep or that its
/// target refuses.
///
/// The functions are called on several threads, at the same time if there are several. They may log, and read the
/// counts. An exception of `onFailure` or `onDrop` is ignored.
struct AsyncOptions {
    /// Worker threads. With 0, entries wait for the destructor.
    int threads = 1;

    /// The most entries that wait, and the most bytes in all of them. 0 is no limit. The bytes of an entry are an estimate
    /// from the lengths of its names and texts. An empty queue has room for any entry.
    std::int64_t mostEntries = 0;
    std::int64_t mostBytes = 0;
    /// What the target itself logs while it processes an entry never waits: it would wait for itself. It is dropped
    /// instead.
    WhenFull whenFull = WhenFull::WAIT;
    /// Replaces `whenFull`: called with each entry that finds no room, on the thread of the caller of `process`. Its
    /// exception reaches that caller, and the entry is dropped.
    std::function<WhenFull(const ILogEntry&)> onFull {};
    /// Called with the first entry that is dropped. Called again only after the queue has been empty in between.
    std::function<void(const ILogEntry&)> onDrop {};

    /// How often an entry is passed to a target that throws; at least 1.
    int tries = 1;
    /// Milliseconds before the second try. Each further pause is twice as long, up to `longestPause`. The destructor of
    /// the `AsyncProcessor` ends a pause, and the try that follows is the last.
    std::uint32_t firstPause = 100;
    std::uint32_t longestPause = 10'000;
    /// Called with each entry that the target refused to the end, and with its last exception. Without this function, the
    /// destructor of the `AsyncProcessor` throws the first failure of the entries that were still waiting.
    std::function<void(const ILogEntry&, const std::exception_ptr&)> onFailure {};
};

/// What has become of the entries of an `AsyncProcessor`. Once nothing waits and no worker holds an entry, `received` is the
/// sum of `processed`, `failed` and `dropped`.
struct AsyncCounts {
    std::int64_t received = 0; ///< by calls of `process`
    std::int64_t queued = 0; ///< that wait now
    std::int64_t processed = 0; ///< by the target, without an exception
    std::int64_t failed = 0; ///< which the target refused to the end
    std::int64_t dropped = 0; ///< because there was no room
    std::int64_t deepest = 0; ///< the most that have waited at one time
};

} // namespace vx::log
