#include "vx/Exceptions.h"
#include "vx/Result.h"
#include "vx/exec/Thread.h"
#include "vx/sync/Semaphore.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <pthread.h>
#include <string>

namespace vx::exec {
namespace {

/// Runs a function, and tells a semaphore when it is destroyed.
class Task final : public Object, public IRunnable {
public:
    explicit Task(std::function<void*()> work, sync::Semaphore* destroyed = nullptr)
        : m_work(std::move(work))
        , m_destroyed(destroyed)
    {
    }
    ~Task() noexcept override
    {
        if (m_destroyed != nullptr)
            m_destroyed->signal();
    }

    std::int32_t QueryInterface(const _GUID& iid, void** out) override { return Object::QueryInterface(iid, out); }
    std::uint32_t AddRef() const override { return Object::AddRef(); }
    std::uint32_t Release() const override { return Object::Release(); }
    void* run() override { return m_work(); }

private:
    std::function<void*()> m_work;
    sync::Semaphore* m_destroyed;
};

template <class Work>
std::string thrownBy(Work work)
{
    try {
        work();
    } catch (const IllegalStateException& failure) {
        return failure.getDescription().toUtf8();
    }
    return "nothing";
}

TEST(Thread, RunsAndIsJoinedAndRunsAgain)
{
    int runs = 0;
    unsigned int idInside = 0;
    Reference<Task> task(new Task([&]() -> void* {
        idInside = Thread::getCurrentID();
        return ++runs == 2 ? throw 7 : &runs;
    }));
    Thread thread(task.get(), u"worker");
    EXPECT_EQ(thread.getName(), u"worker");

    for (int round = 1; round <= 3; ++round) {
        EXPECT_EQ(thrownBy([&] { thread.getID(); }), "thread not started");
        EXPECT_EQ(thrownBy([&] { thread.join(); }), "thread not started");
        thread.start();
        const unsigned int id = thread.getID();
        EXPECT_EQ(thrownBy([&] { thread.start(); }), "thread already started");
        EXPECT_EQ(thrownBy([&] { thread.setStackSize(1); }), "thread already started");
        void* const answer = thread.join();
        EXPECT_EQ(runs, round);
        EXPECT_EQ(answer, round == 2 ? nullptr : &runs) << "an exception is no result";
        EXPECT_EQ(id, idInside);
        EXPECT_NE(id, 0U);
        EXPECT_NE(id, Thread::getCurrentID());
    }
    EXPECT_EQ(task->GetRefCount(), 2U) << "each thread gives its count back";
}

TEST(Thread, LeavesTheRunnableToTheRunningThread)
{
    sync::Semaphore mayEnd(0);
    sync::Semaphore destroyed(0);
    {
        Thread thread(new Task(
            [&]() -> void* {
                mayEnd.wait();
                return nullptr;
            },
            &destroyed));
        thread.start();
    }
    EXPECT_FALSE(destroyed.tryWait());
    mayEnd.signal();
    destroyed.wait();
}

TEST(Thread, CopiesWhatToRunButNotTheThread)
{
    sync::Semaphore mayEnd(0);
    std::atomic<int> runs {0};
    Reference<Task> task(new Task([&]() -> void* {
        ++runs;
        mayEnd.wait();
        return nullptr;
    }));
    Thread thread(task.get(), u"first");
    thread.start();
    Reference<Object> copy(thread.clone());
    auto& second = dynamic_cast<Thread&>(*copy);
    EXPECT_EQ(second.getName(), u"first");
    EXPECT_EQ(thrownBy([&] { second.join(); }), "thread not started");
    second.start();
    mayEnd.signal();
    mayEnd.signal();
    thread.join();
    second.join();
    EXPECT_EQ(runs, 2);

    struct Derived : Thread {
        using Thread::Thread;
    };
    EXPECT_THROW(Derived(task.get()).clone(), CloneNotSupportedException);
}

TEST(Thread, GivesTheStackThatWasAskedFor)
{
    std::size_t size = 0;
    Reference<Task> task(new Task([&]() -> void* {
        pthread_attr_t attributes;
        EXPECT_EQ(::pthread_getattr_np(::pthread_self(), &attributes), 0);
        void* address = nullptr;
        EXPECT_EQ(::pthread_attr_getstack(&attributes, &address, &size), 0);
        ::pthread_attr_destroy(&attributes);
        return nullptr;
    }));
    constexpr std::size_t SLACK = 64 * 1024;
    for (const unsigned int wished : {1U << 20, 16U << 20, 256U << 20}) {
        Thread thread(task.get());
        thread.setStackSize(wished);
        thread.start();
        thread.join();
        EXPECT_NEAR(static_cast<double>(size), wished, SLACK);
    }
    Thread tiny(task.get());
    tiny.setStackSize(1);
    tiny.start();
    tiny.join();
}

TEST(Thread, FailsClearlyWithNothingToRunAndOnJoiningItself)
{
    Thread none(nullptr);
    EXPECT_THROW(none.start(), IllegalStateException);

    std::unique_ptr<Thread> self;
    sync::Semaphore isStarted(0);
    std::int32_t result = 0;
    self = std::make_unique<Thread>(new Task([&]() -> void* {
        isStarted.wait();
        try {
            self->join();
        } catch (const ResultException& failure) {
            result = failure.getResult();
            EXPECT_EQ(failure.getDescription(), u"thread join failed");
        }
        return nullptr;
    }));
    self->start();
    isStarted.signal();
    self->join();
    EXPECT_EQ(result, static_cast<std::int32_t>(0x8007046B));
}

} // namespace
} // namespace vx::exec
