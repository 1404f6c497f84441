#include "vxsys/Thread.h"

#include "vxsys/detail/ForkHandlers.h"

#include <atomic>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constinit thread_local std::uint32_t t_threadId = 0;

} // namespace

std::uint32_t VXThreadGetCurrentId() noexcept
{
    using namespace vxsys::detail;
    if (t_threadId == 0) {
        // In a forked child process this memory is a copy, but the thread is another one.
        static constinit std::atomic<bool> s_handlesForks = false;
        handleForks(s_handlesForks, nullptr, nullptr, [] { t_threadId = 0; });
        t_threadId = static_cast<std::uint32_t>(::syscall(SYS_gettid));
    }
    return t_threadId;
}
