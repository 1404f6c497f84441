#pragma once

#include "vxsys/Named.h"
#include "vxsys/ThreadAnnotations.h"
#include "vxsys/detail/Deadline.h"
#include "vxsys/linux/ProcessIdentity.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <pthread.h>

namespace vxsys::detail {

/// A place for a process that has a named object open. It may be free.
struct Opener {
    std::atomic<std::uint32_t> process; ///< 0: free. It is written last
    std::atomic<std::uint32_t> held; ///< units of the semaphore that it took and did not post
    std::uint32_t waiting; ///< its threads that wait
    std::uint32_t unused;
    std::uint64_t started;
    std::uint64_t stack;

    ProcessIdentity identity() const noexcept { return {process.load(std::memory_order_relaxed), started, stack}; }
    bool isFree() const noexcept { return process.load(std::memory_order_relaxed) == 0; }
};

/// The shared state of the processes that have a named object open: these processes, and the semaphore.
///
/// The mutex can still be used after a process was killed while it held it. A process may be killed between any two
/// stores. So each change is one store to a field that cannot be computed from others: `total`, or `process` or `held`
/// of an opener. The counts `value` and `waiters` only save time. They are computed again after a holder was killed.
class VX_CAPABILITY("mutex") SharedPage {
public:
    static constexpr std::uint32_t CAPACITY = 8000;

    /// Initialises a page that consists of zeros, or whose initialisation was interrupted. Returns a native error or 0.
    int make(std::uint32_t places) noexcept VX_NO_THREAD_SAFETY_ANALYSIS; // no other process uses it yet
    /// Whether the initialisation was completed.
    bool isMade() const noexcept { return m_layout.load(std::memory_order_acquire) != 0; }
    /// Whether the page was made by a library with the same layout.
    bool isOurs() const noexcept { return m_layout.load(std::memory_order_acquire) == LAYOUT; }

    void lock() noexcept VX_ACQUIRE() VX_NO_THREAD_SAFETY_ANALYSIS;
    void unlock() noexcept VX_RELEASE() VX_NO_THREAD_SAFETY_ANALYSIS { ::pthread_mutex_unlock(&m_mutex); }

    /// Sets the state for the first opener; `value` is the count of the semaphore. A note stays.
    void start(std::uint32_t value, std::uint64_t size) noexcept VX_REQUIRES(this);
    /// Whether a running process has it open. Frees the places of ended processes, up to the first one that runs.
    bool hasOpener(const ProcessIdentity& observer) noexcept VX_REQUIRES(this);
    /// Frees the places of all ended processes.
    void dropEnded(const ProcessIdentity& observer) noexcept VX_REQUIRES(this);
    /// A place for `process`; null when all are taken.
    Opener* enter(const ProcessIdentity& process) noexcept VX_REQUIRES(this);
    /// Frees the opener's place and what it holds.
    void leave(Opener& opener) noexcept VX_REQUIRES(this);

    std::uint32_t places() const noexcept { return m_places; }
    void setPlaces(std::uint32_t places) noexcept VX_REQUIRES(this) { m_places = places; }
    std::uint64_t size() const noexcept VX_REQUIRES(this) { return m_size; }

    /// Whether the name of the file is removed, or will be removed at once. A later opener creates another file.
    bool isRemoved() const noexcept VX_REQUIRES(this) { return m_isRemoved; }
    void setRemoved() noexcept VX_REQUIRES(this) { m_isRemoved = true; }

    /// Takes one unit. If there is none, waits for one, and returns ETIMEDOUT at the deadline. Releases the lock while it
    /// waits.
    int take(Opener& opener, const Deadline& deadline, const ProcessIdentity& observer) noexcept VX_REQUIRES(this);
    int post(Opener& opener) noexcept VX_REQUIRES(this);
    std::int32_t value(const ProcessIdentity& observer) noexcept VX_REQUIRES(this);

    void setNote(const VXNamedSemNote& note) noexcept VX_REQUIRES(this);
    void getNote(VXNamedSemNote& note) const noexcept VX_REQUIRES(this);
    bool hasNote() const noexcept VX_REQUIRES(this) { return m_note.length != 0; }

    /// The size in bytes of a page with `places` for openers.
    static constexpr std::size_t sizeFor(std::uint32_t places) noexcept
    {
        return sizeof(SharedPage) - (CAPACITY - places) * sizeof(Opener);
    }

private:
    /// Differs if the order of the fields or the size of the system's mutex differs.
    static constexpr std::uint32_t LAYOUT = 0x76780200 + sizeof(pthread_mutex_t);

    void recount() noexcept VX_REQUIRES(this);
    /// Whether a running process has this place. Frees the place of an ended process.
    bool isAlive(Opener& opener, const ProcessIdentity& observer) noexcept VX_REQUIRES(this);
    /// Frees the places of ended processes that held or waited. Limited to one check in SHORTEST_BETWEEN_LOOKS.
    void takeBack(const ProcessIdentity& observer) noexcept VX_REQUIRES(this);
    /// May return early.
    void waitForPost(const Deadline& deadline) noexcept VX_REQUIRES(this);
    void wake(int count) noexcept;

    std::atomic<std::uint32_t> m_layout;
    std::uint32_t m_places; ///< written under the lock, but also read without it
    pthread_mutex_t m_mutex;
    bool m_isRemoved VX_GUARDED_BY(this);
    std::uint32_t m_waiters VX_GUARDED_BY(this);
    std::atomic<std::uint32_t> m_wakeUps;
    std::int32_t m_value VX_GUARDED_BY(this);
    std::atomic<std::int64_t> m_total;
    std::int64_t m_lastLook VX_GUARDED_BY(this); ///< milliseconds on the monotonic clock, which all processes share
    std::uint64_t m_size VX_GUARDED_BY(this);
    VXNamedSemNote m_note VX_GUARDED_BY(this);
    Opener m_openers[CAPACITY] VX_GUARDED_BY(this);
};

/// Holds the lock of a page to the end of the block.
class [[nodiscard]] VX_SCOPED_CAPABILITY PageLock {
public:
    explicit PageLock(SharedPage& page) noexcept VX_ACQUIRE(page)
        : m_page(page)
    {
        m_page.lock();
    }
    ~PageLock() VX_RELEASE() { m_page.unlock(); }
    PageLock(const PageLock&) = delete;
    PageLock& operator=(const PageLock&) = delete;

private:
    SharedPage& m_page;
};

} // namespace vxsys::detail
