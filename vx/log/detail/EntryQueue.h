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
#include <cstddef>
#include <cstdint>
#include <deque>

namespace vx::log::detail {

/// Memory of entries that were destroyed.
class SpareMemory {
public:
    SpareMemory() noexcept = default;
    ~SpareMemory();
    SpareMemory(const SpareMemory&) = delete;
    SpareMemory& operator=(const SpareMemory&) = delete;

    int count() const noexcept { return m_count; }
    /// Null is allowed.
    void add(void* memory) noexcept;
    /// Null if there is none.
    void* take() noexcept;

    struct Block {
        Block* next;
        int count; ///< of this and those after it
    };
    /// Leaves all of it in `place` if that is empty.
    void offer(std::atomic<Block*>& place) noexcept;
    /// Takes what is in `place`. Call this when there is no other.
    void accept(std::atomic<Block*>& place) noexcept;

private:
    Block* m_first = nullptr;
    int m_count = 0;
};

/// An entry that was taken from the queue, and the memory of the previous entry if that one had no other reference.
class TakenEntry {
public:
    TakenEntry() noexcept = default;
    ~TakenEntry() { vxsys::deallocate(m_memory); }
    TakenEntry(const TakenEntry&) = delete;
    TakenEntry& operator=(const TakenEntry&) = delete;

    const ILogEntry* get() const noexcept { return m_entry.get(); }

private:
    friend class EntryQueue;

    void replaceBy(Reference<const ILogEntry>&& next) noexcept;
    void release() noexcept;

    Reference<const ILogEntry> m_entry;
    void* m_memory = nullptr;
};

/// The queue of an `AsyncProcessor`. Workers wait in it while it is empty, and callers while it is full.
class EntryQueue { // NOLINT(clang-analyzer-optin.performance.Padding): the padding is wanted
public:
    /// Limits for the number of waiting entries and for their bytes; 0 means no limit.
    EntryQueue(std::int64_t mostEntries, std::int64_t mostBytes);
    ~EntryQueue();
    EntryQueue(const EntryQueue&) = delete;
    EntryQueue& operator=(const EntryQueue&) = delete;

    /// Adds the entry and wakes a worker. Returns false if there is no room.
    bool put(const ILogEntry* entry);
    /// Waits until the entry has room, which another caller may use first. Returns false if there is no worker to make
    /// room.
    bool waitForRoom(const ILogEntry* entry);

    /// Replaces `entry` by the oldest one. Returns false if none waits, and then keeps `entry`.
    bool takeOldest(TakenEntry& entry);
    /// For a worker: waits for an entry. Returns false if the queue is closed to workers.
    bool takeOldestOrSleep(TakenEntry& entry);
    /// After this call no worker gets an entry.
    void closeToWorkers();
    bool isClosedToWorkers() const noexcept { return m_isClosed; }

    void addWorker() noexcept { ++m_workers; }
    void removeWorker();
    int workers() const noexcept { return m_workers; }

    /// Locks out callers and workers to the end of the block. Its own thread may use the queue.
    class Closure;

    /// The number of entries that were added, the number that wait now, and the largest number that waited at one time.
    std::int64_t accepted() const noexcept { return m_accepted; }
    std::int64_t waiting() const noexcept { return m_accepted - m_taken; }
    std::int64_t deepest() const noexcept { return m_deepest; }

private:
    struct Item {
        Reference<const ILogEntry> entry;
        std::int64_t bytes = 0; ///< 0 if bytes are not limited
    };
    using Items = std::deque<Item, vxsys::Allocator<Item>>;

    std::int64_t bytesOf(const ILogEntry* entry) const;
    bool hasRoom(std::int64_t bytes) const noexcept;
    bool take(TakenEntry& entry, int sleepers);
    void noteDepth() VX_REQUIRES(m_lock);
    void wakeCallers(bool all);

    const std::int64_t m_mostEntries;
    const std::int64_t m_mostBytes;
    std::atomic<bool> m_isClosed {false}; ///< changed under m_lock
    std::atomic<int> m_workers {0};
    std::atomic<int> m_callers {0}; ///< callers that wait for room

    // Callers and workers use different queues, so they seldom wait for each other. A worker that finds its queue empty
    // exchanges it for the other one. What they change for each entry is not in the same cache line.
    static constexpr std::size_t CACHE_LINE = 64;
    alignas(CACHE_LINE) sync::Mutex m_lock;
    Items m_arrived VX_GUARDED_BY(m_lock);
    int m_sleepers VX_GUARDED_BY(m_lock) = 0; ///< workers that found no entry and have not been signalled yet
    std::atomic<std::int64_t> m_accepted {0}; ///< changed under m_lock, like the next two
    std::atomic<std::int64_t> m_acceptedBytes {0};
    std::atomic<std::int64_t> m_deepest {0};
    std::int64_t m_takenBefore VX_GUARDED_BY(m_lock) = 0; ///< a value that m_taken had
    // A thread that frees what another one has allocated waits for the locks of the allocator. So each caller frees the
    // memory of an old entry, and the allocator has it at hand for the next entry of this thread.
    SpareMemory m_spare VX_GUARDED_BY(m_lock);

    alignas(CACHE_LINE) sync::Mutex m_takeLock; ///< acquired before m_lock
    Items m_leaving VX_GUARDED_BY(m_takeLock); ///< entries that are older than those in m_arrived
    SpareMemory m_used VX_GUARDED_BY(m_takeLock); ///< not offered yet
    std::atomic<std::int64_t> m_taken {0};
    std::atomic<std::int64_t> m_takenBytes {0};

    alignas(CACHE_LINE) std::atomic<SpareMemory::Block*> m_offered {nullptr}; ///< from m_used to m_spare
    sync::Semaphore m_signal;
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
