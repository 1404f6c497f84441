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
#include "vxsys/Thread.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <concepts>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <pthread.h>
#include <set>
#include <shared_mutex>
#include <span>
#include <sstream>
#include <string>
#include <thread>

namespace vx::sync {
namespace {

using namespace std::literals;

constexpr std::uint32_t FOR_EVER = 0xFFFFFFFF, NEARLY_FOR_EVER = 0xFFFFFFFE;

template <std::invocable Work>
auto elsewhere(Work work)
{
    decltype(work()) result {};
    Doing([&] { result = work(); }).join();
    return result;
}

/// A thread that does one operation after another.
class Actor {
public:
    ~Actor()
    {
        m_isOver = true;
        m_thread.join();
    }

    void act(const std::function<bool()>& operation)
    {
        m_result = '?';
        m_operation = &operation;
    }
    /// '+' for true, '-' for false, '!' for a failure, 'D' for a deadlock that was refused, '?' if it has not returned.
    char result() const { return m_result; }
    /// Returns when the operation has returned, or the system reports that the thread waits in it.
    void awaitRest() const
    {
        for (int seen = 0; seen < 3 && m_result == '?'; std::this_thread::yield())
            seen = stateOfThread(static_cast<pid_t>(m_id)) == 'S' ? seen + 1 : 0;
    }

private:
    void run()
    {
        m_id = VXThreadGetCurrentId();
        for (; !m_isOver; std::this_thread::yield()) {
            const auto* const operation = m_operation.exchange(nullptr);
            bool isDone = false;
            if (operation == nullptr)
                continue;
            const std::int32_t failure = resultOf([&] { isDone = (*operation)(); });
            m_result = failure == VXResultFromNative(EDEADLK) ? 'D' : failure != 0 ? '!' : isDone ? '+' : '-';
        }
    }

    std::atomic<const std::function<bool()>*> m_operation {nullptr};
    std::atomic<char> m_result {'+'};
    std::atomic<std::uint32_t> m_id {0};
    std::atomic<bool> m_isOver {false};
    std::thread m_thread {[this] { run(); }};
};

using Operations = std::map<char, std::function<bool()>>;

/// Plays a script and expects what it says. "1w+" lets thread 1 do operation 'w' and says its result. "*2" says that two
/// of the threads that wait return, and that the others still wait.
void play(const Operations& operations, const std::string& script)
{
    std::map<char, Actor> actors;
    std::set<Actor*> waiting;
    std::istringstream steps(script);
    std::string seen;
    for (std::string step; steps >> step;) {
        if (step[0] != '*') {
            Actor& actor = actors[step[0]];
            ASSERT_FALSE(waiting.contains(&actor)) << step << " comes too early after " << seen;
            actor.act(operations.at(step[1]));
            while (step[2] != '?' && actor.result() == '?')
                std::this_thread::yield();
            actor.awaitRest();
            seen += step.substr(0, 2) + actor.result() + ' ';
            if (actor.result() == '?')
                waiting.insert(&actor);
            continue;
        }
        const auto count = static_cast<std::size_t>(step[1] - '0');
        ASSERT_LE(count, waiting.size()) << "after " << seen;
        const auto returned = [](const Actor* actor) { return actor->result() != '?'; };
        for (std::size_t ended = 0; ended < count; std::this_thread::yield())
            ended += std::erase_if(waiting, returned);
        std::for_each(waiting.begin(), waiting.end(), std::mem_fn(&Actor::awaitRest));
        seen += '*' + std::to_string(count + std::erase_if(waiting, returned)) + ' ';
    }
    EXPECT_EQ(seen, script + ' ');
}

constexpr const char* HELD_BY_ONE = "1u! 1w+ 2u! 2W- 1u+ 1u! 2W+ 2u+";

TEST(Mutex, IsReleasedByItsHolderAsOftenAsItWasTaken)
{
    for (const char* script :
        {HELD_BY_ONE, "1w+ 1W+ 2W- 1u+ 2w? 1u+ *1 2u+", "1w+ 1W+ 1p+ 2W+ 2u+ 1w+ 1q+ 2W- 1u+ 2W- 1u+ 2W- 1u+ 1u!"}) {
        Mutex mutex;
        std::optional<MutexPause> pause;
        play({{'w', [&] { return mutex.wait(), true; }}, {'W', [&] { return mutex.tryWait(); }},
                 {'u', [&] { return mutex.signal(), true; }}, {'p', [&] { return pause.emplace(mutex), true; }},
                 {'q', [&] { return pause.reset(), true; }}},
            script);
    }
}

TEST(ReaderWriterLock, TellsWhoMayJoinWhomAndWhoComesFirst)
{
    std::string otherReaders; // read locks that other threads released must not be counted
    for (int i = 0; i < 100; ++i)
        otherReaders += "1r+ 2s+ ";
    for (const std::string& script : {std::string(HELD_BY_ONE), // with 'r', 'R' and 's' for a reader
             "1r+ 2R+ 2s+ 2W- 1R+ 1s+ 2R+ 2s+ 2W- 1s+ 1w+ 2R- 2W- 1u+ 2R+ 2s+ 2W+ 2u+"s,
             otherReaders + "1r+ 2w? 3R- 3r? 1r+ 1s+ 1s+ *1 2u+ *1 3s+", // a writer before new readers
             "1w+ 2w? 3r? 1u+ *1 3s+ *1 2u+"s, // readers after a writer
             "1s! 1w+ 1wD 1rD 1W- 1R- 1u+ 1r+ 1wD 1W- 2s+ 1W+ 1u+"s, // what would wait for itself
             "1r+ 2r+ 3s+ 1w? 2s+ *1 1u+"s, // it is unknown whose read lock thread 3 released
             "1r+ 2r+ 3s+ 1r+ 1wD 1s+ 1s+ 1W+ 1u+"s}) { // this thread reads for certain
        ReaderWriterLock lock;
        play({{'w', [&] { return lock.wait(), true; }}, {'W', [&] { return lock.tryWait(); }},
                 {'u', [&] { return lock.signal(), true; }}, {'r', [&] { return lock.waitShared(), true; }},
                 {'R', [&] { return lock.tryWaitShared(); }}, {'s', [&] { return lock.signalShared(), true; }}},
            script);
    }
}

TEST(Event, ResetsItselfAfterEachWaiterThatItFrees)
{
    // Nothing is signalled at first; 'T' does not look; one signal is kept without a waiter
    for (const char* script : {"1z- 1s+ 1s+ 1T- 1z+ 1z-", "1w? 2f? 3n? 4S- *2 4s+ *1"}) {
        Event event;
        play({{'w', [&] { return event.wait(), true; }}, {'T', [&] { return event.tryWait(); }},
                 {'z', [&] { return event.wait(0); }}, {'f', [&] { return event.wait(FOR_EVER); }},
                 {'n', [&] { return event.wait(NEARLY_FOR_EVER); }}, {'s', [&] { return event.signal(), true; }},
                 {'S', [&] { return event.signal(), event.signal(), event.wait(0); }}}, // before the waiters run
            script);
    }
}

TEST(Gate, LetsAllPassWhileItIsOpenAndAllWhoWaitedThoughItClosesAtOnce)
{
    for (const char* script : {"1T- 1z- 1o+ 1T+ 1z+ 1f+ 2T+ 2z+ 1w+ 1c+ 1T- 1z-", "1w? 2n? 3f? 4b- *3 1w? 4o+ *1"}) {
        Gate gate;
        play({{'w', [&] { return gate.wait(), true; }}, {'T', [&] { return gate.tryWait(); }},
                 {'z', [&] { return gate.wait(0); }}, {'f', [&] { return gate.wait(FOR_EVER); }},
                 {'n', [&] { return gate.wait(NEARLY_FOR_EVER); }}, {'o', [&] { return gate.open(), true; }},
                 {'c', [&] { return gate.close(), true; }},
                 {'b', [&] { return gate.open(), gate.close(), gate.tryWait(); }}}, // before the waiters run
            script);
    }
}

TEST(Semaphore, CountsWhatIsGivenAndTaken)
{
    Semaphore semaphore(2);
    play({{'w', [&] { return semaphore.wait(), true; }}, {'T', [&] { return semaphore.tryWait(); }},
             {'s', [&] { return semaphore.signal(), true; }}, {'0', [&] { return semaphore.getValue() == 0; }}},
        "1w+ 10- 1T+ 10+ 1T- 2w? 1s+ *1 10+ 1s+ 10-");
}

TEST(Condition, GivesItsLockToTheThreadThatItFreesAndRefusesOthers)
{
    for (const char* script : {"1W? 2W? 3W? 4a+ 4s+ 4r+ *1 4a+ 4b+ 4r+ *2", "1w! 1t! 1r! 1s+ 1a+ 1aD 2r! 1r+"}) {
        Condition condition;
        int ready = 0;
        const auto waitForReady = [&] {
            const Condition::Holder holder(condition);
            while (ready == 0)
                condition.wait();
            return --ready, true;
        };
        play({{'W', waitForReady}, {'w', [&] { return condition.wait(), true; }},
                 {'t', [&] { return condition.wait(1), true; }}, {'a', [&] { return condition.acquire(), true; }},
                 {'r', [&] { return condition.release(), true; }},
                 {'s', [&] { return ready = 1, condition.signal(), true; }},
                 {'b', [&] { return ready = 2, condition.broadcast(), true; }}},
            script);
    }
}

template <class Lock>
void countInTurns()
{
    Lock lock;
    int count = 0; // not atomic on purpose
    inThreads(4, [&](int) {
        for (int turn = 0; turn < 1000; ++turn) {
            const ScopedLock guard(lock);
            ++count;
        }
    });
    EXPECT_EQ(count, 4000);
}

TEST(ScopedLock, LetsOneThreadInAtATime)
{
    countInTurns<Mutex>();
    countInTurns<ReaderWriterLock>();
}

TEST(Locks, AreTakenByTheGuardsOfTheStandardLibrary)
{
    Mutex mutex;
    Condition condition;
    ReaderWriterLock lock;
    FakeMutex fake;
    const auto isFree
        = [&] { return elsewhere([&] { return std::unique_lock(mutex, std::try_to_lock).owns_lock(); }); };
    {
        const std::scoped_lock all(mutex, lock, fake);
        const std::lock_guard held(condition);
        EXPECT_TRUE(!isFree() && !elsewhere([&] { return lock.try_lock_shared(); }));
        EXPECT_THROW(condition.acquire(), ResultException);
    }
    std::unique_lock<LockObject> some(mutex);
    EXPECT_FALSE(isFree());
    some.unlock();
    EXPECT_TRUE(isFree());
    const std::shared_lock reader(lock);
    EXPECT_TRUE(elsewhere([&] { return std::shared_lock(lock, std::try_to_lock).owns_lock() && !lock.try_lock(); }));
    EXPECT_NO_THROW(std::lock_guard {condition});
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

TEST(ScopedLock, ReleasesWhenTheBlockThrowsAndTellsAFailedRelease)
{
    Mutex mutex;
    EXPECT_THROW(
        {
            const ScopedLock guard(mutex);
            throw 7;
        },
        int);
    EXPECT_THROW(mutex.signal(), ResultException) << "it is free";
    EXPECT_THROW(
        {
            const ScopedLock guard(mutex);
            mutex.signal();
        },
        ResultException);
}

TEST(ReaderWriterLock, StarvesNobody)
{
    ReaderWriterLock lock;
    std::atomic<bool> ends {false};
    int written = 0;
    inThreads(5, [&](int thread) { // 0 to 2 write; 3 and 4 read, so that at any time at least one of them does
        for (int turn = 0; thread == 0 ? turn < 50 : !ends; ++turn) {
            if (thread <= 2) {
                const ScopedLock guard(lock);
                ++written;
            }
            if (thread == 0 || thread >= 3) {
                lock.waitShared();
                EXPECT_GE(written, 0);
                std::this_thread::yield();
                lock.signalShared();
            }
        }
        ends = true;
    });
    EXPECT_GE(written, 50);
}

TEST(Sync, WaitsNoLessThanTheMillisecondsItIsTold)
{
    static std::uint32_t s_milliseconds; // 0 or FOR_EVER: whatever time that takes
    Event event;
    Gate gate;
    Condition condition;
    Mutex mutex;
    ReaderWriterLock lock;
    Semaphore semaphore;
    const auto timed = [](auto wait) {
        return [wait] {
            const auto start = std::chrono::steady_clock::now();
            if (wait(s_milliseconds))
                return true;
            const std::chrono::milliseconds least(s_milliseconds);
            EXPECT_GE(std::chrono::steady_clock::now() - start, least);
            return false;
        };
    };
    const Operations operations {{'e', timed([&](auto time) { return event.wait(time); })},
        {'g', timed([&](auto time) { return gate.wait(time); })},
        {'m', timed([&](auto time) { return mutex.waitFor(time); })},
        {'w', timed([&](auto time) { return lock.waitFor(time); })},
        {'r', timed([&](auto time) { return lock.waitSharedFor(time); })},
        {'s', timed([&](auto time) { return semaphore.waitFor(time); })},
        {'c', timed([&](auto time) {
             const Condition::Holder holder(condition);
             return resultOf([&] { condition.wait(time); }) != RESULT_TIMED_OUT;
         })},
        {'M', [&] { return mutex.signal(), true; }}, {'W', [&] { return lock.signal(), true; }},
        {'R', [&] { return lock.signalShared(), true; }}, {'S', [&] { return semaphore.signal(), true; }}};
    for (s_milliseconds = 0; s_milliseconds <= 20; s_milliseconds += 20)
        play(operations, "2m+ 2w+ 1e- 1g- 1m- 1w- 1r- 1s- 1c- 2M+ 2W+ 1S+ 1m+ 1m+ 1w+ 1s+ 1rD 1M+ 1M+ 1W+ 1r+ 1R+");
    s_milliseconds = FOR_EVER;
    play(operations, "1m+ 1w+ 2m? 1M+ *1 2M+ 2w? 1W+ *1 3r? 2W+ *1 3R+ 1s? 2S+ *1");
}

using Call = std::int32_t (*)(VXHandle) noexcept;

constexpr const char *HELD = "1t+ 1d- 2d- 1g+ 1d+", *AWAITED = "1t? 2d- 2g+ *1 2d+";

/// First the locks that belong to a thread.
constexpr struct {
    const char* name;
    std::int32_t (*create)(const char*, std::uint32_t, VXHandle*) noexcept;
    Call take, give, destroy;
    const char* script;
} LOCKS[] = {{"Mutex", VXMutexCreate, VXMutexAcquire, VXMutexRelease, VXMutexDestroy, HELD},
    {"Condition", VXConditionCreate, VXConditionAcquire, VXConditionRelease, VXConditionDestroy, HELD},
    {"writer", VXRWLockCreate, VXRWLockAcquireWrite, VXRWLockReleaseWrite, VXRWLockDestroy, HELD},
    {"reader", VXRWLockCreate, VXRWLockAcquireRead, VXRWLockReleaseRead, VXRWLockDestroy, HELD},
    {"Event", VXEventCreate, VXEventWait, VXEventSignal, VXEventDestroy, AWAITED},
    {"Semaphore", [](auto... rest) noexcept { return VXSemaphoreCreate(0, rest...); }, VXSemaphoreWait, VXSemaphorePost,
        VXSemaphoreDestroy, AWAITED}};

TEST(PlatformLocks, AreNotDestroyedWhileSomebodyNeedsThem)
{
    for (const auto& row : LOCKS) {
        SCOPED_TRACE(row.name);
        VXHandle handle = nullptr;
        ASSERT_EQ(row.create(nullptr, 0, &handle), 0);
        play({{'t', [&] { return row.take(handle) == 0; }}, {'g', [&] { return row.give(handle) == 0; }},
                 {'d', [&] { return row.destroy(handle) == 0; }}},
            row.script);
    }
}

/// The system reuses the handle of an ended thread, which is an address, for a new one.
TEST(PlatformLocks, BelongToNoLaterThread)
{
    static VXHandle s_handles[3]; // never destroyed: an ended thread still holds them
    for (const auto& row : std::span(LOCKS, 3)) {
        VXHandle& handle = s_handles[&row - LOCKS];
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
    expectSlots("sync::Object", 11, {slotOf<void()>(&Object::wait), &Object::tryWait});
    expectSlots("LockObject", 11, {&LockObject::wait, &LockObject::tryWait, &LockObject::signal});
    expectSlots("Mutex", 11, {&Mutex::wait, &Mutex::tryWait, &Mutex::signal});
    expectSlots("FakeMutex", 11, {&FakeMutex::wait, &FakeMutex::tryWait, &FakeMutex::signal});
    expectSlots("ReaderWriterLock", 11,
        {&ReaderWriterLock::wait, &ReaderWriterLock::tryWait, &ReaderWriterLock::signal, &ReaderWriterLock::waitShared,
            &ReaderWriterLock::tryWaitShared, &ReaderWriterLock::signalShared});
    expectSlots("Semaphore", 11, {&Semaphore::wait, &Semaphore::tryWait, &Semaphore::signal, &Semaphore::getValue});
    expectSlots("Event", 11,
        {slotOf<void()>(&Event::wait), &Event::tryWait, slotOf<bool(std::uint32_t)>(&Event::wait), &Event::signal});
    expectSlots("Gate", 11,
        {slotOf<void()>(&Gate::wait), &Gate::tryWait, slotOf<bool(std::uint32_t)>(&Gate::wait), &Gate::open,
            &Gate::close});
}

} // namespace
} // namespace vx::sync
