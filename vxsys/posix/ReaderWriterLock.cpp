#include "vxsys/Lock.h"
#include "vxsys/detail/ThreadNumber.h"
#include "vxsys/detail/Waitable.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <exception>
#include <vector>

namespace {

using namespace vxsys::detail;

/// Neither side starves: a waiting writer is served before readers that arrive later, and a writer that releases admits
/// the readers that are waiting by then before the next writer.
class ReaderWriterLock final : public Waitable<HandleOf<HandleKind::RW_LOCK>> {
public:
    int acquireRead(const Deadline& deadline) noexcept;
    int releaseRead() noexcept;
    int acquireWrite(const Deadline& deadline) noexcept;
    int releaseWrite() noexcept;
    int releaseAll() noexcept;
    int destroyable() noexcept;

private:
    struct ReadingThread {
        std::uint64_t number;
        std::uint32_t count;
    };

    std::vector<ReadingThread>::iterator findReader() noexcept VX_REQUIRES(m_monitor);
    /// Whether it is certain that the calling thread holds a read lock.
    bool isReading() noexcept VX_REQUIRES(m_monitor);
    /// Reserves rows for this reader and all that wait, so that adding a row cannot fail after the wait.
    bool makeRoomForReader() noexcept VX_REQUIRES(m_monitor);
    void endWriting() noexcept VX_REQUIRES(m_monitor);
    void endReading(std::uint32_t count) noexcept VX_REQUIRES(m_monitor);

    std::vector<ReadingThread> m_readingThreads VX_GUARDED_BY(m_monitor);
    std::uint32_t m_readers VX_GUARDED_BY(m_monitor) = 0;
    /// Read locks that a thread other than their reader released. Until no thread reads, it is unknown which rows count
    /// them.
    std::uint32_t m_strayReleases VX_GUARDED_BY(m_monitor) = 0;
    std::uint32_t m_waitingReaders VX_GUARDED_BY(m_monitor) = 0;
    std::uint32_t m_waitingWriters VX_GUARDED_BY(m_monitor) = 0;
    std::uint64_t m_writer VX_GUARDED_BY(m_monitor) = 0; ///< the thread's number
    std::uint64_t m_turn VX_GUARDED_BY(m_monitor) = 0; ///< counts the releases by writers
    std::uint32_t m_admitted VX_GUARDED_BY(m_monitor) = 0; ///< readers admitted in this turn that have not run yet
};

int ReaderWriterLock::acquireRead(const Deadline& deadline) noexcept
{
    const MonitorLock lock(m_monitor);
    if (m_writer == threadNumber())
        return EDEADLK;
    const std::uint64_t turn = m_turn;
    // A waiting writer may wait for this very thread. Then this thread must not wait for that writer.
    const bool readsAlready = findReader() != m_readingThreads.end();
    if (!makeRoomForReader())
        return ENOMEM;
    ++m_waitingReaders;
    const int error = waitUntil(deadline, [&]() VX_REQUIRES(m_monitor) {
        return m_writer == 0 && (m_waitingWriters == 0 || m_turn != turn || readsAlready);
    });
    --m_waitingReaders;
    if (m_turn != turn)
        --m_admitted;
    if (error != 0)
        return error;
    ++m_readers;
    const auto reader = findReader();
    if (reader != m_readingThreads.end())
        ++reader->count;
    else
        m_readingThreads.push_back({threadNumber(), 1});
    return 0;
}

int ReaderWriterLock::releaseRead() noexcept
{
    const MonitorLock lock(m_monitor);
    if (m_readers == 0)
        return EPERM;
    const auto reader = findReader();
    if (reader == m_readingThreads.end())
        ++m_strayReleases;
    else if (--reader->count == 0)
        m_readingThreads.erase(reader);
    endReading(1);
    return 0;
}

int ReaderWriterLock::acquireWrite(const Deadline& deadline) noexcept
{
    const MonitorLock lock(m_monitor);
    if (m_writer == threadNumber() || isReading())
        return EDEADLK;
    ++m_waitingWriters;
    const int error = waitUntil(
        deadline, [this]() VX_REQUIRES(m_monitor) { return m_writer == 0 && m_readers == 0 && m_admitted == 0; });
    --m_waitingWriters;
    if (error == 0)
        m_writer = threadNumber();
    else if (m_waitingWriters == 0)
        m_monitor.wakeAll(); // readers that waited because of this writer
    return error;
}

int ReaderWriterLock::releaseWrite() noexcept
{
    const MonitorLock lock(m_monitor);
    if (m_writer != threadNumber())
        return EPERM;
    endWriting();
    return 0;
}

int ReaderWriterLock::releaseAll() noexcept
{
    const MonitorLock lock(m_monitor);
    if (m_writer == threadNumber())
        endWriting();
    if (const auto reader = findReader(); reader != m_readingThreads.end()) {
        const std::uint32_t count = std::min(reader->count, m_readers);
        m_readingThreads.erase(reader);
        endReading(count);
    }
    return 0;
}

int ReaderWriterLock::destroyable() noexcept
{
    const MonitorLock lock(m_monitor);
    return m_writer != 0 || m_readers != 0 || m_waiters != 0 ? EBUSY : 0;
}

std::vector<ReaderWriterLock::ReadingThread>::iterator ReaderWriterLock::findReader() noexcept
{
    return std::find_if(m_readingThreads.begin(), m_readingThreads.end(),
        [number = threadNumber()](const ReadingThread& thread) { return thread.number == number; });
}

bool ReaderWriterLock::isReading() noexcept
{
    const auto reader = findReader();
    return reader != m_readingThreads.end() && reader->count > m_strayReleases;
}

bool ReaderWriterLock::makeRoomForReader() noexcept
{
    try {
        m_readingThreads.reserve(m_readingThreads.size() + m_waitingReaders + 1);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

void ReaderWriterLock::endWriting() noexcept
{
    m_writer = 0;
    ++m_turn;
    m_admitted = m_waitingReaders;
    m_monitor.wakeAll();
}

void ReaderWriterLock::endReading(std::uint32_t count) noexcept
{
    m_readers -= count;
    if (m_readers != 0)
        return;
    m_readingThreads.clear();
    m_strayReleases = 0;
    m_monitor.wakeAll();
}

} // namespace

std::int32_t VXRWLockCreate(const char* name, std::uint32_t, VXHandle* lock) noexcept
{
    return createHandle<ReaderWriterLock>(lock, name);
}

std::int32_t VXRWLockAcquireRead(VXHandle lock) noexcept
{
    return acquireUntil<&ReaderWriterLock::acquireRead>(lock, VX_WAIT_FOREVER);
}

std::int32_t VXRWLockTryAcquireRead(VXHandle lock) noexcept
{
    return acquireUntil<&ReaderWriterLock::acquireRead>(lock, 0);
}

std::int32_t VXRWLockTimedAcquireRead(VXHandle lock, std::uint32_t milliseconds) noexcept
{
    return acquireUntil<&ReaderWriterLock::acquireRead>(lock, milliseconds);
}

std::int32_t VXRWLockReleaseRead(VXHandle lock) noexcept
{
    noteRelease(lock, LockOrder::Release::BY_ANY_THREAD);
    return onHandle<&ReaderWriterLock::releaseRead>(lock);
}

std::int32_t VXRWLockAcquireWrite(VXHandle lock) noexcept
{
    return acquireUntil<&ReaderWriterLock::acquireWrite>(lock, VX_WAIT_FOREVER);
}

std::int32_t VXRWLockTryAcquireWrite(VXHandle lock) noexcept
{
    return acquireUntil<&ReaderWriterLock::acquireWrite>(lock, 0);
}

std::int32_t VXRWLockTimedAcquireWrite(VXHandle lock, std::uint32_t milliseconds) noexcept
{
    return acquireUntil<&ReaderWriterLock::acquireWrite>(lock, milliseconds);
}

std::int32_t VXRWLockReleaseWrite(VXHandle lock) noexcept
{
    noteRelease(lock, LockOrder::Release::ONCE);
    return onHandle<&ReaderWriterLock::releaseWrite>(lock);
}

std::int32_t VXRWLockReleaseAll(VXHandle lock) noexcept
{
    noteRelease(lock, LockOrder::Release::ALL);
    return onHandle<&ReaderWriterLock::releaseAll>(lock);
}

std::int32_t VXRWLockDestroy(VXHandle lock) noexcept
{
    return destroyHandle<ReaderWriterLock>(lock);
}
