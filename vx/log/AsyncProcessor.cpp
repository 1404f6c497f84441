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
        for (; m_started < count; ++m_started) {
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
        m_stop = true;
        for (int worker = 0; worker < m_started; ++worker)
            m_signal.signal();
    }

    // ILogProcessor
    void process(const ILogEntry* entry) override
    {
        {
            const sync::ScopedLock lock(m_lock);
            m_queue.emplace_back(entry);
            ++m_open;
        }
        m_signal.signal();
    }

    // IRunnable
    void* run() override
    {
        const WorkerEnd end(*this);
        Reference<const ILogEntry> entry;
        m_signal.wait();
        while (!m_stop) {
            if (takeOldest(entry))
                handOver(entry.get());
            m_signal.wait();
        }
        return nullptr;
    }

    /// Hands over what still waits. An entry whose processing throws keeps none of the others back.
    void drain()
    {
        std::exception_ptr failure;
        const sync::ScopedLock lock(m_lock);
        for (Reference<const ILogEntry> entry; takeOldest(entry);) {
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
        while (m_open > 0) {
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

    /// False where a drain was faster.
    bool takeOldest(Reference<const ILogEntry>& entry)
    {
        Reference<const ILogEntry> oldest;
        {
            const sync::ScopedLock lock(m_lock);
            if (m_queue.empty())
                return false;
            oldest = std::move(m_queue.front());
            m_queue.pop_front();
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
        if (--m_open == 0)
            tellWaiters();
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

    Reference<ILogProcessor> m_target;
    sync::Mutex m_lock;
    sync::Semaphore m_signal; ///< a post for each entry queued, and one for each worker at the end
    std::deque<Reference<const ILogEntry>, vxsys::Allocator<Reference<const ILogEntry>>> m_queue; ///< under the lock
    int m_started = 0;
    std::atomic<bool> m_stop {false};
    sync::Condition m_done;
    std::atomic<std::int64_t> m_open {0}; ///< entries that wait or are being processed
    std::atomic<int> m_workers {0};
    std::atomic<int> m_waiters {0};
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
