#include "vx/log/AsyncProcessor.h"

#include "vx/Exception.h"
#include "vx/Result.h"
#include "vx/exec/Thread.h"
#include "vx/log/ILogEntry.h"
#include "vx/sync/Condition.h"
#include "vx/sync/Mutex.h"
#include "vx/sync/ScopedLock.h"
#include "vx/sync/Semaphore.h"
#include "vxsys/Memory.h"

#include <atomic>
#include <chrono>
#include <deque>
#include <exception>
#include <utility>

namespace vx::log {

/// The queue and the work on it. Each worker has a count of it, so that it outlives the `AsyncProcessor` as long as one of
/// them runs.
class AsyncProcessorImpl final : public Object, public exec::IRunnable, public ILogProcessor {
public:
    explicit AsyncProcessorImpl(ILogProcessor* target)
        : m_target(target)
        , m_lock("vx/log/AsyncProcessorImpl::m_lock")
        , m_signal(0, "vx/log/AsyncProcessorImpl::m_signal")
    {
        if (target == nullptr)
            throwResult(RESULT_INVALID_ARGUMENT);
    }

    VX_OBJECT_UNKNOWN(Object)

    void startWorkers(int count)
    {
        for (int started = 0; started < count; ++started) {
            exec::Thread worker(this);
            ++m_workers;
            try {
                worker.start();
            } catch (...) {
                --m_workers;
                endWorkers();
                throw;
            }
        }
    }

    /// Each worker ends before its next entry.
    void endWorkers()
    {
        int sleepers = 0;
        {
            const sync::ScopedLock lock(m_lock);
            m_stop = true;
            sleepers = std::exchange(m_sleepers, 0);
        }
        for (; sleepers > 0; --sleepers)
            m_signal.signal();
    }

    // ILogProcessor
    void process(const ILogEntry* entry) override
    {
        bool wakes = false;
        {
            const sync::ScopedLock lock(m_lock);
            m_arrived.emplace_back(entry);
            m_queued.store(m_queued.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
            wakes = m_sleepers > 0;
            m_sleepers -= wakes ? 1 : 0;
        }
        if (wakes)
            m_signal.signal();
    }

    // IRunnable
    void* run() override
    {
        const WorkerEnd end(*this);
        Reference<const ILogEntry> entry;
        while (!m_stop) {
            if (takeOldest(entry, true))
                handOver(entry.get());
            else if (!m_stop)
                m_signal.wait();
        }
        return nullptr;
    }

    /// Hands over what still waits. An entry whose processing throws keeps none of the others back.
    void drain()
    {
        std::exception_ptr failure;
        const sync::ScopedLock takeLock(m_takeLock);
        const sync::ScopedLock lock(m_lock);
        for (Reference<const ILogEntry> entry; takeOldest(entry, false);) {
            try {
                handOver(entry.get());
            } catch (...) {
                if (failure == nullptr)
                    failure = std::current_exception();
            }
        }
        if (failure != nullptr)
            std::rethrow_exception(failure);
    }

    bool waitUntilDone(std::uint32_t milliseconds)
    {
        using Clock = std::chrono::steady_clock;
        const auto end = Clock::now() + std::chrono::milliseconds(milliseconds);
        const Waiter waiter(*this);
        const sync::Condition::Holder holder(m_done);
        while (!isDone()) {
            if (m_workers == 0)
                return false;
            std::uint32_t left = FOREVER;
            if (milliseconds != FOREVER) {
                const auto rest = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
                if (rest <= 0)
                    return false;
                left = static_cast<std::uint32_t>(rest);
            }
            try {
                m_done.wait(left);
            } catch (const ResultException& result) {
                if (result.getResult() != RESULT_TIMED_OUT)
                    throw;
            }
        }
        return true;
    }

private:
    static constexpr std::uint32_t FOREVER = 0xFFFFFFFF;

    /// Somebody wants to hear of the end of the work.
    class Waiter {
    public:
        explicit Waiter(AsyncProcessorImpl& impl) noexcept
            : m_impl(impl)
        {
            ++m_impl.m_waiters;
        }
        ~Waiter() { --m_impl.m_waiters; }
        Waiter(const Waiter&) = delete;
        Waiter& operator=(const Waiter&) = delete;

    private:
        AsyncProcessorImpl& m_impl;
    };

    /// Takes a worker off the list, however it ends.
    class WorkerEnd {
    public:
        explicit WorkerEnd(AsyncProcessorImpl& impl) noexcept
            : m_impl(impl)
        {
        }
        ~WorkerEnd()
        {
            --m_impl.m_workers;
            m_impl.tellWaiters();
        }
        WorkerEnd(const WorkerEnd&) = delete;
        WorkerEnd& operator=(const WorkerEnd&) = delete;

    private:
        AsyncProcessorImpl& m_impl;
    };

    /// False: none waits, and the calling worker, where it is one, is counted among the sleepers.
    bool takeOldest(Reference<const ILogEntry>& entry, bool isWorker)
    {
        Reference<const ILogEntry> oldest;
        {
            const sync::ScopedLock takeLock(m_takeLock);
            if (m_leaving.empty()) {
                const sync::ScopedLock lock(m_lock);
                m_leaving.swap(m_arrived);
                if (m_leaving.empty()) {
                    m_sleepers += isWorker ? 1 : 0;
                    return false;
                }
            }
            oldest = std::move(m_leaving.front());
            m_leaving.pop_front();
        }
        entry = std::move(oldest); // the one before goes without the lock
        return true;
    }

    void handOver(const ILogEntry* entry)
    {
        try {
            m_target->process(entry);
        } catch (...) {
            closeOne();
            throw;
        }
        closeOne();
    }

    void closeOne()
    {
        ++m_closed;
        if (m_waiters > 0 && isDone())
            tellWaiters();
    }

    bool isDone() const noexcept
    {
        const std::int64_t closed = m_closed; // looked at first: more may arrive
        return closed == m_queued;
    }

    // A waiter announces itself before it looks at the counts, and these are changed before the announcement is looked at:
    // one of the two sees the other.
    void tellWaiters()
    {
        if (m_waiters == 0)
            return;
        const sync::Condition::Holder holder(m_done);
        m_done.broadcast();
    }

    using Queue = std::deque<Reference<const ILogEntry>, vxsys::Allocator<Reference<const ILogEntry>>>;

    Reference<ILogProcessor> m_target;
    std::atomic<bool> m_stop {false};
    std::atomic<int> m_workers {0};
    std::atomic<int> m_waiters {0};
    sync::Condition m_done;

    // Callers and workers seldom meet: all that has arrived goes over at once to those who take it.
    sync::Mutex m_lock;
    Queue m_arrived; ///< under the lock
    int m_sleepers = 0; ///< under the lock: workers that found nothing, and for whom no post is under way
    std::atomic<std::int64_t> m_queued {0}; ///< written under the lock
    sync::Semaphore m_signal;

    sync::Mutex m_takeLock; ///< taken before the other
    Queue m_leaving; ///< under this lock; older than all that has arrived
    std::atomic<std::int64_t> m_closed {0}; ///< those that the target is done with
};

AsyncProcessor::AsyncProcessor(ILogProcessor* target, int threads)
    : m_impl(new AsyncProcessorImpl(target))
{
    m_impl->startWorkers(threads);
}

AsyncProcessor::~AsyncProcessor() noexcept(false)
{
    m_impl->endWorkers();
    m_impl->drain();
}

Reference<AsyncProcessor> AsyncProcessor::create(ILogProcessor* target, int threads)
{
    return new AsyncProcessor(target, threads);
}

void AsyncProcessor::process(const ILogEntry* entry)
{
    m_impl->process(entry);
}

bool AsyncProcessor::waitUntilDone(std::uint32_t milliseconds)
{
    return m_impl->waitUntilDone(milliseconds);
}

} // namespace vx::log
