#include "vxsys/Thread.h"

#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constinit thread_local std::uint32_t t_threadId = 0;

} // namespace

std::uint32_t VXThreadGetCurrentId() noexcept
{
    if (t_threadId == 0) {
        // In a forked child process this memory is a copy, but the thread is another one.
        static const int registered = ::pthread_atfork(nullptr, nullptr, [] { t_threadId = 0; });
        static_cast<void>(registered);
        t_threadId = static_cast<std::uint32_t>(::syscall(SYS_gettid));
    }
    return t_threadId;
}
