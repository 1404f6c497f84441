#pragma once

#include "vxsys/Named.h"
#include "vxsys/linux/ProcessIdentity.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <pthread.h>

namespace vxsys::detail {

/// A process that has a named object open, or a free place for one.
struct Opener {
    std::atomic<std::uint32_t> process; ///< 0: free. Written last
    std::atomic<std::uint32_t> held; ///< what it took of the semaphore and did not post
    std::uint32_t waiting; ///< its threads that wait
    std::uint32_t unused;
    std::uint64_t started;
    std::uint64_t stack;

    ProcessIdentity identity() const noexcept { return {process.load(std::memory_order_relaxed), started, stack}; }
    bool isFree() const noexcept { return process.load(std::memory_order_relaxed) == 0; }
};

/// What the processes that have a named object open share: who they are, and the state of a semaphore.
///
/// Everything is read and written under the mutex, which outlives a holder that is killed. A process may be killed between
/// any two stores, so each change is one store to what cannot be computed: `total` or an opener's `process` or `held`. The
/// counts that make it quick, `value` and `waiters`, follow from these and are made anew after a death.
class SharedPage {
public:
    static constexpr std::uint32_t CAPACITY = 8000;

    /// Makes a page out of a file of zeros or of one whose making was cut short. Gives a native error.
    int make(std::uint32_t places) noexcept;
    /// Whether the making came to its end.
    bool isMade() const noexcept { return m_layout.load(std::memory_order_acquire) != 0; }
    /// Whether it was made by a library that sees the same here.
    bool isOurs() const noexcept { return m_layout.load(std::memory_order_acquire) == LAYOUT; }

    void lock() noexcept;
    void unlock() noexcept { ::pthread_mutex_unlock(&m_mutex); }

    // From here on all under the lock.

    /// The state that an opener finds who is alone: `value` free ones. A note stays.
    void start(std::uint32_t value, std::uint64_t size) noexcept;
    /// Whether a process that runs has it open. Frees the places of those that have gone, up to the first that has not.
    bool hasOpener(const ProcessIdentity& observer) noexcept;
    /// Frees the places of all that have gone.
    void dropTheGone(const ProcessIdentity& observer) noexcept;
    /// A place for `process`; null when all are taken.
    Opener* enter(const ProcessIdentity& process) noexcept;
    /// What the opener holds comes back.
    void leave(Opener& opener) noexcept;

    std::uint32_t places() const noexcept { return m_places; }
    void setPlaces(std::uint32_t places) noexcept { m_places = places; }
    std::uint64_t size() const noexcept { return m_size; }

    /// Whether the file has lost its name, or is about to: who comes from now on makes another one.
    bool isRemoved() const noexcept { return m_isRemoved; }
    void setRemoved() noexcept { m_isRemoved = true; }

    /// Takes one; waits for it if asked to, else gives ETIMEDOUT. Lets go of the lock while it waits.
    int take(Opener& opener, bool wait, const ProcessIdentity& observer) noexcept;
    int post(Opener& opener) noexcept;
    std::int32_t value(const ProcessIdentity& observer) noexcept;

    void setNote(const VXNamedSemNote& note) noexcept;
    void getNote(VXNamedSemNote& note) const noexcept;
    bool hasNote() const noexcept { return m_note.length != 0; }

    /// Bytes of a page with `places` for openers.
    static constexpr std::size_t sizeFor(std::uint32_t places) noexcept
    {
        return sizeof(SharedPage) - (CAPACITY - places) * sizeof(Opener);
    }

private:
    /// Another order of the fields, or another size of the system's mutex, is another layout.
    static constexpr std::uint32_t LAYOUT = 0x76780200 + sizeof(pthread_mutex_t);

    void recount() noexcept;
    /// Whether it is taken by a process that runs. Frees it where that has gone.
    bool isAlive(Opener& opener, const ProcessIdentity& observer) noexcept;
    /// Frees the places of processes that went while they held or waited. Not more often than need be.
    void takeBack(const ProcessIdentity& observer) noexcept;
    void waitForPost() noexcept;
    void wake(int count) noexcept;

    std::atomic<std::uint32_t> m_layout;
    std::uint32_t m_places;
    pthread_mutex_t m_mutex;
    bool m_isRemoved;
    std::uint32_t m_waiters;
    std::atomic<std::uint32_t> m_wakeUps;
    std::int32_t m_value;
    std::atomic<std::int64_t> m_total;
    std::int64_t m_lastLook; ///< milliseconds on the monotonic clock, which all processes share
    std::uint64_t m_size;
    VXNamedSemNote m_note;
    Opener m_openers[CAPACITY];
};

/// Holds a page to the end of the block.
class PageLock {
public:
    explicit PageLock(SharedPage& page) noexcept
        : m_page(page)
    {
        m_page.lock();
    }
    ~PageLock() { m_page.unlock(); }
    PageLock(const PageLock&) = delete;
    PageLock& operator=(const PageLock&) = delete;

private:
    SharedPage& m_page;
};

} // namespace vxsys::detail
