#include "vx/Exceptions.h"
#include "vx/exec/Task.h"
#include "vx/exec/Thread.h"
#include "vx/sync/Semaphore.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <pthread.h>
#include <string>
#include <utility>

namespace vx::exec {
namespace {

class Work final : public Object, public IRunnable {
public:
    explicit Work(std::function<void*()> work)
        : m_work(std::move(work))
    {
    }

    VX_OBJECT_UNKNOWN(Object)
    void* run() override { return m_work(); }

private:
    std::function<void*()> m_work;
};

TEST(Thread, RunsAndIsJoinedAndRunsAgain)
{
    EXPECT_THROW(Thread(nullptr).start(), IllegalStateException);
    int runs = 0, exit = 0;
    unsigned int idInside = 0;
    Reference<Work> task(new Work([&]() -> void* {
        idInside = Thread::getCurrentID();
        if (++runs == 2)
            throw 7;
        if (runs == 3)
            ::pthread_exit(&exit);
        return &runs;
    }));
    Thread thread(task.get(), u"worker");
    const Reference<Object> copy(thread.clone());
    EXPECT_EQ(dynamic_cast<Thread&>(*copy).getName(), u"worker");
    void* const answers[] = {&runs, nullptr, &exit, &runs}; // a thread that throws has no result
    for (void* const expected : answers) {
        EXPECT_THROW(thread.getID(), IllegalStateException);
        EXPECT_THROW(thread.join(), IllegalStateException);
        thread.start();
        const unsigned int id = thread.getID();
        EXPECT_THROW(thread.start(), IllegalStateException);
        EXPECT_EQ(thread.join(), expected) << runs;
        EXPECT_EQ(id, idInside);
        EXPECT_NE(id, Thread::getCurrentID());
    }
    EXPECT_EQ(runs, 4);
    EXPECT_EQ(task->GetRefCount(), 3U) << "each thread gives its count back";
}

TEST(Thread, LeavesTheRunnableToTheRunningThread)
{
    sync::Semaphore mayEnd(0), destroyed(0);
    {
        const std::shared_ptr<void> released(nullptr, [&](void*) { destroyed.signal(); });
        Thread thread(new Work([&mayEnd, released]() -> void* { return mayEnd.wait(), nullptr; }));
        thread.start();
    }
    EXPECT_FALSE(destroyed.tryWait());
    mayEnd.signal();
    destroyed.wait();
}

TEST(Thread, GivesTheStackThatWasAskedFor)
{
    for (const unsigned int wished : {1U << 20, 16U << 20, 256U << 20}) {
        Thread thread([&] {
            pthread_attr_t attributes;
            void* address = nullptr;
            std::size_t size = 0;
            EXPECT_EQ(::pthread_getattr_np(::pthread_self(), &attributes), 0);
            EXPECT_EQ(::pthread_attr_getstack(&attributes, &address, &size), 0);
            ::pthread_attr_destroy(&attributes);
            EXPECT_NEAR(static_cast<double>(size), wished, 64 * 1024);
        });
        thread.setStackSize(wished);
        thread.start();
        thread.join();
    }
}

TEST(Thread, RunsAnyCallable)
{
    int sum = 0;
    Thread thread([](int& target, int first, const std::string& second) { target = first + std::stoi(second); },
        std::ref(sum), 40, "2");
    thread.start();
    Thread copy(thread);
    EXPECT_EQ(thread.join(), nullptr);
    EXPECT_EQ(std::exchange(sum, 7), 42);
    for (Thread* again : {&thread, &copy}) {
        again->start();
        EXPECT_EQ(again->join(), nullptr);
    }
    EXPECT_EQ(sum, 7) << "the arguments are gone";
    Reference<Work> work(new Work([&]() -> void* { return &sum; }));
    Thread ofRunnable(work.get()); // which is no callable
    ofRunnable.start();
    EXPECT_EQ(ofRunnable.join(), &sum);
}

TEST(Task, CarriesTheResultOrTheException)
{
    auto owned = std::make_unique<int>(5);
    Task<std::unique_ptr<int>> moved = runAsync(
        [](std::unique_ptr<int> number) {
            ++*number;
            return number;
        },
        std::move(owned));
    EXPECT_EQ(*moved.get(), 6);
    EXPECT_THROW(moved.get(), IllegalStateException) << "the result was taken";

    int number = 7;
    Task<int&> reference = runAsync([&number]() -> int& { return number; });
    EXPECT_EQ(&reference.get(), &number);
    Task<void> failing = runAsync([] { throw RangeErrorException(u"too far"); });
    EXPECT_TRUE(failing.wait());
    EXPECT_THROW(failing.get(), RangeErrorException);
    Task<int> ended = runAsync([]() -> int { ::pthread_exit(nullptr); });
    EXPECT_THROW(ended.get(), IllegalStateException);

    sync::Semaphore permit, started;
    std::atomic<bool> isDone = false;
    {
        Task<void> task = runAsync([&] {
            started.signal();
            permit.wait();
            isDone = true;
        });
        started.wait();
        EXPECT_FALSE(task.wait(0));
        Task<void> other = std::move(task);
        EXPECT_THROW(task.wait(), IllegalStateException); // NOLINT(bugprone-use-after-move)
        permit.signal();
        task = std::move(other);
    }
    EXPECT_TRUE(isDone) << "the handle waits for the work";
}

} // namespace
} // namespace vx::exec
