#include "vxsys/posix/Reaper.h"

#include "vxsys/Result.h"
#include "vxsys/detail/Retry.h"
#include "vxsys/detail/StateLock.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <exception>
#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace vxsys::detail {

namespace {

struct Child {
    pid_t process;
    int descriptor; ///< readable once the child has ended
};

/// One thread that waits for all detached children, and lives only while there are any. It ends with the library at the
/// latest, so that none of its code runs behind the library's unloading.
class Reaper {
public:
    Reaper() noexcept = default;
    ~Reaper()
    {
        {
            const StateGuard guard(m_lock);
            m_ends = true;
            wake();
        }
        if (m_hasThread)
            ::pthread_join(m_thread, nullptr);
        for (const Child& child : m_children)
            ::close(child.descriptor);
        if (m_wake != -1)
            ::close(m_wake);
    }
    Reaper(const Reaper&) = delete;
    Reaper& operator=(const Reaper&) = delete;

    /// Gives a native error or 0.
    int add(pid_t process)
    {
        const StateGuard guard(m_lock);
        if (m_wake == -1 && (m_wake = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) == -1)
            return errno;
        m_children.reserve(m_children.size() + 1);
        const int descriptor = static_cast<int>(::syscall(SYS_pidfd_open, process, 0));
        if (descriptor == -1)
            return errno;
        if (const int error = startThread()) {
            ::close(descriptor);
            return error;
        }
        m_children.push_back({process, descriptor});
        wake();
        return 0;
    }

    /// Around a fork: the child has this memory, but neither the thread nor the children. The lock is held from the first
    /// to one of the others.
    void beforeFork() VX_NO_THREAD_SAFETY_ANALYSIS { m_lock.lock(); }
    void inParent() VX_NO_THREAD_SAFETY_ANALYSIS { m_lock.unlock(); }
    void inChild() noexcept VX_NO_THREAD_SAFETY_ANALYSIS
    {
        for (const Child& child : m_children)
            ::close(child.descriptor);
        m_children.clear();
        if (m_wake != -1)
            ::close(std::exchange(m_wake, -1));
        m_hasThread = false;
        m_isRunning = false;
        m_lock.unlock();
    }

private:
    void wake() const noexcept
    {
        const std::uint64_t one = 1;
        if (m_wake != -1)
            static_cast<void>(!::write(m_wake, &one, sizeof one));
    }

    int startThread() noexcept VX_REQUIRES(m_lock)
    {
        if (m_isRunning)
            return 0;
        if (m_hasThread)
            ::pthread_join(m_thread, nullptr); // it has left its loop
        // The program's signals are for the program's threads.
        sigset_t all;
        sigset_t before;
        sigfillset(&all);
        ::pthread_sigmask(SIG_SETMASK, &all, &before);
        const int error = ::pthread_create(
            &m_thread, nullptr,
            [](void* self) -> void* {
                static_cast<Reaper*>(self)->run();
                return nullptr;
            },
            this);
        ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
        m_hasThread = error == 0;
        m_isRunning = m_hasThread;
        return error;
    }

    void run() noexcept
    {
        std::vector<pollfd> waits;
        while (prepare(waits)) {
            retryOnSignal([&] { return ::poll(waits.data(), waits.size(), -1); });
            std::uint64_t posts = 0;
            static_cast<void>(!::read(waits.front().fd, &posts, sizeof posts));
        }
    }

    /// Collects who has ended, and lists what to wait for; false when there is nothing left to do.
    bool prepare(std::vector<pollfd>& waits) noexcept
    {
        const StateGuard guard(m_lock);
        std::erase_if(m_children, [](const Child& child) {
            if (::waitpid(child.process, nullptr, WNOHANG) == 0)
                return false;
            ::close(child.descriptor);
            return true;
        });
        try {
            waits.assign(1, {m_wake, POLLIN, 0});
            for (const Child& child : m_children)
                waits.push_back({child.descriptor, POLLIN, 0});
        } catch (const std::exception&) { // the first ones are waited for, the others looked at with them
        }
        m_isRunning = !m_ends && !m_children.empty() && !waits.empty();
        return m_isRunning;
    }

    StateLock m_lock;
    std::vector<Child> m_children VX_GUARDED_BY(m_lock);
    pthread_t m_thread {};
    int m_wake = -1;
    bool m_hasThread = false;
    bool m_isRunning VX_GUARDED_BY(m_lock) = false;
    bool m_ends VX_GUARDED_BY(m_lock) = false;
};

Reaper& reaper()
{
    static Reaper instance;
    static const int registered
        = ::pthread_atfork([] { instance.beforeFork(); }, [] { instance.inParent(); }, [] { instance.inChild(); });
    static_cast<void>(registered);
    return instance;
}

} // namespace

std::int32_t reapLater(pid_t child) noexcept
{
    try {
        return VXResultFromNative(reaper().add(child));
    } catch (const std::exception&) {
        return results::RESULT_OUT_OF_MEMORY;
    }
}

} // namespace vxsys::detail
