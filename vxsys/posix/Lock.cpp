#include "vxsys/Lock.h"

#include "vxsys/Thread.h"
#include "vxsys/detail/Handle.h"
#include "vxsys/detail/Monitor.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <limits>
#include <pthread.h>
#include <utility>
#include <vector>

namespace {

using namespace vxsys::detail;

constexpr Deadline NEVER;

/// Which thread holds a lock. Only the holder itself writes here, so every thread can tell whether it is the one.
class Holder {
public:
    bool isMe() const noexcept { return m_thread.load(std::memory_order_relaxed) == ::pthread_self(); }
    bool isNobody() const noexcept { return m_thread.load(std::memory_order_relaxed) == NOBODY; }
    void enter() noexcept { m_thread.store(::pthread_self(), std::memory_order_relaxed); }
    void leave() noexcept { m_thread.store(NOBODY, std::memory_order_relaxed); }

private:
    static constexpr pthread_t NOBODY = 0; ///< it is an address

    std::atomic<pthread_t> m_thread {NOBODY};
};

class Mutex final : public VXHandleTag {
public:
    static constexpr HandleKind KIND = HandleKind::MUTEX;

    Mutex() noexcept
        : VXHandleTag(KIND)
    {
    }
    int init() noexcept { return 0; }
    int acquire() noexcept { return acquire(1); }
    int tryAcquire() noexcept
    {
        const int error = m_holder.isMe() ? deepen(1) : entered(::pthread_mutex_trylock(&m_mutex), 1);
        return error == EBUSY ? ETIMEDOUT : error;
    }
    int release() noexcept
    {
        if (!m_holder.isMe())
            return EPERM;
        return --m_depth == 0 ? left() : 0;
    }

    int releaseAll(std::uint32_t& depth) noexcept
    {
        if (!m_holder.isMe())
            return 0;
        depth = std::exchange(m_depth, 0);
        return left();
    }
    int reacquire(std::uint32_t depth) noexcept { return depth == 0 ? 0 : acquire(depth); }

    /// A held mutex is not destroyed, and stays as it was.
    int destroyable() noexcept
    {
        if (m_holder.isMe())
            return EBUSY;
        if (const int error = ::pthread_mutex_trylock(&m_mutex))
            return error;
        ::pthread_mutex_unlock(&m_mutex);
        return ::pthread_mutex_destroy(&m_mutex);
    }

private:
    int acquire(std::uint32_t depth) noexcept
    {
        return m_holder.isMe() ? deepen(depth) : entered(::pthread_mutex_lock(&m_mutex), depth);
    }
    int entered(int error, std::uint32_t depth) noexcept
    {
        if (error == 0) {
            m_holder.enter();
            m_depth = depth;
        }
        return error;
    }
    int left() noexcept
    {
        m_holder.leave();
        return ::pthread_mutex_unlock(&m_mutex);
    }
    int deepen(std::uint32_t more) noexcept
    {
        if (more > std::numeric_limits<std::uint32_t>::max() - m_depth)
            return EAGAIN;
        m_depth += more;
        return 0;
    }

    pthread_mutex_t m_mutex = PTHREAD_MUTEX_INITIALIZER;
    Holder m_holder;
    std::uint32_t m_depth = 0; ///< guarded by the mutex itself
};

/// What waits on a monitor: nobody destroys it while somebody waits.
class Waitable : public VXHandleTag {
public:
    explicit Waitable(HandleKind handleKind) noexcept
        : VXHandleTag(handleKind)
    {
    }
    int init() noexcept { return m_monitor.init(); }
    int destroyable() noexcept
    {
        const MonitorLock lock(m_monitor);
        return m_waiters == 0 ? 0 : EBUSY;
    }

protected:
    template <class Condition>
    int waitUntil(const Deadline& deadline, Condition holds) noexcept VX_REQUIRES(m_monitor)
    {
        ++m_waiters;
        const int error = m_monitor.waitUntil(deadline, holds);
        --m_waiters;
        return error;
    }

    Monitor m_monitor;
    std::uint32_t m_waiters VX_GUARDED_BY(m_monitor) = 0;
};

class Event final : public Waitable {
public:
    static constexpr HandleKind KIND = HandleKind::EVENT;

    Event() noexcept
        : Waitable(KIND)
    {
    }
    int wait(const Deadline& deadline) noexcept
    {
        const MonitorLock lock(m_monitor);
        if (m_signalled) {
            m_signalled = false;
            return 0;
        }
        // A signal is for those who waited by then: who comes later does not take it from one that has not yet run.
        const std::uint64_t before = m_signals;
        const int error
            = waitUntil(deadline, [&]() VX_REQUIRES(m_monitor) { return m_freed > 0 && m_signals != before; });
        if (error == 0)
            --m_freed;
        return error;
    }
    int signal() noexcept
    {
        const MonitorLock lock(m_monitor);
        ++m_signals;
        // Each signal frees a waiter of its own, also when another follows before the waiter runs.
        if (m_freed < m_waiters) {
            ++m_freed;
            m_monitor.wakeOne();
        } else {
            m_signalled = true;
        }
        return 0;
    }

private:
    bool m_signalled VX_GUARDED_BY(m_monitor) = false;
    std::uint64_t m_signals VX_GUARDED_BY(m_monitor) = 0;
    std::uint32_t m_freed VX_GUARDED_BY(m_monitor) = 0; ///< waiters that may go and have not yet run
};

class Gate final : public Waitable {
public:
    static constexpr HandleKind KIND = HandleKind::GATE;

    Gate() noexcept
        : Waitable(KIND)
    {
    }
    int wait(const Deadline& deadline) noexcept
    {
        const MonitorLock lock(m_monitor);
        // An opening counts for all who waited then, also when the gate is closed before they run.
        const std::uint64_t openings = m_openings;
        return waitUntil(deadline, [&]() VX_REQUIRES(m_monitor) { return m_open || m_openings != openings; });
    }
    int set(bool open) noexcept
    {
        const MonitorLock lock(m_monitor);
        m_open = open;
        if (open) {
            ++m_openings;
            m_monitor.wakeAll();
        }
        return 0;
    }

private:
    bool m_open VX_GUARDED_BY(m_monitor) = false;
    std::uint64_t m_openings VX_GUARDED_BY(m_monitor) = 0;
};

/// Neither side starves: a writer that waits goes before readers that come later, and a writer that leaves lets in the
/// readers that wait by then before the next writer.
class ReaderWriterLock final : public Waitable {
public:
    static constexpr HandleKind KIND = HandleKind::RW_LOCK;

    ReaderWriterLock() noexcept
        : Waitable(KIND)
    {
    }
    int acquireRead(const Deadline& deadline) noexcept
    {
        const MonitorLock lock(m_monitor);
        if (m_writer == VXThreadGetCurrentId())
            return EDEADLK;
        const std::uint64_t turn = m_turn;
        // A writer that waits for this very thread is not waited for.
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
        if (error == 0) {
            ++m_readers;
            const auto reader = findReader();
            if (reader != m_readingThreads.end())
                ++reader->count;
            else
                m_readingThreads.push_back({VXThreadGetCurrentId(), 1});
        }
        return error;
    }
    int releaseRead() noexcept
    {
        const MonitorLock lock(m_monitor);
        if (m_readers == 0)
            return EPERM;
        // A lock that went from hand to hand leaves a row of its first reader, until nobody reads.
        const auto reader = findReader();
        if (reader != m_readingThreads.end() && --reader->count == 0)
            m_readingThreads.erase(reader);
        if (--m_readers == 0) {
            m_readingThreads.clear();
            m_monitor.wakeAll();
        }
        return 0;
    }
    int acquireWrite(const Deadline& deadline) noexcept
    {
        const MonitorLock lock(m_monitor);
        if (m_writer == VXThreadGetCurrentId())
            return EDEADLK;
        ++m_waitingWriters;
        const int error = waitUntil(
            deadline, [this]() VX_REQUIRES(m_monitor) { return m_writer == 0 && m_readers == 0 && m_admitted == 0; });
        --m_waitingWriters;
        if (error == 0)
            m_writer = VXThreadGetCurrentId();
        else if (m_waitingWriters == 0)
            m_monitor.wakeAll(); // readers that stood back for this writer
        return error;
    }
    int releaseWrite() noexcept
    {
        const MonitorLock lock(m_monitor);
        if (m_writer == 0 || m_writer != VXThreadGetCurrentId())
            return EPERM;
        m_writer = 0;
        ++m_turn;
        m_admitted = m_waitingReaders;
        m_monitor.wakeAll();
        return 0;
    }
    int destroyable() noexcept
    {
        const MonitorLock lock(m_monitor);
        return m_writer != 0 || m_readers != 0 || m_waiters != 0 ? EBUSY : 0;
    }

private:
    struct ReadingThread {
        std::uint32_t id;
        std::uint32_t count;
    };

    std::vector<ReadingThread>::iterator findReader() noexcept VX_REQUIRES(m_monitor)
    {
        return std::find_if(m_readingThreads.begin(), m_readingThreads.end(),
            [id = VXThreadGetCurrentId()](const ReadingThread& thread) { return thread.id == id; });
    }
    /// For this reader and for all who wait, so that nobody who may read lacks it.
    bool makeRoomForReader() noexcept VX_REQUIRES(m_monitor)
    {
        try {
            m_readingThreads.reserve(m_readingThreads.size() + m_waitingReaders + 1);
            return true;
        } catch (const std::exception&) {
            return false;
        }
    }

    std::vector<ReadingThread> m_readingThreads VX_GUARDED_BY(m_monitor);
    std::uint32_t m_readers VX_GUARDED_BY(m_monitor) = 0;
    std::uint32_t m_waitingReaders VX_GUARDED_BY(m_monitor) = 0;
    std::uint32_t m_waitingWriters VX_GUARDED_BY(m_monitor) = 0;
    std::uint32_t m_writer VX_GUARDED_BY(m_monitor) = 0; ///< the thread
    std::uint64_t m_turn VX_GUARDED_BY(m_monitor) = 0; ///< counts the writers that left
    std::uint32_t m_admitted VX_GUARDED_BY(m_monitor) = 0; ///< readers of the turn that have not run yet
};

class Semaphore final : public SemaphoreHandle {
public:
    Semaphore() noexcept
        : SemaphoreHandle(false)
    {
    }
    int init(std::uint32_t value) noexcept
    {
        if (value > LARGEST)
            return EINVAL;
        const MonitorLock lock(m_monitor);
        m_value = static_cast<std::int32_t>(value);
        return m_monitor.init();
    }
    int wait() noexcept override { return take(NEVER); }
    int tryWait() noexcept override { return take(Deadline::in(0)); }
    int post() noexcept override
    {
        const MonitorLock lock(m_monitor);
        if (m_value == LARGEST)
            return EOVERFLOW;
        ++m_value;
        m_monitor.wakeOne();
        return 0;
    }
    int value(std::int32_t& count) noexcept override
    {
        const MonitorLock lock(m_monitor);
        count = m_value;
        return 0;
    }
    int destroyable() noexcept
    {
        const MonitorLock lock(m_monitor);
        return m_waiters == 0 ? 0 : EBUSY;
    }

private:
    static constexpr std::int32_t LARGEST = std::numeric_limits<std::int32_t>::max();

    int take(const Deadline& deadline) noexcept
    {
        const MonitorLock lock(m_monitor);
        ++m_waiters;
        const int error = m_monitor.waitUntil(deadline, [this]() VX_REQUIRES(m_monitor) { return m_value > 0; });
        --m_waiters;
        if (error == 0)
            --m_value;
        return error;
    }

    Monitor m_monitor;
    std::int32_t m_value VX_GUARDED_BY(m_monitor) = 0;
    std::uint32_t m_waiters VX_GUARDED_BY(m_monitor) = 0;
};

class Condition final : public VXHandleTag {
public:
    static constexpr HandleKind KIND = HandleKind::CONDITION;

    Condition() noexcept
        : VXHandleTag(KIND)
    {
    }
    int init() noexcept { return m_monitor.init(); }
    int acquire() noexcept VX_NO_THREAD_SAFETY_ANALYSIS
    {
        if (m_holder.isMe())
            return EDEADLK;
        const int error = m_monitor.lock();
        if (error == 0)
            m_holder.enter();
        return error;
    }
    int release() noexcept VX_NO_THREAD_SAFETY_ANALYSIS
    {
        if (!m_holder.isMe())
            return EPERM;
        m_holder.leave();
        return m_monitor.unlock();
    }
    int wait(const Deadline& deadline) noexcept VX_NO_THREAD_SAFETY_ANALYSIS
    {
        if (!m_holder.isMe())
            return EPERM;
        m_holder.leave();
        ++m_waiters;
        const int error = m_monitor.wait(deadline);
        --m_waiters;
        m_holder.enter();
        return error;
    }
    int signal() noexcept
    {
        m_monitor.wakeOne();
        return 0;
    }
    int broadcast() noexcept
    {
        m_monitor.wakeAll();
        return 0;
    }
    int destroyable() noexcept
    {
        if (!m_holder.isNobody())
            return EBUSY;
        const MonitorLock lock(m_monitor);
        return m_waiters == 0 ? 0 : EBUSY;
    }

private:
    Monitor m_monitor;
    Holder m_holder;
    std::uint32_t m_waiters VX_GUARDED_BY(m_monitor) = 0;
};

} // namespace

std::int32_t VXMutexCreate(const char*, std::uint32_t, VXHandle* mutex) noexcept
{
    return createHandle<Mutex>(mutex);
}

std::int32_t VXMutexAcquire(VXHandle mutex) noexcept
{
    return onHandle<Mutex>(mutex, [](Mutex& object) { return object.acquire(); });
}

std::int32_t VXMutexTryAcquire(VXHandle mutex) noexcept
{
    return onHandle<Mutex>(mutex, [](Mutex& object) { return object.tryAcquire(); });
}

std::int32_t VXMutexRelease(VXHandle mutex) noexcept
{
    return onHandle<Mutex>(mutex, [](Mutex& object) { return object.release(); });
}

std::int32_t VXMutexReleaseAll(VXHandle mutex, std::uint32_t* depth) noexcept
{
    if (depth == nullptr)
        return VXResultFromNative(EINVAL);
    *depth = 0;
    return onHandle<Mutex>(mutex, [&](Mutex& object) { return object.releaseAll(*depth); });
}

std::int32_t VXMutexReacquire(VXHandle mutex, std::uint32_t depth) noexcept
{
    return onHandle<Mutex>(mutex, [&](Mutex& object) { return object.reacquire(depth); });
}

std::int32_t VXMutexDestroy(VXHandle mutex) noexcept
{
    return destroyHandle<Mutex>(mutex);
}

std::int32_t VXEventCreate(const char*, std::uint32_t, VXHandle* event) noexcept
{
    return createHandle<Event>(event);
}

std::int32_t VXEventWait(VXHandle event) noexcept
{
    return VXEventTimedWait(event, VX_WAIT_FOREVER);
}

std::int32_t VXEventTimedWait(VXHandle event, std::uint32_t milliseconds) noexcept
{
    return onHandle<Event>(event, [&](Event& object) { return object.wait(Deadline::in(milliseconds)); });
}

std::int32_t VXEventSignal(VXHandle event) noexcept
{
    return onHandle<Event>(event, [](Event& object) { return object.signal(); });
}

std::int32_t VXEventDestroy(VXHandle event) noexcept
{
    return destroyHandle<Event>(event);
}

std::int32_t VXGateCreate(const char*, std::uint32_t, VXHandle* gate) noexcept
{
    return createHandle<Gate>(gate);
}

std::int32_t VXGateWait(VXHandle gate) noexcept
{
    return VXGateTimedWait(gate, VX_WAIT_FOREVER);
}

std::int32_t VXGateTryWait(VXHandle gate) noexcept
{
    return VXGateTimedWait(gate, 0);
}

std::int32_t VXGateTimedWait(VXHandle gate, std::uint32_t milliseconds) noexcept
{
    return onHandle<Gate>(gate, [&](Gate& object) { return object.wait(Deadline::in(milliseconds)); });
}

std::int32_t VXGateOpen(VXHandle gate) noexcept
{
    return onHandle<Gate>(gate, [](Gate& object) { return object.set(true); });
}

std::int32_t VXGateClose(VXHandle gate) noexcept
{
    return onHandle<Gate>(gate, [](Gate& object) { return object.set(false); });
}

std::int32_t VXGateDestroy(VXHandle gate) noexcept
{
    return destroyHandle<Gate>(gate);
}

std::int32_t VXRWLockCreate(const char*, std::uint32_t, VXHandle* lock) noexcept
{
    return createHandle<ReaderWriterLock>(lock);
}

std::int32_t VXRWLockAcquireRead(VXHandle lock) noexcept
{
    return onHandle<ReaderWriterLock>(lock, [](ReaderWriterLock& object) { return object.acquireRead(NEVER); });
}

std::int32_t VXRWLockTryAcquireRead(VXHandle lock) noexcept
{
    return onHandle<ReaderWriterLock>(
        lock, [](ReaderWriterLock& object) { return object.acquireRead(Deadline::in(0)); });
}

std::int32_t VXRWLockReleaseRead(VXHandle lock) noexcept
{
    return onHandle<ReaderWriterLock>(lock, [](ReaderWriterLock& object) { return object.releaseRead(); });
}

std::int32_t VXRWLockAcquireWrite(VXHandle lock) noexcept
{
    return onHandle<ReaderWriterLock>(lock, [](ReaderWriterLock& object) { return object.acquireWrite(NEVER); });
}

std::int32_t VXRWLockTryAcquireWrite(VXHandle lock) noexcept
{
    return onHandle<ReaderWriterLock>(
        lock, [](ReaderWriterLock& object) { return object.acquireWrite(Deadline::in(0)); });
}

std::int32_t VXRWLockReleaseWrite(VXHandle lock) noexcept
{
    return onHandle<ReaderWriterLock>(lock, [](ReaderWriterLock& object) { return object.releaseWrite(); });
}

std::int32_t VXRWLockDestroy(VXHandle lock) noexcept
{
    return destroyHandle<ReaderWriterLock>(lock);
}

std::int32_t VXSemaphoreCreate(std::uint32_t value, const char*, std::uint32_t, VXHandle* semaphore) noexcept
{
    return createHandle<Semaphore>(semaphore, value);
}

std::int32_t VXSemaphoreWait(VXHandle semaphore) noexcept
{
    return onHandle<SemaphoreHandle>(semaphore, [](SemaphoreHandle& object) { return object.wait(); });
}

std::int32_t VXSemaphoreTryWait(VXHandle semaphore) noexcept
{
    return onHandle<SemaphoreHandle>(semaphore, [](SemaphoreHandle& object) { return object.tryWait(); });
}

std::int32_t VXSemaphorePost(VXHandle semaphore) noexcept
{
    return onHandle<SemaphoreHandle>(semaphore, [](SemaphoreHandle& object) { return object.post(); });
}

std::int32_t VXSemaphoreGetValue(VXHandle semaphore, std::int32_t* value) noexcept
{
    if (value == nullptr)
        return VXResultFromNative(EINVAL);
    *value = 0;
    return onHandle<SemaphoreHandle>(semaphore, [&](SemaphoreHandle& object) { return object.value(*value); });
}

std::int32_t VXSemaphoreDestroy(VXHandle semaphore) noexcept
{
    auto* object = objectOf<SemaphoreHandle>(semaphore);
    if (object == nullptr || object->isNamed)
        return VXResultFromNative(EINVAL);
    const int error = static_cast<Semaphore*>(object)->destroyable();
    if (error == 0)
        delete object;
    return VXResultFromNative(error);
}

std::int32_t VXConditionCreate(const char*, std::uint32_t, VXHandle* condition) noexcept
{
    return createHandle<Condition>(condition);
}

std::int32_t VXConditionAcquire(VXHandle condition) noexcept
{
    return onHandle<Condition>(condition, [](Condition& object) { return object.acquire(); });
}

std::int32_t VXConditionRelease(VXHandle condition) noexcept
{
    return onHandle<Condition>(condition, [](Condition& object) { return object.release(); });
}

std::int32_t VXConditionWait(VXHandle condition) noexcept
{
    return VXConditionTimedWait(condition, VX_WAIT_FOREVER);
}

std::int32_t VXConditionTimedWait(VXHandle condition, std::uint32_t milliseconds) noexcept
{
    return onHandle<Condition>(condition, [&](Condition& object) { return object.wait(Deadline::in(milliseconds)); });
}

std::int32_t VXConditionSignal(VXHandle condition) noexcept
{
    return onHandle<Condition>(condition, [](Condition& object) { return object.signal(); });
}

std::int32_t VXConditionBroadcast(VXHandle condition) noexcept
{
    return onHandle<Condition>(condition, [](Condition& object) { return object.broadcast(); });
}

std::int32_t VXConditionDestroy(VXHandle condition) noexcept
{
    return destroyHandle<Condition>(condition);
}
