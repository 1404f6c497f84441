#pragma once

#include "Batch.h"

#include <vx/NumberBoxes.h>
#include <vx/Reference.h>
#include <vx/String.h>
#include <vx/log/ZonedTimeStamp.h>

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <span>
#include <string>
#include <vector>

namespace vxlogd {

/// Keeps the last entries of the log in memory for those who watch the running server, and counts entries by minute and
/// level. The thread that writes the log never waits for a watcher: one that is too slow misses entries, and is told
/// how many. Thread-safe.
class Tail {
public:
    /// What the tail keeps of an entry: the values are shared with it.
    struct Line {
        vx::Reference<const vx::Integer64> sequence;
        vx::Reference<const vx::log::ZonedTimeStamp> time;
        vx::Reference<const vx::String> peer;
        vx::Reference<const vx::Integer32> level;
        vx::Reference<const vx::String> text;
    };
    struct Portion {
        std::vector<Line> lines;
        std::uint64_t next = 0; ///< from where to read the next portion
        std::uint64_t missed = 0; ///< entries before the first line that are no longer kept
    };
    struct Minute {
        std::int64_t start = 0; ///< in minutes since 1970
        std::map<std::int32_t, std::uint64_t> counts {}; ///< by level
    };
    static constexpr std::int32_t OTHER_LEVELS = INT32_MIN; ///< the key of those beyond the first few of a minute
    static constexpr std::size_t MINUTES = 60;

    /// While there is one, entries are kept.
    class Watch {
    public:
        explicit Watch(Tail& tail)
            : m_tail(tail)
        {
            ++m_tail.m_watches;
        }
        ~Watch();
        Watch(const Watch&) = delete;
        Watch& operator=(const Watch&) = delete;

    private:
        Tail& m_tail;
    };

    /// Takes lines that were written together. Does nothing without a watcher.
    void add(std::span<const Batch::Span> written) noexcept;
    /// The number of the oldest entry that is kept.
    std::uint64_t begin() const;
    /// Up to `most` entries from the number `from` on, the oldest first. A number that no entry has yet, of a server
    /// that was restarted, means all. Waits up to `patience` for the first, and ends the wait at `close`.
    Portion read(std::uint64_t from, std::size_t most, std::chrono::milliseconds patience) const;
    /// The counts of the last hour, the oldest first. A minute without entries is left out.
    std::vector<Minute> getMinutes() const;
    /// From now on no call waits.
    void close();
    bool isClosed() const { return m_isClosed; }

private:
    using Counts = std::map<std::int32_t, std::uint64_t>; ///< by level

    static void count(Counts& counts, std::int32_t level, std::uint64_t count);
    void append(std::vector<Line> lines, std::uint64_t leftOut, const Counts& counts);
    void clear();

    std::atomic<int> m_watches = 0;
    std::atomic<bool> m_isClosed = false;
    mutable std::mutex m_lock;
    mutable std::condition_variable m_changed;
    std::deque<Line> m_lines;
    std::size_t m_bytes = 0; ///< their memory
    std::uint64_t m_end = 0;
    std::deque<Minute> m_minutes;
};

/// The entry as an object of JSON in ASCII. A text above `mostText` characters is cut; "cut" says by how many.
std::string toJson(const Tail::Line& line, std::size_t mostText);
/// A string of JSON in ASCII, with its quotes.
std::string quoted(std::u16string_view text);

} // namespace vxlogd
