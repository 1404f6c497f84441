#include "vx/Exceptions.h"
#include "vx/exec/Thread.h"
#include "vx/sync/Semaphore.h"

#include <gtest/gtest.h>

#include <functional>
#include <pthread.h>

namespace vx::exec {
namespace {

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

    VX_OBJECT_UNKNOWN(Object)
    void* run() override { return m_work(); }

private:
    std::function<void*()> m_work;
    sync::Semaphore* m_destroyed;
};

TEST(Thread, RunsAndIsJoinedAndRunsAgain)
{
    EXPECT_THROW(Thread(nullptr).start(), IllegalStateException);
    int runs = 0, exit = 0;
    unsigned int idInside = 0;
    Reference<Task> task(new Task([&]() -> void* {
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
    for (const unsigned int wished : {1U << 20, 16U << 20, 256U << 20}) {
        Thread thread(task.get());
        thread.setStackSize(wished);
        thread.start();
        thread.join();
        EXPECT_NEAR(static_cast<double>(size), wished, 64 * 1024);
    }
}

} // namespace
} // namespace vx::exec
