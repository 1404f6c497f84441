#include "tests/Outcome.h"
#include "tests/Slots.h"
#include "tests/Threads.h"
#include "vx/Exceptions.h"
#include "vx/Result.h"
#include "vx/sync/Condition.h"
#include "vx/sync/Event.h"
#include "vx/sync/FakeMutex.h"
#include "vx/sync/Gate.h"
#include "vx/sync/Mutex.h"
#include "vx/sync/ReaderWriterLock.h"
#include "vx/sync/ScopedLock.h"
#include "vx/sync/Semaphore.h"
#include "vxsys/Lock.h"
#include "vxsys/Result.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <concepts>
#include <cstdint>
#include <functional>
#include <list>
#include <pthread.h>
#include <span>
#include <string>
#include <thread>

namespace vx::sync {
namespace {

constexpr std::uint32_t FOR_EVER = 0xFFFFFFFF, NEARLY_FOR_EVER = 0xFFFFFFFE;

template <std::invocable Work>
auto elsewhere(Work work)
{
    decltype(work()) result {};
    Doing([&] { result = work(); }).join();
    return result;
}

/// Whether another thread can acquire the lock at once. It releases it again.
template <class Lock>
bool isFree(Lock& lock, bool (Lock::*take)() = &Lock::tryWait, void (Lock::*give)() = &Lock::signal)
{
    return elsewhere([&] {
        const bool isTaken = (lock.*take)();
        if (isTaken)
            (lock.*give)();
        return isTaken;
    });
}
bool mayRead(ReaderWriterLock& lock)
{
    return isFree(lock, &ReaderWriterLock::tryWaitShared, &ReaderWriterLock::signalShared);
}

/// Two threads that acquire a lock and record the order.
struct Noting {
    void write()
    {
        lock.wait();
        order += "writer ";
        lock.signal();
    }
    void read()
    {
        lock.waitShared();
        order += "reader ";
        lock.signalShared();
    }

    ReaderWriterLock lock;
    std::string order;
};

template <class Lock>
class LockObjectTest : public testing::Test {
protected:
    ~LockObjectTest() noexcept override { } // a lock that cannot be destroyed ends the program

    Lock m_lock;
};
using LockTypes = testing::Types<Mutex, ReaderWriterLock>;
TYPED_TEST_SUITE(LockObjectTest, LockTypes);

TYPED_TEST(LockObjectTest, LetsOneThreadInAtATime)
{
    int count = 0; // not atomic on purpose
    inThreads(4, [&](int) {
        for (int turn = 0; turn < 1000; ++turn) {
            const ScopedLock guard(this->m_lock);
            ++count;
        }
    });
    EXPECT_EQ(count, 4000);
}

TYPED_TEST(LockObjectTest, IsReleasedByItsHolderOnly)
{
    LockObject& lock = this->m_lock;
    EXPECT_LT(resultOf([&] { lock.signal(); }), 0) << "no thread holds it";
    lock.wait();
    EXPECT_LT(elsewhere([&] { return resultOf([&] { lock.signal(); }); }), 0);
    EXPECT_FALSE(isFree(lock)) << "it is still held";
    lock.signal();
    EXPECT_LT(resultOf([&] { lock.signal(); }), 0);
}

template <class Lock>
void leaveByException(void (Lock::*take)())
{
    Lock lock;
    (lock.*take)();
    throw 7;
}

/// A leak would be reported by the sanitizer.
TEST(Sync, DestroysALockThatTheThreadHolds)
{
    EXPECT_THROW(leaveByException(&Mutex::wait), int);
    EXPECT_THROW(leaveByException(&ReaderWriterLock::wait), int);
    EXPECT_THROW(leaveByException(&ReaderWriterLock::waitShared), int);
    EXPECT_THROW(leaveByException(&Condition::acquire), int);
    EXPECT_EQ(resultOf([] {
        Mutex mutex;
        mutex.wait();
        mutex.wait();
    }),
        VXResultFromNative(EBUSY));
    EXPECT_EQ(resultOf([] {
        ReaderWriterLock lock;
        lock.waitShared();
    }),
        VXResultFromNative(EBUSY));
}

TEST(MutexPause, TakesBackWhatWasHeldAlsoFromItself)
{
    Mutex mutex;
    mutex.wait();
    EXPECT_TRUE(mutex.tryWait());
    {
        const MutexPause pause(mutex);
        EXPECT_TRUE(isFree(mutex));
        mutex.wait();
    }
    for (int held = 3; held > 0; --held) {
        EXPECT_FALSE(isFree(mutex)) << held;
        mutex.signal();
    }
    EXPECT_THROW(mutex.signal(), ResultException);
}

TEST(ScopedLock, ReleasesWhenTheBlockThrowsAndTellsAFailedRelease)
{
    Mutex mutex;
    EXPECT_THROW(
        {
            const ScopedLock guard(mutex);
            throw 7;
        },
        int);
    EXPECT_TRUE(isFree(mutex));
    EXPECT_THROW(
        {
            const ScopedLock guard(mutex);
            mutex.signal();
        },
        ResultException);
}

TEST(ReaderWriterLock, TellsWhoMayJoinWhom)
{
    ReaderWriterLock lock;
    EXPECT_TRUE(mayRead(lock) && isFree(lock));
    lock.waitShared();
    EXPECT_TRUE(mayRead(lock) && !isFree(lock));
    EXPECT_TRUE(lock.tryWaitShared());
    lock.signalShared();
    EXPECT_TRUE(mayRead(lock) && !isFree(lock)) << "one reader is left";
    lock.signalShared();
    lock.wait();
    EXPECT_TRUE(!mayRead(lock) && !isFree(lock));
    lock.signal();
    EXPECT_TRUE(mayRead(lock) && isFree(lock));
}

TEST(ReaderWriterLock, PutsAWaitingWriterBeforeNewReadersButNotBeforeItsOwn)
{
    Noting noting;
    ReaderWriterLock& lock = noting.lock;
    for (int i = 0; i < 100; ++i) { // read locks that other threads released must not be counted
        lock.waitShared();
        Doing([&] { lock.signalShared(); }).join();
    }
    lock.waitShared();
    Doing writer([&] { noting.write(); });
    writer.awaitWaiting();
    EXPECT_FALSE(mayRead(lock)) << "a new reader stands back";
    Doing reader([&] { noting.read(); });
    reader.awaitWaiting();
    lock.waitShared(); // would never return if this reader waited for the writer
    lock.signalShared();
    lock.signalShared();
    writer.join();
    reader.join();
    EXPECT_EQ(noting.order, "writer reader ");
}

TEST(ReaderWriterLock, LetsTheWaitingReadersInWhenAWriterLeaves)
{
    Noting noting;
    ReaderWriterLock& lock = noting.lock;
    lock.wait();
    Doing nextWriter([&] { noting.write(); });
    nextWriter.awaitWaiting();
    Doing reader([&] { noting.read(); });
    reader.awaitWaiting();
    lock.signal();
    nextWriter.join();
    reader.join();
    EXPECT_EQ(noting.order, "reader writer ");
}

TEST(ReaderWriterLock, StarvesNobody)
{
    ReaderWriterLock lock;
    std::atomic<bool> ends {false};
    int written = 0;
    std::list<Doing> others;
    for (int i = 0; i < 2; ++i) { // at any time at least one of the readers reads
        others.emplace_back([&] {
            while (!ends) {
                lock.waitShared();
                EXPECT_GE(written, 0);
                std::this_thread::yield();
                lock.signalShared();
            }
        });
        others.emplace_back([&] {
            while (!ends) {
                const ScopedLock guard(lock);
                ++written;
            }
        });
    }
    for (int turn = 0; turn < 50; ++turn) {
        {
            const ScopedLock guard(lock);
            ++written;
        }
        lock.waitShared();
        lock.signalShared();
    }
    ends = true;
    others.clear();
    EXPECT_GE(written, 50);
}

TEST(ReaderWriterLock, RefusesWhatWouldWaitForItself)
{
    ReaderWriterLock lock;
    EXPECT_LT(resultOf([&] { lock.signalShared(); }), 0) << "no thread reads";
    lock.wait();
    EXPECT_LT(resultOf([&] { lock.wait(); }), 0);
    EXPECT_LT(resultOf([&] { lock.waitShared(); }), 0);
    EXPECT_FALSE(lock.tryWait() || lock.tryWaitShared());
    lock.signal();
    lock.waitShared();
    EXPECT_EQ(resultOf([&] { lock.wait(); }), VXResultFromNative(EDEADLK)) << "it reads itself";
    EXPECT_FALSE(lock.tryWait());
    Doing([&] { lock.signalShared(); }).join(); // another thread may release it
    EXPECT_TRUE(lock.tryWait());
    lock.signal();
}

TEST(ReaderWriterLock, DoesNotTakeAThreadForAReaderWhoseReadWasReleased)
{
    VXHandle lock = nullptr;
    ASSERT_EQ(VXRWLockCreate(nullptr, 0, &lock), 0);
    EXPECT_EQ(VXRWLockAcquireRead(lock), 0);
    EXPECT_EQ(elsewhere([&] { return VXRWLockAcquireRead(lock); }), 0);
    EXPECT_EQ(elsewhere([&] { return VXRWLockReleaseRead(lock); }), 0) << "this thread's, or the other one's";
    EXPECT_EQ(VXRWLockTryAcquireWrite(lock), RESULT_TIMED_OUT) << "it may wait";
    EXPECT_EQ(VXRWLockAcquireRead(lock), 0);
    EXPECT_EQ(VXRWLockAcquireWrite(lock), VXResultFromNative(EDEADLK)) << "it reads for certain";
    EXPECT_EQ(VXRWLockReleaseAll(lock), 0);
    EXPECT_EQ(VXRWLockTryAcquireWrite(lock), 0);
    EXPECT_EQ(VXRWLockReleaseAll(lock), 0);
    EXPECT_EQ(VXRWLockDestroy(lock), 0);
}

TEST(Event, ResetsItselfBehindTheOneThatItFrees)
{
    Event event;
    EXPECT_FALSE(event.wait(0)) << "born without a signal";
    event.signal();
    event.signal();
    EXPECT_FALSE(event.tryWait()) << "it does not look";
    EXPECT_TRUE(event.wait(0)) << "so the signal is still there";
    EXPECT_FALSE(event.wait(0)) << "only one is kept without a waiter";
}

TEST(Event, FreesAWaiterForEachSignal)
{
    Event event;
    std::list<Doing> waiters;
    waiters.emplace_back([&] { event.wait(); });
    waiters.emplace_back([&] { EXPECT_TRUE(event.wait(FOR_EVER)); });
    waiters.emplace_back([&] { EXPECT_TRUE(event.wait(NEARLY_FOR_EVER)); });
    for (const Doing& waiter : waiters)
        waiter.awaitWaiting();
    event.signal();
    event.signal();
    EXPECT_FALSE(event.wait(0)) << "whether they have run or not";
    const auto doneCount = [&] { return std::count_if(waiters.begin(), waiters.end(), std::mem_fn(&Doing::isDone)); };
    while (doneCount() < 2)
        std::this_thread::yield();
    std::find_if_not(waiters.begin(), waiters.end(), std::mem_fn(&Doing::isDone))->awaitWaiting();
    EXPECT_EQ(doneCount(), 2);
    event.signal();
}

TEST(Gate, LetsAllPassWhileItIsOpen)
{
    Gate gate;
    const auto passes = [&] { return gate.tryWait() && gate.wait(0) && gate.wait(FOR_EVER); };
    EXPECT_FALSE(gate.tryWait() || gate.wait(0)) << "born closed";
    gate.open();
    EXPECT_TRUE(passes() && passes() && elsewhere(passes));
    gate.wait();
    gate.close();
    EXPECT_FALSE(gate.tryWait() || gate.wait(0));
}

TEST(Gate, FreesAllWhoWaitedThoughItClosesAtOnce)
{
    Gate gate;
    Doing first([&] { gate.wait(); });
    Doing second([&] { EXPECT_TRUE(gate.wait(NEARLY_FOR_EVER)); });
    first.awaitWaiting();
    second.awaitWaiting();
    gate.open();
    gate.close();
    EXPECT_FALSE(gate.tryWait());
}

TEST(Semaphore, CountsWhatIsGivenAndTaken)
{
    Semaphore semaphore(2);
    EXPECT_EQ(semaphore.getValue(), 2);
    semaphore.wait();
    EXPECT_TRUE(semaphore.tryWait());
    EXPECT_FALSE(semaphore.tryWait());
    Doing waiter([&] { semaphore.wait(); });
    waiter.awaitWaiting();
    semaphore.signal();
    waiter.join();
    EXPECT_EQ(semaphore.getValue(), 0);
}

TEST(Sync, WaitsNoLessThanTheMillisecondsItIsTold)
{
    constexpr std::uint32_t MILLISECONDS = 20;
    Event event;
    Gate gate;
    Condition condition;
    Mutex mutex;
    ReaderWriterLock lock;
    Semaphore semaphore, held, release;
    Doing other([&] {
        mutex.wait();
        lock.wait();
        held.signal();
        release.wait();
        lock.signal();
        mutex.signal();
    });
    held.wait();
    const std::function<bool()> timeOuts[]
        = {[&] { return !event.wait(MILLISECONDS); }, [&] { return !gate.wait(MILLISECONDS); },
            [&] { return !mutex.waitFor(MILLISECONDS); }, [&] { return !lock.waitFor(MILLISECONDS); },
            [&] { return !lock.waitSharedFor(MILLISECONDS); }, [&] { return !semaphore.waitFor(MILLISECONDS); },
            [&] {
                const Condition::Holder holder(condition);
                return resultOf([&] { condition.wait(MILLISECONDS); }) == RESULT_TIMED_OUT;
            }};
    for (const auto& timedOut : timeOuts) {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_TRUE(timedOut());
        EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(MILLISECONDS));
    }
    EXPECT_FALSE(mutex.waitFor(0) || lock.waitFor(0) || lock.waitSharedFor(0) || semaphore.waitFor(0));
    release.signal();
    semaphore.signal();
    EXPECT_TRUE(mutex.waitFor(VX_WAIT_FOREVER) && mutex.waitFor(0) && lock.waitFor(VX_WAIT_FOREVER)
        && semaphore.waitFor(VX_WAIT_FOREVER));
    EXPECT_THROW(lock.waitSharedFor(0), ResultException) << "it would wait for itself";
    mutex.signal();
    mutex.signal();
    lock.signal();
    EXPECT_TRUE(lock.waitSharedFor(0));
    lock.signalShared();
}

TEST(Condition, HandsItsLockToWhoeverItFrees)
{
    Condition condition;
    int ready = 0, freed = 0;
    const auto waitForReady = [&] {
        const Condition::Holder holder(condition);
        while (ready == 0)
            condition.wait();
        --ready;
        ++freed;
    };
    std::list<Doing> waiters;
    for (int i = 0; i < 3; ++i)
        waiters.emplace_back(waitForReady).awaitWaiting();
    {
        const Condition::Holder holder(condition);
        ready = 1;
        condition.signal();
    }
    while (std::none_of(waiters.begin(), waiters.end(), std::mem_fn(&Doing::isDone)))
        std::this_thread::yield();
    {
        const Condition::Holder holder(condition);
        EXPECT_EQ(freed, 1);
        ready = 2;
        condition.broadcast();
    }
    waiters.clear();
    const Condition::Holder holder(condition);
    EXPECT_EQ(freed, 3);
}

TEST(Condition, RefusesWhoDoesNotHoldItAndWhoHoldsItAlready)
{
    Condition condition;
    EXPECT_LT(resultOf([&] { condition.wait(); }), 0);
    EXPECT_LT(resultOf([&] { condition.wait(1); }), 0);
    EXPECT_LT(resultOf([&] { condition.release(); }), 0);
    condition.signal();
    condition.acquire();
    EXPECT_LT(resultOf([&] { condition.acquire(); }), 0);
    EXPECT_LT(elsewhere([&] { return resultOf([&] { condition.release(); }); }), 0);
    condition.release();
}

using Call = std::int32_t (*)(VXHandle) noexcept;

/// The locks that belong to a thread, and last the one that another thread may release.
constexpr struct {
    const char* name;
    std::int32_t (*create)(const char*, std::uint32_t, VXHandle*) noexcept;
    Call take, give, destroy;
} HELD[] = {
    {"Mutex", VXMutexCreate, VXMutexAcquire, VXMutexRelease, VXMutexDestroy},
    {"Condition", VXConditionCreate, VXConditionAcquire, VXConditionRelease, VXConditionDestroy},
    {"writer", VXRWLockCreate, VXRWLockAcquireWrite, VXRWLockReleaseWrite, VXRWLockDestroy},
    {"reader", VXRWLockCreate, VXRWLockAcquireRead, VXRWLockReleaseRead, VXRWLockDestroy},
};

TEST(PlatformLocks, AreNotDestroyedWhileSomebodyNeedsThem)
{
    VXHandle event = nullptr, semaphore = nullptr;
    ASSERT_EQ(VXEventCreate(nullptr, 0, &event) | VXSemaphoreCreate(0, nullptr, 0, &semaphore), 0);
    const struct {
        const char* name;
        VXHandle handle;
        Call wait, free, destroy;
    } awaited[] = {{"Event", event, VXEventWait, VXEventSignal, VXEventDestroy},
        {"Semaphore", semaphore, VXSemaphoreWait, VXSemaphorePost, VXSemaphoreDestroy}};
    for (const auto& row : awaited) {
        Doing waiter([&] { EXPECT_EQ(row.wait(row.handle), 0) << row.name; });
        waiter.awaitWaiting();
        EXPECT_LT(row.destroy(row.handle), 0) << row.name;
        row.free(row.handle);
        waiter.join();
        EXPECT_EQ(row.destroy(row.handle), 0) << row.name;
    }
    for (const auto& row : HELD) {
        VXHandle handle = nullptr;
        ASSERT_EQ(row.create(nullptr, 0, &handle), 0) << row.name;
        EXPECT_EQ(row.take(handle), 0) << row.name;
        EXPECT_LT(row.destroy(handle), 0) << row.name;
        EXPECT_LT(elsewhere([&] { return row.destroy(handle); }), 0) << row.name;
        EXPECT_EQ(row.give(handle), 0) << row.name << " is as it was";
        EXPECT_EQ(row.destroy(handle), 0) << row.name;
    }
}

/// The system reuses the handle of an ended thread, which is an address, for a new one.
TEST(PlatformLocks, BelongToNoLaterThread)
{
    const std::span rows(HELD, std::size(HELD) - 1);
    static VXHandle s_handles[std::size(HELD) - 1]; // never destroyed: an ended thread still holds them
    for (const auto& row : rows) {
        VXHandle& handle = s_handles[&row - HELD];
        ASSERT_EQ(row.create(nullptr, 0, &handle), 0) << row.name;
        pthread_t holder {}, later {};
        std::thread([&] {
            holder = ::pthread_self();
            EXPECT_EQ(row.take(handle), 0) << row.name;
        }).join();
        for (int attempt = 0; attempt < 100 && ::pthread_equal(holder, later) == 0; ++attempt)
            std::thread([&] {
                later = ::pthread_self();
                EXPECT_LT(row.give(handle), 0) << row.name;
            }).join();
        EXPECT_NE(::pthread_equal(holder, later), 0) << "no thread got the handle";
    }
    EXPECT_EQ(VXMutexTryAcquire(s_handles[0]), RESULT_TIMED_OUT);
    EXPECT_EQ(elsewhere([&] { return VXMutexTryAcquire(s_handles[0]); }), RESULT_TIMED_OUT);
}

TEST(PlatformLocks, StayWithTheThreadThatForks)
{
    VXHandle mutex = nullptr, lock = nullptr;
    ASSERT_EQ(VXMutexCreate(nullptr, 0, &mutex) | VXRWLockCreate(nullptr, 0, &lock), 0);
    ASSERT_EQ(VXMutexAcquire(mutex) | VXRWLockAcquireWrite(lock), 0);
    Child child([&](Child::Side&) {
        EXPECT_EQ(VXMutexRelease(mutex), 0);
        EXPECT_EQ(VXRWLockReleaseWrite(lock), 0);
    });
    EXPECT_EQ(child.wait(), 0);
    EXPECT_EQ(VXMutexRelease(mutex) | VXRWLockReleaseWrite(lock), 0);
    EXPECT_EQ(VXMutexDestroy(mutex) | VXRWLockDestroy(lock), 0);
}

TEST(PlatformLocks, RefuseAHandleOfAnotherKindAndNone)
{
    VXHandle gate = nullptr;
    ASSERT_EQ(VXGateCreate("a name", 0, &gate), 0);
    for (const auto call : {VXMutexAcquire, VXEventWait, VXRWLockAcquireRead, VXSemaphorePost, VXConditionDestroy}) {
        EXPECT_EQ(call(gate), RESULT_INVALID_ARGUMENT);
        EXPECT_EQ(call(nullptr), RESULT_INVALID_ARGUMENT);
    }
    EXPECT_EQ(VXGateDestroy(gate), 0);
    EXPECT_EQ(VXGateCreate(nullptr, 0, nullptr), RESULT_INVALID_ARGUMENT);
}

TEST(Sync, KeepsTheOrderOfVirtualOperations)
{
    using Wait = void (Object::*)();
    expectSlots("sync::Object", 11, {static_cast<Wait>(&Object::wait), &Object::tryWait});
    expectSlots("LockObject", 11, {&LockObject::wait, &LockObject::tryWait, &LockObject::signal});
    expectSlots("Mutex", 11, {&Mutex::wait, &Mutex::tryWait, &Mutex::signal});
    expectSlots("FakeMutex", 11, {&FakeMutex::wait, &FakeMutex::tryWait, &FakeMutex::signal});
    expectSlots("ReaderWriterLock", 11,
        {&ReaderWriterLock::wait, &ReaderWriterLock::tryWait, &ReaderWriterLock::signal, &ReaderWriterLock::waitShared,
            &ReaderWriterLock::tryWaitShared, &ReaderWriterLock::signalShared});
    expectSlots("Semaphore", 11, {&Semaphore::wait, &Semaphore::tryWait, &Semaphore::signal, &Semaphore::getValue});
    expectSlots("Event", 11,
        {static_cast<void (Event::*)()>(&Event::wait), &Event::tryWait,
            static_cast<bool (Event::*)(std::uint32_t)>(&Event::wait), &Event::signal});
    expectSlots("Gate", 11,
        {static_cast<void (Gate::*)()>(&Gate::wait), &Gate::tryWait,
            static_cast<bool (Gate::*)(std::uint32_t)>(&Gate::wait), &Gate::open, &Gate::close});
}

} // namespace
} // namespace vx::sync
