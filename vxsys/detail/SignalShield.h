#pragma once

#include "vxsys/detail/Retry.h"

#include <csignal>
#include <ctime>
#include <pthread.h>

namespace vxsys::detail {

/// Hides from the calling thread a signal that a call raises in it, to the end of the block. A signal that arrives
/// meanwhile is dropped; one that was pending before stays pending.
class [[nodiscard]] SignalShield {
public:
    explicit SignalShield(int signal) noexcept;
    ~SignalShield();
    SignalShield(const SignalShield&) = delete;
    SignalShield& operator=(const SignalShield&) = delete;

private:
    sigset_t m_signals;
    sigset_t m_maskBefore;
    bool m_wasPending;
};

inline SignalShield::SignalShield(int signal) noexcept
{
    sigset_t pending;
    sigemptyset(&m_signals);
    sigaddset(&m_signals, signal);
    sigpending(&pending);
    m_wasPending = sigismember(&pending, signal) == 1;
    pthread_sigmask(SIG_BLOCK, &m_signals, &m_maskBefore);
}

inline SignalShield::~SignalShield()
{
    const int error = errno;
    if (!m_wasPending) {
        constexpr timespec AT_ONCE {};
        retryOnSignal([&] { return ::sigtimedwait(&m_signals, nullptr, &AT_ONCE); });
    }
    pthread_sigmask(SIG_SETMASK, &m_maskBefore, nullptr);
    errno = error;
}

} // namespace vxsys::detail
