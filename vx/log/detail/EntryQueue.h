#pragma once

#include "vx/Reference.h"
#include "vx/ThreadAnnotations.h"
#include "vx/log/ILogEntry.h"
#include "vx/sync/Condition.h"
#include "vx/sync/Mutex.h"
#include "vx/sync/ScopedLock.h"
#include "vx/sync/Semaphore.h"
#include "vxsys/Memory.h"

#include <atomic>
#include <cstdint>
#include <deque>

namespace vx::log::detail {

/// The entries of an `AsyncProcessor` on their way from callers to workers. Workers sleep in it while it is empty, and
/// callers wait in it while it is full.
class EntryQueue {
public:
    /// The most entries and the most bytes that wait; 0 is no limit.
    EntryQueue(std::int64_t mostEntries, std::int64_t mostBytes);
    EntryQueue(const EntryQueue&) = delete;
    EntryQueue& operator=(const EntryQueue&) = delete;

    /// Adds the entry and wakes a worker. False: there is no room.
    bool put(const ILogEntry* entry);
    /// Returns when the entry has room, which another caller may take. False: no worker is left to make room.
    bool waitForRoom(const ILogEntry* entry);

    /// Replaces `entry` by the oldest one. False: none waits.
    bool takeOldest(Reference<const ILogEntry>& entry);
    /// For a worker: sleeps while no entry waits. False: the queue has been closed to workers, which take no more.
    bool takeOldestOrSleep(Reference<const ILogEntry>& entry);
    /// From now on no worker takes an entry.
    void closeToWorkers();
    bool isClosedToWorkers() const noexcept { return m_isClosed; }

    void addWorker() noexcept { ++m_workers; }
    void removeWorker();
    int workers() const noexcept { return m_workers; }

    /// Keeps callers and workers out while it lives. Its own thread may use the queue.
    class Closure;

    /// How many entries have been put into the queue, how many of them wait, and the most that have waited at one time.
    std::int64_t accepted() const noexcept { return m_accepted; }
    std::int64_t waiting() const noexcept { return m_accepted - m_taken; }
    std::int64_t deepest() const noexcept { return m_deepest; }

private:
    struct Item {
        Reference<const ILogEntry> entry;
        std::int64_t bytes = 0; ///< 0 without a limit on bytes
    };
    using Items = std::deque<Item, vxsys::Allocator<Item>>;

    std::int64_t bytesOf(const ILogEntry* entry) const;
    bool hasRoom(std::int64_t bytes) const noexcept;
    bool take(Reference<const ILogEntry>& entry, int sleepers);
    void wakeCallers(bool all);

    const std::int64_t m_mostEntries;
    const std::int64_t m_mostBytes;

    // Callers and workers seldom meet: all that has arrived goes over at once to those who take it.
    sync::Mutex m_lock;
    Items m_arrived VX_GUARDED_BY(m_lock);
    int m_sleepers VX_GUARDED_BY(m_lock) = 0; ///< workers that found nothing, and for whom no post is under way
    std::atomic<bool> m_isClosed {false}; ///< written while m_lock is held, as the next three
    std::atomic<std::int64_t> m_accepted {0};
    std::atomic<std::int64_t> m_acceptedBytes {0};
    std::atomic<std::int64_t> m_deepest {0};
    sync::Semaphore m_signal;

    sync::Mutex m_takeLock; ///< taken before the other
    Items m_leaving VX_GUARDED_BY(m_takeLock); ///< older than all that has arrived
    std::atomic<std::int64_t> m_taken {0};
    std::atomic<std::int64_t> m_takenBytes {0};

    std::atomic<int> m_workers {0};
    std::atomic<int> m_callers {0}; ///< that wait for room
    sync::Condition m_room;
};

class VX_SCOPED_CAPABILITY EntryQueue::Closure {
public:
    explicit Closure(EntryQueue& queue) VX_ACQUIRE(queue.m_takeLock, queue.m_lock)
        : m_takeLock(queue.m_takeLock)
        , m_lock(queue.m_lock)
    {
    }
    ~Closure() noexcept(false) VX_RELEASE() { } // NOLINT(modernize-use-equals-default): not with this attribute
    Closure(const Closure&) = delete;
    Closure& operator=(const Closure&) = delete;

private:
    const sync::ScopedLock m_takeLock;
    const sync::ScopedLock m_lock;
};

} // namespace vx::log::detail
