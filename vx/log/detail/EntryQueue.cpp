#include "vx/log/detail/EntryQueue.h"

#include "vx/detail/ExactType.h"
#include "vx/log/LogEntry.h"

#include <algorithm>
#include <memory>
#include <new>
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

SpareMemory::~SpareMemory()
{
    while (void* const memory = take())
        vxsys::deallocate(memory);
}

void SpareMemory::add(void* memory) noexcept
{
    if (memory != nullptr)
        m_first = new (memory) Block {m_first, ++m_count};
}

void* SpareMemory::take() noexcept
{
    Block* const taken = m_first;
    if (taken != nullptr) {
        m_first = taken->next;
        --m_count;
    }
    return taken;
}

void SpareMemory::offer(std::atomic<Block*>& place) noexcept
{
    if (place.load(std::memory_order_relaxed) != nullptr)
        return;
    place.store(std::exchange(m_first, nullptr), std::memory_order_release);
    m_count = 0;
}

void SpareMemory::accept(std::atomic<Block*>& place) noexcept
{
    if (place.load(std::memory_order_relaxed) == nullptr)
        return;
    m_first = place.exchange(nullptr, std::memory_order_acquire);
    m_count = m_first->count;
}

void TakenEntry::replaceBy(Reference<const ILogEntry>&& next) noexcept
{
    release();
    m_entry = std::move(next);
}

void TakenEntry::release() noexcept
{
    if (m_entry == nullptr || !vx::detail::isExactly<LogEntry>(*m_entry)) {
        m_entry = nullptr;
        return;
    }
    const auto* const own = static_cast<const LogEntry*>(m_entry.get());
    if (own->GetRefCount() != 1 || own->GetComModule() != nullptr) {
        m_entry = nullptr;
        return;
    }
    static_cast<void>(m_entry.detach());
    std::destroy_at(own);
    m_memory = const_cast<LogEntry*>(own);
}

EntryQueue::EntryQueue(std::int64_t mostEntries, std::int64_t mostBytes)
    : m_mostEntries(mostEntries)
    , m_mostBytes(mostBytes)
    , m_lock("vx/log/AsyncProcessorImpl::m_lock")
    , m_signal(0, "vx/log/AsyncProcessorImpl::m_signal")
{
}

EntryQueue::~EntryQueue()
{
    SpareMemory().accept(m_offered);
}

bool EntryQueue::put(const ILogEntry* entry)
{
    Item item {Reference<const ILogEntry>(entry), bytesOf(entry)};
    TakenEntry old;
    {
        const sync::ScopedLock lock(m_lock);
        if (!hasRoom(item.bytes))
            return false;
        if (m_spare.count() == 0)
            m_spare.accept(m_offered);
        old.m_memory = m_spare.take();
        const std::int64_t bytes = item.bytes;
        m_arrived.push_back(std::move(item));
        add(m_acceptedBytes, bytes);
        add(m_accepted, 1);
        noteDepth();
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

bool EntryQueue::takeOldest(TakenEntry& entry)
{
    return take(entry, 0);
}

bool EntryQueue::takeOldestOrSleep(TakenEntry& entry)
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
bool EntryQueue::take(TakenEntry& entry, int sleepers)
{
    constexpr int MOST_SPARE = 32;

    Reference<const ILogEntry> oldest;
    SpareMemory surplus; // is freed without the lock
    {
        const sync::ScopedLock takeLock(m_takeLock);
        m_used.add(std::exchange(entry.m_memory, nullptr));
        if (m_leaving.empty() || m_used.count() >= MOST_SPARE / 2)
            m_used.offer(m_offered);
        if (m_used.count() >= MOST_SPARE)
            surplus.add(m_used.take());
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
        if (item.bytes > 0)
            m_takenBytes += item.bytes;
        m_leaving.pop_front();
        ++m_taken;
    }
    if (m_callers > 0)
        wakeCallers(waiting() == 0);
    entry.replaceBy(std::move(oldest)); // releases the previous entry without the lock
    return true;
}

/// Reads what workers change only if the depth may be a new one.
void EntryQueue::noteDepth()
{
    const std::int64_t accepted = m_accepted.load(std::memory_order_relaxed);
    const std::int64_t deepest = m_deepest.load(std::memory_order_relaxed);
    if (accepted - m_takenBefore <= deepest)
        return;
    m_takenBefore = m_taken;
    m_deepest.store(std::max(deepest, accepted - m_takenBefore), std::memory_order_relaxed);
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
    if (m_mostEntries <= 0 && m_mostBytes <= 0)
        return true;
    const std::int64_t taken = m_taken; // read first, so that a queue that is being filled never seems to be empty
    const std::int64_t entries = m_accepted - taken;
    if (entries == 0)
        return true;
    const bool hasPlace = m_mostEntries <= 0 || entries < m_mostEntries;
    return hasPlace && (m_mostBytes <= 0 || m_acceptedBytes - m_takenBytes + bytes <= m_mostBytes);
}

} // namespace vx::log::detail
