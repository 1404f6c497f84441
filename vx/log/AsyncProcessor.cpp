#include "vx/log/AsyncProcessor.h"

#include "vx/Exception.h"
#include "vx/Result.h"
#include "vx/ThreadAnnotations.h"
#include "vx/exec/IRunnable.h"
#include "vx/log/ILogEntry.h"
#include "vx/log/detail/EntryQueue.h"
#include "vx/sync/Condition.h"
#include "vx/sync/detail/WaitUntil.h"
#include "vxsys/Memory.h"
#include "vxsys/Thread.h"
#include "vxsys/detail/Deadline.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <utility>
#include <vector>

namespace vx::log {

namespace {

/// Stores for the present thread whose entries it passes to a target.
class Working {
public:
    explicit Working(const AsyncProcessorImpl* impl) noexcept
        : m_before(std::exchange(s_working, impl))
    {
    }
    ~Working() { s_working = m_before; }
    Working(const Working&) = delete;
    Working& operator=(const Working&) = delete;

    static bool isFor(const AsyncProcessorImpl* impl) noexcept { return s_working == impl; }

private:
    static constinit thread_local const AsyncProcessorImpl* s_working;

    const AsyncProcessorImpl* m_before;
};
constinit thread_local const AsyncProcessorImpl* Working::s_working = nullptr;

} // namespace

/// The queue and its workers. Each worker holds a reference to it, so it exists as long as a worker runs, even after
/// the `AsyncProcessor` was destroyed.
class AsyncProcessorImpl final : public Object, public exec::IRunnable, public ILogProcessor {
public:
    using Failures = AsyncProcessor::Failures;

    AsyncProcessorImpl(ILogProcessor* target, AsyncOptions options, Failures failures);

    VX_OBJECT_UNKNOWN(Object)

    void startWorkers();
    /// Each worker ends before its next entry. The stop of the library waits for them.
    void endWorkers();
    /// Passes all waiting entries to the target. An exception does not stop it; the first one is thrown at the end.
    void drain();
    bool waitUntilDone(std::uint32_t milliseconds);
    AsyncCounts getCounts() const;

    // ILogProcessor
    void process(const ILogEntry* entry) override;

    // IRunnable
    void* run() override;

private:
    /// A caller that waits for the end of the work.
    class Waiter;
    /// Counts the end of a worker, whatever caused it.
    class WorkerEnd;

    void startWorker();
    static void* runWorker(void* argument);

    WhenFull askWhenFull(const ILogEntry* entry);
    bool waitForRoom(const ILogEntry* entry);
    void drop(const ILogEntry* entry);
    void dropNewest(const ILogEntry* entry);
    void dropOldest();

    enum class Outcome { PROCESSED, REFUSED };
    /// Passes the entry to the target, several times if needed. The last exception is passed to `onFailure`, or is
    /// thrown if there is no such function.
    void handOver(const ILogEntry* entry);
    Outcome tryOnce(const ILogEntry* entry, std::exception_ptr& failure);
    /// Returns early if the processor is being destroyed.
    void pause(std::uint32_t milliseconds);
    void report(const ILogEntry* entry, const std::exception_ptr& failure);
    void closeOne();

    bool isDone() const noexcept;
    void tellWaiters();

    const Reference<ILogProcessor> m_target;
    const AsyncOptions m_options;
    const Failures m_failures;
    std::vector<VXThreadHandle, vxsys::Allocator<VXThreadHandle>> m_threads; ///< used only by the owner's thread

    detail::EntryQueue m_queue;
    std::atomic<std::int64_t> m_closed {0}; ///< entries that were in the queue and are processed or dropped
    std::atomic<std::int64_t> m_processed {0};
    std::atomic<std::int64_t> m_failed {0};
    std::atomic<std::int64_t> m_droppedNewest {0}; ///< entries that were never in the queue
    std::atomic<std::int64_t> m_droppedOldest {0};
    std::atomic<std::int64_t> m_lost {0}; ///< failed and dropped since the last completed wait
    std::atomic<bool> m_isDropping {false}; ///< since the queue was empty
    std::atomic<int> m_waiters {0};
    sync::Condition m_done; ///< also ends pauses
};

class AsyncProcessorImpl::Waiter {
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

class AsyncProcessorImpl::WorkerEnd {
public:
    explicit WorkerEnd(AsyncProcessorImpl& impl) noexcept
        : m_impl(impl)
    {
    }
    ~WorkerEnd()
    {
        m_impl.m_queue.removeWorker();
        m_impl.tellWaiters();
    }
    WorkerEnd(const WorkerEnd&) = delete;
    WorkerEnd& operator=(const WorkerEnd&) = delete;

private:
    AsyncProcessorImpl& m_impl;
};

AsyncProcessorImpl::AsyncProcessorImpl(ILogProcessor* target, AsyncOptions options, Failures failures)
    : m_target(target)
    , m_options(std::move(options))
    , m_failures(failures)
    , m_queue(m_options.mostEntries, m_options.mostBytes)
{
    if (target == nullptr)
        throwResult(RESULT_INVALID_ARGUMENT);
}

void AsyncProcessorImpl::startWorkers()
{
    for (int started = 0; started < m_options.threads; ++started) {
        try {
            startWorker();
        } catch (...) {
            endWorkers();
            throw;
        }
    }
}

void AsyncProcessorImpl::startWorker()
{
    m_threads.reserve(m_threads.size() + 1);
    Reference<AsyncProcessorImpl> ofThread(this);
    m_queue.addWorker();
    VXThreadHandle thread = VX_THREAD_INVALID_HANDLE;
    std::uint32_t id = 0;
    const std::int32_t result = VXThreadCreate(runWorker, ofThread.get(), 0, 0, &thread, &id);
    if (failed(result)) {
        m_queue.removeWorker();
        throw ResultException(result, u"thread creation failed");
    }
    static_cast<void>(ofThread.detach()); // the thread releases it
    if (failed(VXThreadTrack(thread)))
        VXThreadDetach(thread); // the worker works without it
    else
        m_threads.push_back(thread);
}

void* AsyncProcessorImpl::runWorker(void* argument)
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

void* AsyncProcessorImpl::run()
{
    const Working working(this);
    const WorkerEnd end(*this);
    for (detail::TakenEntry entry; m_queue.takeOldestOrSleep(entry);) {
        try {
            handOver(entry.get());
        } catch (...) {
            vxsys::passForcedUnwind();
            if (m_failures == Failures::END_WORKER)
                throw;
        }
    }
    return nullptr;
}

void AsyncProcessorImpl::endWorkers()
{
    for (const VXThreadHandle thread : std::exchange(m_threads, {}))
        VXThreadLeave(thread);
    m_queue.closeToWorkers();
    const sync::Condition::Holder holder(m_done);
    m_done.broadcast();
}

void AsyncProcessorImpl::drain()
{
    std::exception_ptr failure;
    const detail::EntryQueue::Closure closure(m_queue);
    const Working working(this);
    for (detail::TakenEntry entry; m_queue.takeOldest(entry);) {
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

void AsyncProcessorImpl::process(const ILogEntry* entry)
{
    while (!m_queue.put(entry)) {
        switch (askWhenFull(entry)) {
        case WhenFull::WAIT:
            if (!waitForRoom(entry))
                return dropNewest(entry);
            break;
        case WhenFull::DROP_NEWEST:
            return dropNewest(entry);
        case WhenFull::DROP_OLDEST:
            dropOldest();
        }
    }
}

WhenFull AsyncProcessorImpl::askWhenFull(const ILogEntry* entry)
{
    if (m_options.onFull == nullptr || entry == nullptr)
        return m_options.whenFull;
    try {
        return m_options.onFull(*entry);
    } catch (...) {
        vxsys::passForcedUnwind();
        dropNewest(entry);
        throw;
    }
}

/// Returns false if no worker makes room, or only the calling one.
bool AsyncProcessorImpl::waitForRoom(const ILogEntry* entry)
{
    return !Working::isFor(this) && m_queue.waitForRoom(entry);
}

void AsyncProcessorImpl::dropNewest(const ILogEntry* entry)
{
    ++m_droppedNewest;
    drop(entry);
}

void AsyncProcessorImpl::dropOldest()
{
    detail::TakenEntry oldest;
    if (!m_queue.takeOldest(oldest))
        return;
    ++m_droppedOldest;
    drop(oldest.get());
    closeOne();
}

void AsyncProcessorImpl::drop(const ILogEntry* entry)
{
    ++m_lost;
    if (m_options.onDrop == nullptr || entry == nullptr || m_isDropping.exchange(true))
        return;
    try {
        m_options.onDrop(*entry);
    } catch (...) { // the entry is counted; the caller cannot handle a failure of the function
        vxsys::passForcedUnwind();
    }
}

void AsyncProcessorImpl::handOver(const ILogEntry* entry)
{
    std::exception_ptr failure;
    std::uint64_t milliseconds = m_options.firstPause;
    for (int left = m_options.tries; tryOnce(entry, failure) == Outcome::REFUSED; milliseconds *= 2) {
        if (--left <= 0)
            return report(entry, failure);
        milliseconds = std::min<std::uint64_t>(milliseconds, m_options.longestPause);
        pause(static_cast<std::uint32_t>(milliseconds));
        if (m_queue.isClosedToWorkers())
            left = 1;
    }
    ++m_processed;
    closeOne();
}

AsyncProcessorImpl::Outcome AsyncProcessorImpl::tryOnce(const ILogEntry* entry, std::exception_ptr& failure)
{
    try {
        m_target->process(entry);
        return Outcome::PROCESSED;
    } catch (...) {
        failure = std::current_exception();
        if (failure != nullptr)
            return Outcome::REFUSED;
        ++m_failed; // the thread ends here
        ++m_lost;
        closeOne();
        throw;
    }
}

void AsyncProcessorImpl::pause(std::uint32_t milliseconds)
{
    const auto end = vxsys::detail::Deadline::in(milliseconds);
    const sync::Condition::Holder holder(m_done);
    while (!m_queue.isClosedToWorkers() && sync::detail::waitUntil(m_done, end)) { }
}

void AsyncProcessorImpl::report(const ILogEntry* entry, const std::exception_ptr& failure)
{
    ++m_failed;
    ++m_lost;
    if (m_options.onFailure != nullptr && entry != nullptr) {
        try {
            m_options.onFailure(*entry, failure);
        } catch (...) { // the failure is counted, and a worker has no caller
            vxsys::passForcedUnwind();
        }
    }
    closeOne();
    if (m_options.onFailure == nullptr)
        std::rethrow_exception(failure);
}

void AsyncProcessorImpl::closeOne()
{
    ++m_closed;
    if (m_isDropping.load(std::memory_order_relaxed) && m_queue.waiting() == 0)
        m_isDropping = false;
    if (m_waiters > 0 && isDone())
        tellWaiters();
}

bool AsyncProcessorImpl::isDone() const noexcept
{
    const std::int64_t closed = m_closed; // read first, because entries may be added meanwhile
    return closed == m_queue.accepted();
}

// A waiter first announces itself and then reads the counts. A worker first changes the counts and then reads the
// announcement. So at least one of the two notices the other.
void AsyncProcessorImpl::tellWaiters()
{
    if (m_waiters == 0)
        return;
    const sync::Condition::Holder holder(m_done);
    m_done.broadcast();
}

bool AsyncProcessorImpl::waitUntilDone(std::uint32_t milliseconds)
{
    const auto end = vxsys::detail::Deadline::in(milliseconds);
    const Waiter waiter(*this);
    const sync::Condition::Holder holder(m_done);
    while (!isDone()) {
        if (m_queue.workers() == 0 || !sync::detail::waitUntil(m_done, end))
            return false;
    }
    return m_lost.exchange(0) == 0;
}

AsyncCounts AsyncProcessorImpl::getCounts() const
{
    AsyncCounts counts;
    counts.processed = m_processed;
    counts.failed = m_failed;
    counts.dropped = m_droppedNewest + m_droppedOldest;
    counts.queued = m_queue.waiting();
    counts.deepest = m_queue.deepest();
    counts.received = m_queue.accepted() + m_droppedNewest;
    return counts;
}

AsyncProcessor::AsyncProcessor(AsyncProcessorImpl* impl)
    : m_impl(impl)
{
    m_impl->startWorkers();
}

AsyncProcessor::~AsyncProcessor() noexcept(false)
{
    m_impl->endWorkers();
    m_impl->drain();
}

Reference<AsyncProcessor> AsyncProcessor::create(ILogProcessor* target, int threads)
{
    return create(target, threads, Failures::END_WORKER);
}

Reference<AsyncProcessor> AsyncProcessor::create(ILogProcessor* target, int threads, Failures failures)
{
    AsyncOptions options;
    options.threads = threads;
    return new AsyncProcessor(Reference<AsyncProcessorImpl>(new AsyncProcessorImpl(target, options, failures)).get());
}

Reference<AsyncProcessor> AsyncProcessor::create(ILogProcessor* target, const AsyncOptions& options)
{
    const bool isLimited = options.mostEntries > 0 || options.mostBytes > 0;
    const bool waitsForNobody
        = isLimited && options.threads < 1 && options.whenFull == WhenFull::WAIT && !options.onFull;
    if (options.tries < 1 || options.mostEntries < 0 || options.mostBytes < 0 || waitsForNobody)
        throwResult(RESULT_INVALID_ARGUMENT);
    Reference<AsyncProcessorImpl> impl(new AsyncProcessorImpl(target, options, Failures::KEEP_WORKER));
    return new AsyncProcessor(impl.get());
}

void AsyncProcessor::process(const ILogEntry* entry)
{
    m_impl->process(entry);
}

bool AsyncProcessor::waitUntilDone(std::uint32_t milliseconds)
{
    return m_impl->waitUntilDone(milliseconds);
}

AsyncCounts AsyncProcessor::getCounts() const
{
    return m_impl->getCounts();
}

} // namespace vx::log
