#pragma once

#include <atomic>
#include <csignal>
#include <pthread.h>
#include <thread>

namespace vx::net {

/// Sends signals to the thread that made it, as long as it exists, so that they interrupt every wait of that thread.
class SignalStorm {
public:
    SignalStorm()
        : m_target(::pthread_self())
    {
        s_arrived = 0;
        struct sigaction action { };
        action.sa_handler = [](int) { ++s_arrived; };
        ::sigaction(SIGUSR1, &action, &m_before);
        m_sender = std::thread([this] {
            while (!m_isOver) {
                ::pthread_kill(m_target, SIGUSR1);
                std::this_thread::yield();
            }
        });
    }
    ~SignalStorm()
    {
        m_isOver = true;
        m_sender.join();
        ::sigaction(SIGUSR1, &m_before, nullptr);
    }
    SignalStorm(const SignalStorm&) = delete;
    SignalStorm& operator=(const SignalStorm&) = delete;

    /// For other threads: returns when the target has received some more signals.
    static void pass()
    {
        constexpr int SOME = 50;
        for (const int end = s_arrived + SOME; s_arrived < end;)
            std::this_thread::yield();
    }

private:
    static inline std::atomic<int> s_arrived {0};

    const pthread_t m_target;
    struct sigaction m_before { };
    std::atomic<bool> m_isOver {false};
    std::thread m_sender;
};

} // namespace vx::net
