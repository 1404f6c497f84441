// This program brings locks of its own for the platform's, which the library calls in their place: they do nothing but
// tell what was called and answer as a test wishes.
#include "tests/Slots.h"
#include "vx/Exceptions.h"
#include "vx/Result.h"
#include "vx/sync/Condition.h"
#include "vx/sync/Event.h"
#include "vx/sync/FakeMutex.h"
#include "vx/sync/Gate.h"
#include "vx/sync/Mutex.h"
#include "vx/sync/ReaderWriterLock.h"
#include "vx/sync/Semaphore.h"
#include "vxsys/Lock.h"

#include <gtest/gtest.h>

#include <concepts>
#include <functional>
#include <string_view>
#include <utility>

namespace {

// The library's start makes a lock before any constructor of this program has run.
struct Call {
    std::string_view function;
    const char* name;
    std::uint32_t number; ///< flags, milliseconds
    std::uint32_t value;
};
constinit Call g_call {};
constinit std::int32_t g_answer = 0;
constinit int g_handle = 0;

std::int32_t answer(const Call& call) noexcept
{
    g_call = call;
    return g_answer;
}

std::int32_t make(VXHandle* handle, const Call& call) noexcept
{
    *handle = reinterpret_cast<VXHandle>(&g_handle);
    return answer(call);
}

std::int32_t use(VXHandle handle, std::string_view function, std::uint32_t milliseconds = 0) noexcept
{
    EXPECT_EQ(handle, reinterpret_cast<VXHandle>(&g_handle)) << function;
    return answer({function, nullptr, milliseconds, 0});
}

} // namespace

#define STAND_IN_CREATE(function)                                                                                      \
    std::int32_t function(const char* name, std::uint32_t flags, VXHandle* handle) noexcept                            \
    {                                                                                                                  \
        return make(handle, {#function, name, flags, 0});                                                              \
    }                                                                                                                  \
    static_assert(true)
#define STAND_IN(function)                                                                                             \
    std::int32_t function(VXHandle handle) noexcept                                                                    \
    {                                                                                                                  \
        return use(handle, #function);                                                                                 \
    }                                                                                                                  \
    static_assert(true)
#define STAND_IN_TIMED(function)                                                                                       \
    std::int32_t function(VXHandle handle, std::uint32_t milliseconds) noexcept                                        \
    {                                                                                                                  \
        return use(handle, #function, milliseconds);                                                                   \
    }                                                                                                                  \
    static_assert(true)

// clang-format off
STAND_IN_CREATE(VXMutexCreate); STAND_IN(VXMutexAcquire); STAND_IN(VXMutexTryAcquire); STAND_IN(VXMutexRelease);
STAND_IN(VXMutexDestroy); STAND_IN_CREATE(VXEventCreate); STAND_IN(VXEventWait); STAND_IN_TIMED(VXEventTimedWait);
STAND_IN(VXEventSignal); STAND_IN(VXEventDestroy); STAND_IN_CREATE(VXGateCreate); STAND_IN(VXGateWait);
STAND_IN(VXGateTryWait); STAND_IN_TIMED(VXGateTimedWait); STAND_IN(VXGateOpen); STAND_IN(VXGateClose);
STAND_IN(VXGateDestroy); STAND_IN_CREATE(VXRWLockCreate); STAND_IN(VXRWLockAcquireRead);
STAND_IN(VXRWLockTryAcquireRead); STAND_IN(VXRWLockReleaseRead); STAND_IN(VXRWLockAcquireWrite);
STAND_IN(VXRWLockTryAcquireWrite); STAND_IN(VXRWLockReleaseWrite); STAND_IN(VXRWLockDestroy); STAND_IN(VXSemaphoreWait);
STAND_IN(VXSemaphoreTryWait); STAND_IN(VXSemaphorePost); STAND_IN(VXSemaphoreDestroy);
STAND_IN_CREATE(VXConditionCreate); STAND_IN(VXConditionAcquire); STAND_IN(VXConditionRelease);
STAND_IN(VXConditionWait); STAND_IN_TIMED(VXConditionTimedWait); STAND_IN(VXConditionSignal);
STAND_IN(VXConditionBroadcast); STAND_IN(VXConditionDestroy);
// clang-format on

std::int32_t VXSemaphoreCreate(std::uint32_t value, const char* name, std::uint32_t flags, VXHandle* handle) noexcept
{
    return make(handle, {"VXSemaphoreCreate", name, flags, value});
}

std::int32_t VXSemaphoreGetValue(VXHandle handle, std::int32_t* value) noexcept
{
    *value = 42;
    return use(handle, "VXSemaphoreGetValue");
}

namespace vx::sync {
namespace {

constexpr std::int32_t ANY_FAILURE = RESULT_END_OF_FILE;
constexpr std::int32_t ANSWERS[] = {RESULT_OK, RESULT_FALSE, RESULT_TIMED_OUT, ANY_FAILURE};

/// Runs the operation while the platform answers with `answer`. 'y', 'n' for its own answer or its return; 'x' for a
/// ResultException with the platform's code and no text.
char outcomeOf(std::int32_t answer, const std::function<bool()>& operation)
{
    g_call = {};
    g_answer = answer;
    char outcome = '?';
    try {
        outcome = operation() ? 'y' : 'n';
    } catch (const ResultException& failure) {
        outcome = failure.getResult() == answer && failure.getDescription().isEmpty() ? 'x' : '?';
    }
    g_answer = 0;
    return outcome;
}

/// The outcomes for each of ANSWERS.
std::string outcomesOf(const std::function<bool()>& operation)
{
    std::string outcomes;
    for (const std::int32_t answer : ANSWERS)
        outcomes += outcomeOf(answer, operation);
    return outcomes;
}

TEST(Sync, ReadsTheAnswersOfThePlatformByThreeRules)
{
    Mutex mutex;
    ReaderWriterLock lock;
    Semaphore semaphore;
    Event event;
    Gate gate;
    Condition condition;
    constexpr const char* PLAIN = "yyxx";
    constexpr const char* TRY = "yynn";
    constexpr const char* TIMED = "ynnx";
    struct {
        std::string_view function;
        const char* rule;
        std::function<bool()> operation;
    } cases[] = {
        {"VXMutexAcquire", PLAIN, [&] { return mutex.wait(), true; }},
        {"VXMutexTryAcquire", TRY, [&] { return mutex.tryWait(); }},
        {"VXMutexRelease", PLAIN, [&] { return mutex.signal(), true; }},
        {"VXRWLockAcquireWrite", PLAIN, [&] { return lock.wait(), true; }},
        {"VXRWLockTryAcquireWrite", TRY, [&] { return lock.tryWait(); }},
        {"VXRWLockReleaseWrite", PLAIN, [&] { return lock.signal(), true; }},
        {"VXRWLockAcquireRead", PLAIN, [&] { return lock.waitShared(), true; }},
        {"VXRWLockTryAcquireRead", TRY, [&] { return lock.tryWaitShared(); }},
        {"VXRWLockReleaseRead", PLAIN, [&] { return lock.signalShared(), true; }},
        {"VXSemaphoreWait", PLAIN, [&] { return semaphore.wait(), true; }},
        {"VXSemaphoreTryWait", TRY, [&] { return semaphore.tryWait(); }},
        {"VXSemaphorePost", PLAIN, [&] { return semaphore.signal(), true; }},
        {"VXSemaphoreGetValue", PLAIN, [&] { return semaphore.getValue() == 42; }},
        {"VXEventWait", PLAIN, [&] { return event.wait(), true; }},
        {"VXEventTimedWait", TIMED, [&] { return event.wait(5); }},
        {"VXEventSignal", PLAIN, [&] { return event.signal(), true; }},
        {"", "nnnn", [&] { return event.tryWait(); }},
        {"VXGateWait", PLAIN, [&] { return gate.wait(), true; }},
        {"VXGateTryWait", TRY, [&] { return gate.tryWait(); }},
        {"VXGateTimedWait", TIMED, [&] { return gate.wait(5); }},
        {"VXGateOpen", PLAIN, [&] { return gate.open(), true; }},
        {"VXGateClose", PLAIN, [&] { return gate.close(), true; }},
        {"VXConditionAcquire", PLAIN, [&] { return condition.acquire(), true; }},
        {"VXConditionRelease", PLAIN, [&] { return condition.release(), true; }},
        {"VXConditionWait", PLAIN, [&] { return condition.wait(), true; }},
        {"VXConditionTimedWait", PLAIN, [&] { return condition.wait(5), true; }},
        {"VXConditionSignal", PLAIN, [&] { return condition.signal(), true; }},
        {"VXConditionBroadcast", PLAIN, [&] { return condition.broadcast(), true; }},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(outcomesOf(row.operation), row.rule) << row.function;
        EXPECT_EQ(g_call.function, row.function);
        EXPECT_EQ(g_call.number, row.function.ends_with("TimedWait") ? 5U : 0U) << row.function;
    }
}

/// What a class does at both ends of its life, with `arguments` in front of name and flags.
template <class Lock, class... Arguments>
void checkLife(std::string_view create, std::string_view destroy, const char* destroyRule, Arguments... arguments)
{
    const char* const name = "a name";
    EXPECT_EQ(outcomesOf([&] {
        Lock lock(arguments..., name, 7U);
        g_answer = 0;
        EXPECT_EQ(g_call.function, create);
        EXPECT_EQ(g_call.name, name) << create;
        EXPECT_EQ(g_call.number, 7U) << create;
        EXPECT_EQ(g_call.value, (0U + ... + arguments)) << create;
        return true;
    }),
        "yyxx")
        << create;
    EXPECT_EQ(outcomesOf([&] {
        const std::int32_t result = std::exchange(g_answer, 0);
        Lock lock;
        EXPECT_EQ(g_call.name, nullptr) << create;
        EXPECT_EQ(g_call.number, 0U) << create;
        EXPECT_EQ(g_call.value, 0U) << create;
        g_answer = result;
        return true;
    }),
        destroyRule)
        << destroy;
    EXPECT_EQ(g_call.function, destroy);
}

TEST(Sync, OwnsOneHandleFromConstructionToDestruction)
{
    checkLife<Mutex>("VXMutexCreate", "VXMutexDestroy", "yyxx");
    checkLife<Event>("VXEventCreate", "VXEventDestroy", "yyxx");
    checkLife<Gate>("VXGateCreate", "VXGateDestroy", "yyxx");
    checkLife<ReaderWriterLock>("VXRWLockCreate", "VXRWLockDestroy", "yyxx");
    checkLife<Semaphore>("VXSemaphoreCreate", "VXSemaphoreDestroy", "yyxx", 3U);
    checkLife<Condition>("VXConditionCreate", "VXConditionDestroy", "yyyy");
    static_assert(!std::copyable<Mutex> && !std::copyable<Condition>);
}

TEST(Sync, ReleasesWhatAHolderHolds)
{
    Condition condition;
    try {
        const Condition::Holder holder(condition);
        EXPECT_EQ(g_call.function, "VXConditionAcquire");
        throw 7;
    } catch (int) {
        EXPECT_EQ(g_call.function, "VXConditionRelease");
    }
    EXPECT_EQ(outcomeOf(ANY_FAILURE,
                  [&] {
                      g_answer = 0;
                      const Condition::Holder holder(condition);
                      g_answer = ANY_FAILURE;
                      return true;
                  }),
        'x')
        << "a failed release is told";
    g_answer = 0;
    EXPECT_THROW(
        {
            const Condition::Holder holder(condition);
            g_answer = ANY_FAILURE;
            throw 7;
        },
        int)
        << "unless an exception has more to tell";
    g_answer = 0;
}

TEST(FakeMutex, NeitherBlocksNorCalls)
{
    g_call = {};
    {
        FakeMutex lock("a name", 7);
        lock.signal();
        for (int i = 0; i < 2; ++i) {
            lock.wait();
            EXPECT_TRUE(lock.tryWait());
        }
    }
    EXPECT_EQ(g_call.function, "");
}

TEST(Sync, KeepsTheOrderOfVirtualOperations)
{
    using Wait = void (Object::*)();
    expectSlots("sync::Object", 11, {slotOf(static_cast<Wait>(&Object::wait)), slotOf(&Object::tryWait)});
    expectSlots(
        "LockObject", 11, {slotOf(&LockObject::wait), slotOf(&LockObject::tryWait), slotOf(&LockObject::signal)});
    expectSlots("Mutex", 11, {slotOf(&Mutex::wait), slotOf(&Mutex::tryWait), slotOf(&Mutex::signal)});
    expectSlots("FakeMutex", 11, {slotOf(&FakeMutex::wait), slotOf(&FakeMutex::tryWait), slotOf(&FakeMutex::signal)});
    expectSlots("ReaderWriterLock", 11,
        {slotOf(&ReaderWriterLock::wait), slotOf(&ReaderWriterLock::tryWait), slotOf(&ReaderWriterLock::signal),
            slotOf(&ReaderWriterLock::waitShared), slotOf(&ReaderWriterLock::tryWaitShared),
            slotOf(&ReaderWriterLock::signalShared)});
    expectSlots("Semaphore", 11,
        {slotOf(&Semaphore::wait), slotOf(&Semaphore::tryWait), slotOf(&Semaphore::signal),
            slotOf(&Semaphore::getValue)});
    expectSlots("Event", 11,
        {slotOf(static_cast<void (Event::*)()>(&Event::wait)), slotOf(&Event::tryWait),
            slotOf(static_cast<bool (Event::*)(std::uint32_t)>(&Event::wait)), slotOf(&Event::signal)});
    expectSlots("Gate", 11,
        {slotOf(static_cast<void (Gate::*)()>(&Gate::wait)), slotOf(&Gate::tryWait),
            slotOf(static_cast<bool (Gate::*)(std::uint32_t)>(&Gate::wait)), slotOf(&Gate::open),
            slotOf(&Gate::close)});
}

} // namespace
} // namespace vx::sync
