#include "vx/log/detail/EntryQueue.h"

#include "vx/log/LogEntry.h"

#include <algorithm>
#include <utility>

namespace vx::log::detail {

namespace {

/// Counts a thread while it waits.
class Counted {
public:
    explicit Counted(std::atomic<int>& count) noexcept
        : m_count(count)
    {
        ++m_count;
    }
    ~Counted() { --m_count; }
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;

private:
    std::atomic<int>& m_count;
};

/// Adds to a number that other threads read, and that only one thread changes at a time.
void add(std::atomic<std::int64_t>& number, std::int64_t more) noexcept
{
    number.store(number.load(std::memory_order_relaxed) + more, std::memory_order_relaxed);
}

} // namespace

EntryQueue::EntryQueue(std::int64_t mostEntries, std::int64_t mostBytes)
    : m_mostEntries(mostEntries)
    , m_mostBytes(mostBytes)
    , m_lock("vx/log/AsyncProcessorImpl::m_lock")
    , m_signal(0, "vx/log/AsyncProcessorImpl::m_signal")
{
}

bool EntryQueue::put(const ILogEntry* entry)
{
    Item item {Reference<const ILogEntry>(entry), bytesOf(entry)};
    {
        const sync::ScopedLock lock(m_lock);
        if (!hasRoom(item.bytes))
            return false;
        const std::int64_t bytes = item.bytes;
        m_arrived.push_back(std::move(item));
        add(m_acceptedBytes, bytes);
        add(m_accepted, 1);
        m_deepest.store(std::max(m_deepest.load(std::memory_order_relaxed), waiting()), std::memory_order_relaxed);
        if (m_sleepers == 0)
            return true;
        --m_sleepers;
    }
    m_signal.signal();
    return true;
}

bool EntryQueue::waitForRoom(const ILogEntry* entry)
{
    // A caller first announces itself and then looks for room. A thread that makes room looks for callers after that.
    // So at least one of the two notices the other.
    const std::int64_t bytes = bytesOf(entry);
    const Counted counted(m_callers);
    const sync::Condition::Holder holder(m_room);
    while (!hasRoom(bytes)) {
        if (m_workers == 0)
            return false;
        m_room.wait();
    }
    return true;
}

bool EntryQueue::takeOldest(Reference<const ILogEntry>& entry)
{
    return take(entry, 0);
}

bool EntryQueue::takeOldestOrSleep(Reference<const ILogEntry>& entry)
{
    while (!m_isClosed) {
        if (take(entry, 1))
            return true;
        if (!m_isClosed)
            m_signal.wait();
    }
    return false;
}

/// If no entry waits, counts `sleepers` more workers that sleep.
bool EntryQueue::take(Reference<const ILogEntry>& entry, int sleepers)
{
    Reference<const ILogEntry> oldest;
    {
        const sync::ScopedLock takeLock(m_takeLock);
        if (m_leaving.empty()) {
            const sync::ScopedLock lock(m_lock);
            m_leaving.swap(m_arrived);
            if (m_leaving.empty()) {
                m_sleepers += sleepers;
                return false;
            }
        }
        Item& item = m_leaving.front();
        oldest = std::move(item.entry);
        m_takenBytes += item.bytes;
        m_leaving.pop_front();
        ++m_taken;
    }
    wakeCallers(waiting() == 0);
    entry = std::move(oldest); // releases the previous entry without the lock
    return true;
}

void EntryQueue::closeToWorkers()
{
    int sleepers = 0;
    {
        const sync::ScopedLock lock(m_lock);
        m_isClosed = true;
        sleepers = std::exchange(m_sleepers, 0);
    }
    for (; sleepers > 0; --sleepers)
        m_signal.signal();
}

void EntryQueue::removeWorker()
{
    --m_workers;
    wakeCallers(true);
}

void EntryQueue::wakeCallers(bool all)
{
    if (m_callers == 0)
        return;
    const sync::Condition::Holder holder(m_room);
    all ? m_room.broadcast() : m_room.signal();
}

std::int64_t EntryQueue::bytesOf(const ILogEntry* entry) const
{
    return m_mostBytes > 0 && entry != nullptr ? LogEntry::estimateBytes(*entry) : 0;
}

bool EntryQueue::hasRoom(std::int64_t bytes) const noexcept
{
    const std::int64_t taken = m_taken; // read first, so that a queue that is being filled never seems to be empty
    const std::int64_t entries = m_accepted - taken;
    if (entries == 0)
        return true;
    const bool hasPlace = m_mostEntries <= 0 || entries < m_mostEntries;
    return hasPlace && (m_mostBytes <= 0 || m_acceptedBytes - m_takenBytes + bytes <= m_mostBytes);
}

} // namespace vx::log::detail
