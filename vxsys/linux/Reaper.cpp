#include "vxsys/linux/Reaper.h"

#include "vxsys/Result.h"
#include "vxsys/detail/ForkHandlers.h"
#include "vxsys/detail/Retry.h"
#include "vxsys/detail/StateLock.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <exception>
#include <fcntl.h>
#include <memory>
#include <optional>
#include <poll.h>
#include <pthread.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace vxsys::detail {

namespace {

/// A descriptor that the reaper owns, and what it has to do with it.
struct Task {
    enum class Kind { COLLECT_CHILD, DRAIN_PIPE };

    Descriptor descriptor;
    Kind kind;
    pid_t number = 0; ///< of a child without a descriptor
    std::unique_ptr<Task> next;
};

/// Whether the child has been collected, here or by another part of the process.
bool isCollected(idtype_t type, int child) noexcept
{
    siginfo_t ended {};
    const int error
        = retryOnSignal([&] { return ::waitid(type, static_cast<id_t>(child), &ended, WEXITED | WNOHANG); });
    return error != 0 || ended.si_pid != 0;
}

/// Drops the content of the pipe. True after its last writer has closed it.
bool isDrained(int pipe) noexcept
{
    constexpr int READS_IN_A_TURN = 16; // so that other tasks are not delayed
    std::array<char, 16 * 1024> dropped;
    for (int i = 0; i < READS_IN_A_TURN; ++i) {
        const ssize_t got = retryOnSignal([&] { return ::read(pipe, dropped.data(), dropped.size()); });
        if (got == 0 || (got == -1 && errno != EAGAIN))
            return true;
        if (got == -1)
            return false;
    }
    return false;
}

/// One thread for all tasks, which runs only while there are tasks. Waiting and working need no memory, so a task that
/// was accepted is always completed. The thread ends before the library is unloaded.
class Reaper {
public:
    constexpr Reaper() noexcept = default;
    Reaper(const Reaper&) = delete;
    Reaper& operator=(const Reaper&) = delete;

    /// Ends the thread and drops its tasks. If the program has closed the descriptors of the thread, nothing happens.
    void end() noexcept;

    /// Returns a native error or 0. May throw std::bad_alloc.
    int add(Descriptor descriptor, Task::Kind kind);
    int add(pid_t child);

    /// Called around a fork. The child process has this memory, but not the thread. It closes its copies of the
    /// descriptors. The first call locks, and each of the other two unlocks.
    void beforeFork() VX_NO_THREAD_SAFETY_ANALYSIS { m_lock.lock(); }
    void inParent() VX_NO_THREAD_SAFETY_ANALYSIS { m_lock.unlock(); }
    void inChild() noexcept VX_NO_THREAD_SAFETY_ANALYSIS;

private:
    int add(std::unique_ptr<Task> task) noexcept;
    int open() noexcept VX_REQUIRES(m_lock);
    int startThread() noexcept VX_REQUIRES(m_lock);
    /// False if there is no event, or the program has closed it. Its number may be that of another file since.
    bool wake() const noexcept VX_REQUIRES(m_lock);
    void dropTasks() noexcept VX_REQUIRES(m_lock);

    void run() noexcept;
    int timeout() noexcept;
    /// False if the thread has nothing left to do.
    bool work(const epoll_event* events, int count) noexcept;
    void workOn(Task& task) noexcept VX_REQUIRES(m_lock);
    void collectByNumber() noexcept VX_REQUIRES(m_lock);
    void remove(const Task& task) noexcept VX_REQUIRES(m_lock);

    StateLock m_lock;
    std::unique_ptr<Task> m_tasks VX_GUARDED_BY(m_lock);
    Descriptor m_epoll; ///< open from the first task on
    Descriptor m_wake VX_GUARDED_BY(m_lock); ///< an event in `m_epoll` without a task
    pthread_t m_thread VX_GUARDED_BY(m_lock) {};
    bool m_hasThread VX_GUARDED_BY(m_lock) = false; ///< has to be joined
    bool m_isRunning VX_GUARDED_BY(m_lock) = false;
    bool m_ends VX_GUARDED_BY(m_lock) = false;
};

void Reaper::end() noexcept
{
    std::optional<pthread_t> thread;
    {
        const StateGuard guard(m_lock);
        m_ends = true;
        if (!wake() && m_isRunning) { // the thread goes on, and needs what there is
            ::pthread_detach(m_thread);
            return;
        }
        if (m_hasThread)
            thread = m_thread;
    }
    if (thread)
        ::pthread_join(*thread, nullptr);
    const StateGuard guard(m_lock);
    dropTasks();
    m_epoll.reset(-1);
    m_wake.reset(-1);
}

int Reaper::add(Descriptor descriptor, Task::Kind kind)
{
    auto task = std::make_unique<Task>();
    task->descriptor = std::move(descriptor);
    task->kind = kind;
    return add(std::move(task));
}

int Reaper::add(pid_t child)
{
    auto task = std::make_unique<Task>();
    task->kind = Task::Kind::COLLECT_CHILD;
    task->number = child;
    return add(std::move(task));
}

int Reaper::add(std::unique_ptr<Task> task) noexcept
{
    const StateGuard guard(m_lock);
    if (const int error = open())
        return error;
    epoll_event event {};
    event.events = EPOLLIN;
    event.data.ptr = task.get();
    if (task->number != 0)
        wake(); // the thread, if it runs, may be waiting without a limit
    else if (::epoll_ctl(m_epoll.get(), EPOLL_CTL_ADD, task->descriptor.get(), &event) != 0)
        return errno;
    if (const int error = startThread()) {
        ::epoll_ctl(m_epoll.get(), EPOLL_CTL_DEL, task->descriptor.get(), nullptr);
        return error;
    }
    task->next = std::move(m_tasks);
    m_tasks = std::move(task);
    return 0;
}

void Reaper::inChild() noexcept
{
    dropTasks();
    m_epoll.reset(-1);
    m_wake.reset(-1);
    m_hasThread = false;
    m_isRunning = false;
    m_lock.unlock();
}

int Reaper::open() noexcept
{
    if (m_epoll.isOpen())
        return 0;
    Descriptor epoll(::epoll_create1(EPOLL_CLOEXEC));
    if (!epoll.isOpen())
        return errno;
    Descriptor wake(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    epoll_event event {};
    event.events = EPOLLIN;
    if (!wake.isOpen() || ::epoll_ctl(epoll.get(), EPOLL_CTL_ADD, wake.get(), &event) != 0)
        return errno;
    m_epoll = std::move(epoll);
    m_wake = std::move(wake);
    return 0;
}

int Reaper::startThread() noexcept
{
    if (m_isRunning)
        return 0;
    if (m_hasThread)
        ::pthread_join(m_thread, nullptr); // the thread has already left its loop
    // Signals of the program must be handled by its own threads.
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

bool Reaper::wake() const noexcept
{
    const std::uint64_t one = 1;
    struct stat status;
    const bool isEvent = m_wake.isOpen() && ::fstat(m_wake.get(), &status) == 0
        && (status.st_mode & S_IFMT) == 0; // neither a file nor a pipe nor a socket
    return isEvent && ::write(m_wake.get(), &one, sizeof one) == sizeof one;
}

void Reaper::dropTasks() noexcept
{
    while (m_tasks != nullptr) // one by one, because the destructor of a chain is recursive
        m_tasks = std::move(m_tasks->next);
}

void Reaper::run() noexcept
{
    std::array<epoll_event, 16> events;
    int count = 0;
    do
        count = retryOnSignal(
            [&] { return ::epoll_wait(m_epoll.get(), events.data(), static_cast<int>(events.size()), timeout()); });
    while (work(events.data(), count));
}

/// In milliseconds; -1 for no limit. Without a descriptor, the end of a child is no event.
int Reaper::timeout() noexcept
{
    constexpr int BETWEEN_LOOKS = 20;
    const StateGuard guard(m_lock);
    const Task* task = m_tasks.get();
    while (task != nullptr && task->number == 0)
        task = task->next.get();
    return task != nullptr ? BETWEEN_LOOKS : -1;
}

bool Reaper::work(const epoll_event* events, int count) noexcept
{
    const StateGuard guard(m_lock);
    for (int i = 0; i < count; ++i) {
        std::uint64_t wakes = 0;
        if (events[i].data.ptr != nullptr)
            workOn(*static_cast<Task*>(events[i].data.ptr));
        else // the event of `m_wake`
            static_cast<void>(!::read(m_wake.get(), &wakes, sizeof wakes));
    }
    collectByNumber();
    m_isRunning = !m_ends && m_tasks != nullptr;
    return m_isRunning;
}

void Reaper::workOn(Task& task) noexcept
{
    const int descriptor = task.descriptor.get();
    if (task.kind == Task::Kind::COLLECT_CHILD ? isCollected(P_PIDFD, descriptor) : isDrained(descriptor))
        remove(task);
}

void Reaper::collectByNumber() noexcept
{
    for (Task* next = m_tasks.get(); next != nullptr;) {
        const Task& task = *std::exchange(next, next->next.get());
        if (task.number != 0 && isCollected(P_PID, task.number))
            remove(task);
    }
}

void Reaper::remove(const Task& task) noexcept
{
    // Closing is not enough: a forked child process may have the descriptor open, and its events would still arrive.
    ::epoll_ctl(m_epoll.get(), EPOLL_CTL_DEL, task.descriptor.get(), nullptr);
    std::unique_ptr<Task>* place = &m_tasks;
    while (place->get() != &task)
        place = &(*place)->next;
    *place = std::move((*place)->next);
}

/// The one reaper. It ends after the static objects of the program, which may be processes, and is never destroyed: its
/// thread may be there longer.
class ReaperPlace {
public:
    constexpr ReaperPlace() noexcept
        : m_reaper()
    {
    }
    ~ReaperPlace() { m_reaper.end(); }

    Reaper& get() noexcept { return m_reaper; }

private:
    union {
        Reaper m_reaper;
    };
};

constinit ReaperPlace g_reaper;

Reaper& reaper() noexcept
{
    static constinit std::atomic<bool> s_handlesForks = false;
    handleForks(
        s_handlesForks, [] { g_reaper.get().beforeFork(); }, [] { g_reaper.get().inParent(); },
        [] { g_reaper.get().inChild(); });
    return g_reaper.get();
}

template <class... What>
std::int32_t addTask(What&&... what) noexcept
{
    try {
        return VXResultFromNative(reaper().add(std::forward<What>(what)...));
    } catch (const std::exception&) {
        return results::RESULT_OUT_OF_MEMORY;
    }
}

} // namespace

std::int32_t reapLater(Descriptor child) noexcept
{
    return addTask(std::move(child), Task::Kind::COLLECT_CHILD);
}

std::int32_t reapLater(pid_t child) noexcept
{
    return addTask(child);
}

std::int32_t drainLater(Descriptor pipe) noexcept
{
    pollfd state {pipe.get(), POLLIN, 0};
    if (::poll(&state, 1, 0) == 1 && (state.revents & (POLLHUP | POLLERR | POLLNVAL)) != 0)
        return results::RESULT_OK; // there is no writer any more
    const int flags = ::fcntl(pipe.get(), F_GETFL);
    if (flags == -1 || ::fcntl(pipe.get(), F_SETFL, flags | O_NONBLOCK) != 0)
        return VXResultFromNative(errno);
    return addTask(std::move(pipe), Task::Kind::DRAIN_PIPE);
}

} // namespace vxsys::detail
