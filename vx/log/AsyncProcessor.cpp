#include "vx/log/AsyncProcessor.h"

#include "vx/Exception.h"
#include "vx/Result.h"
#include "vx/ThreadAnnotations.h"
#include "vx/exec/IRunnable.h"
#include "vx/log/ILogEntry.h"
#include "vx/sync/Condition.h"
#include "vx/sync/Mutex.h"
#include "vx/sync/ScopedLock.h"
#include "vx/sync/Semaphore.h"
#include "vxsys/Memory.h"
#include "vxsys/Thread.h"
#include "vxsys/detail/Deadline.h"

#include <atomic>
#include <deque>
#include <exception>
#include <utility>
#include <vector>

namespace vx::log {

/// The queue and its workers. Each worker holds a reference to it, so it exists as long as a worker runs, even after
/// the `AsyncProcessor` was destroyed.
class AsyncProcessorImpl final : public Object, public exec::IRunnable, public ILogProcessor {
public:
    AsyncProcessorImpl(ILogProcessor* target, AsyncProcessor::Failures failures)
        : m_target(target)
        , m_failures(failures)
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
            try {
                startWorker();
            } catch (...) {
                endWorkers();
                throw;
            }
        }
    }

    /// Each worker ends before its next entry. The stop of the library waits for them.
    void endWorkers()
    {
        for (const VXThreadHandle thread : std::exchange(m_threads, {}))
            VXThreadLeave(thread);
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
                work(entry.get());
            else if (!m_stop)
                m_signal.wait();
        }
        return nullptr;
    }

    /// Passes all waiting entries to the target. An exception does not stop it; the first one is thrown at the end.
    void drain()
    {
        std::exception_ptr failure;
        const sync::ScopedLock takeLock(m_takeLock);
        const sync::ScopedLock lock(m_lock);
        for (Reference<const ILogEntry> entry; takeOldest(entry, false);) {
            try {
                handOver(entry.get());
            } catch (...) {
                vxsys::passForcedUnwind();
                if (failure == nullptr)
                    failure = std::current_exception();
            }
        }
        if (failure != nullptr)
            std::rethrow_exception(failure);
    }

    bool waitUntilDone(std::uint32_t milliseconds)
    {
        const auto end = vxsys::detail::Deadline::in(milliseconds);
        const Waiter waiter(*this);
        const sync::Condition::Holder holder(m_done);
        while (!isDone()) {
            if (m_workers == 0)
                return false;
            const std::uint32_t left = end.millisecondsLeft();
            if (left == 0)
                return false;
            try {
                m_done.wait(left);
            } catch (const ResultException& result) {
                if (result.getResult() != RESULT_TIMED_OUT)
                    throw;
            }
        }
        return m_failed.exchange(0) == 0;
    }

private:
    /// A caller that waits for the end of the work.
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

    /// Counts the end of a worker, whatever caused it.
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

    void startWorker()
    {
        m_threads.reserve(m_threads.size() + 1);
        Reference<AsyncProcessorImpl> ofThread(this);
        ++m_workers;
        VXThreadHandle thread = VX_THREAD_INVALID_HANDLE;
        std::uint32_t id = 0;
        const std::int32_t result = VXThreadCreate(runWorker, ofThread.get(), 0, 0, &thread, &id);
        if (failed(result)) {
            --m_workers;
            throw ResultException(result, u"thread creation failed");
        }
        static_cast<void>(ofThread.detach()); // the thread releases it
        if (failed(VXThreadTrack(thread)))
            VXThreadDetach(thread); // the worker works without it
        else
            m_threads.push_back(thread);
    }

    static void* runWorker(void* argument)
    {
        Reference<AsyncProcessorImpl> self;
        self.attach(static_cast<AsyncProcessorImpl*>(argument));
        try {
            self->run();
        } catch (...) { // an exception of the target, which ends this worker
            vxsys::passForcedUnwind();
        }
        return nullptr;
    }

    void work(const ILogEntry* entry)
    {
        try {
            handOver(entry);
        } catch (...) {
            vxsys::passForcedUnwind();
            if (m_failures == AsyncProcessor::Failures::END_WORKER)
                throw;
        }
    }

    /// Returns false if no entry waits. A worker is then counted as sleeping.
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
        entry = std::move(oldest); // releases the previous entry without the lock
        return true;
    }

    void handOver(const ILogEntry* entry)
    {
        try {
            m_target->process(entry);
        } catch (...) {
            ++m_failed;
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
        const std::int64_t closed = m_closed; // read first, because entries may be added meanwhile
        return closed == m_queued;
    }

    // A waiter first announces itself and then reads the counts. A worker first changes the counts and then reads the
    // announcement. So at least one of the two notices the other.
    void tellWaiters()
    {
        if (m_waiters == 0)
            return;
        const sync::Condition::Holder holder(m_done);
        m_done.broadcast();
    }

    using Queue = std::deque<Reference<const ILogEntry>, vxsys::Allocator<Reference<const ILogEntry>>>;

    Reference<ILogProcessor> m_target;
    const AsyncProcessor::Failures m_failures;
    std::vector<VXThreadHandle, vxsys::Allocator<VXThreadHandle>> m_threads; ///< used only by the thread that creates or destroys the processor
    std::atomic<bool> m_stop {false};
    std::atomic<std::int64_t> m_failed {0}; ///< entries for which the target threw since the last completed wait
    std::atomic<int> m_workers {0};
    std::atomic<int> m_waiters {0};
    sync::Condition m_done;

    // Callers and workers use different queues, so they seldom wait for each other. A worker that finds its queue empty
    // exchanges it for the other one.
    sync::Mutex m_lock;
    Queue m_arrived VX_GUARDED_BY(m_lock);
    int m_sleepers VX_GUARDED_BY(m_lock) = 0; ///< workers that found no entry and have not been signalled yet
    std::atomic<std::int64_t> m_queued {0}; ///< changed under m_lock
    sync::Semaphore m_signal;

    sync::Mutex m_takeLock; ///< acquired before m_lock
    Queue m_leaving VX_GUARDED_BY(m_takeLock); ///< entries that are older than those in m_arrived
    std::atomic<std::int64_t> m_closed {0}; ///< entries that the target has processed
};

AsyncProcessor::AsyncProcessor(ILogProcessor* target, int threads, Failures failures)
    : m_impl(new AsyncProcessorImpl(target, failures))
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
    return new AsyncProcessor(target, threads, Failures::END_WORKER);
}

Reference<AsyncProcessor> AsyncProcessor::create(ILogProcessor* target, int threads, Failures failures)
{
    return new AsyncProcessor(target, threads, failures);
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
