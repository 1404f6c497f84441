#pragma once

#include "vx/Reference.h"
#include "vx/String.h"
#include "vx/exec/IRunnable.h"
#include "vx/exec/detail/Callable.h"
#include "vxsys/Thread.h"

#include <cstdint>
#include <utility>

namespace vx::exec {

/// Runs an `IRunnable` in a new thread. The thread holds a reference to the runnable. Destroying this object does not
/// end the thread. Not locked: one thread controls the object.
///
/// @code
/// class Work : public Object, public exec::IRunnable {
/// public:
///     VX_OBJECT_UNKNOWN(Object)
///     void* run() override { return this; }
/// };
/// const Reference<Work> work(new Work);
/// exec::Thread thread(work.get(), u"worker");
/// thread.start();
/// assert(thread.join() == work.get()); // waits for the end
/// @endcode
class VX_API Thread : public Object {
public:
    /// Adds a reference to `runnable`. The name is a label for diagnostics, empty if none is given.
    explicit Thread(IRunnable* runnable);
    Thread(IRunnable* runnable, const String& name);
    /// Calls `callable` with copies of the arguments, which it may move. So a second start, also of a copy of the thread,
    /// calls nothing. `join` returns null.
    template <class Callable, class... Arguments>
    requires detail::Work<Callable, Arguments...>
    explicit Thread(Callable&& callable, Arguments&&... arguments)
        : Thread(Reference<IRunnable>(
            detail::makeRunnable(std::forward<Callable>(callable), std::forward<Arguments>(arguments)...))
                     .get())
    {
    }
    /// The same runnable, name and stack size; not started.
    Thread(const Thread& other);
    Thread& operator=(const Thread&) = delete;
    ~Thread() noexcept override;

    // Object
    /// Throws CloneNotSupportedException for a class derived from this one.
    Object* clone() const override;

    /// Throws IllegalStateException on a started thread, ResultException if the system cannot start one.
    void start();
    /// Waits for the thread to end. Returns the result of `run`, null if it threw, or the argument of a `pthread_exit`
    /// in it. The object can be started again then. Throws IllegalStateException on a thread that is not started,
    /// ResultException if a thread joins itself.
    void* join();
    /// What `getCurrentID` returns in the thread. Throws IllegalStateException on a thread that is not started.
    unsigned int getID();
    String getName();
    /// In bytes; 0 is the system's default. Throws IllegalStateException on a started thread.
    void setStackSize(unsigned int size);

    /// Never 0, and unique among the running threads.
    static unsigned int getCurrentID();
    /// `VX_WAIT_FOREVER` (vxsys/Lock.h) sleeps for ever.
    static void sleep(unsigned int milliseconds);

private:
    static void* threadWrapper(void* argument);
    void checkStarted() const;
    void checkNotStarted() const;

    Reference<IRunnable> m_runnable;
    String m_name;
    std::uint32_t m_stackSize = 0;
    VXThreadHandle m_handle = VX_THREAD_INVALID_HANDLE;
    std::uint32_t m_id = 0;
};

} // namespace vx::exec
