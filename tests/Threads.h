#pragma once

#include "tests/vxsys/Child.h"
#include "vxsys/Thread.h"

#include <atomic>
#include <functional>
#include <pthread.h>
#include <thread>
#include <vector>

/// Runs `work(0)` to `work(count - 1)`, each in a separate thread, and waits for their ends.
template <class Work>
void inThreads(int count, Work work)
{
    std::vector<std::jthread> threads;
    for (int thread = 0; thread < count; ++thread)
        threads.emplace_back([&work, thread] { work(thread); });
}

/// Runs `work` in a new thread and waits for its end. Returns the argument of a `pthread_exit` inside it, otherwise
/// null.
template <class Work>
void* endOf(Work work)
{
    pthread_t thread;
    const auto run = [](void* argument) -> void* { return (*static_cast<Work*>(argument))(), nullptr; };
    EXPECT_EQ(::pthread_create(&thread, nullptr, run, &work), 0);
    void* end = nullptr;
    ::pthread_join(thread, &end);
    return end;
}

/// A thread that does one thing. Others can find out whether it waits.
class Doing {
public:
    explicit Doing(std::function<void()> work)
        : m_thread([this, work = std::move(work)] {
            m_id = VXThreadGetCurrentId();
            work();
            m_isDone = true;
        })
    {
    }
    ~Doing() { join(); }

    bool isDone() const { return m_isDone; }
    void join()
    {
        if (m_thread.joinable())
            m_thread.join();
    }

    /// Returns when the system reports that the thread waits.
    void awaitWaiting() const
    {
        while (m_id == 0)
            std::this_thread::yield();
        for (int seen = 0; seen < 3; std::this_thread::yield()) {
            ASSERT_FALSE(m_isDone) << "it did not wait";
            seen = stateOfThread(static_cast<pid_t>(m_id)) == 'S' ? seen + 1 : 0;
        }
    }

private:
    std::atomic<std::uint32_t> m_id {0};
    std::atomic<bool> m_isDone {false};
    std::thread m_thread;
};
