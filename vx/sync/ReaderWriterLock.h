#pragma once

#include "vx/sync/LockObject.h"
#include "vxsys/Lock.h"

namespace vx::sync {

/// Many readers or one writer. The operations of `LockObject` are the writer's side. A waiting writer is served before
/// readers that arrive later, and a writer that releases admits all readers that wait at that time, so neither side
/// starves. A reader may acquire the readers' side again. A reader that acquires the writer's side, or a writer that
/// acquires either side, would wait for itself: `wait` and `waitShared` throw ResultException with the code of a
/// deadlock.
class VX_API ReaderWriterLock : public LockObject {
public:
    /// `name` is a label for diagnostics; null for none. `flags` is 0.
    explicit ReaderWriterLock(const char* name = nullptr, unsigned int flags = 0);
    ReaderWriterLock(const ReaderWriterLock&) = delete;
    ReaderWriterLock& operator=(const ReaderWriterLock&) = delete;
    /// If the lock is held, throws ResultException, unless another exception is in flight, as the destructor of `Mutex`
    /// does.
    ~ReaderWriterLock() noexcept(false) override;

    // LockObject
    void wait() override VX_ACQUIRE();
    bool tryWait() override VX_TRY_ACQUIRE(true);
    void signal() override VX_RELEASE();

    /// The readers' side. Any thread may release what another one acquired.
    virtual void waitShared() VX_ACQUIRE_SHARED();
    virtual bool tryWaitShared() VX_TRY_ACQUIRE_SHARED(true);
    virtual void signalShared() VX_RELEASE_SHARED();

    /// False if the side could not be acquired within `milliseconds`; `VX_WAIT_FOREVER` has no limit. Throw as `wait` and
    /// `waitShared` do.
    bool waitFor(std::uint32_t milliseconds) VX_TRY_ACQUIRE(true);
    bool waitSharedFor(std::uint32_t milliseconds) VX_TRY_ACQUIRE_SHARED(true);

    /// The names that std::shared_lock uses.
    void lock_shared() VX_ACQUIRE_SHARED() { waitShared(); }
    bool try_lock_shared() VX_TRY_ACQUIRE_SHARED(true) { return tryWaitShared(); }
    void unlock_shared() VX_RELEASE_SHARED() { signalShared(); }

private:
    VXHandle m_handle = nullptr;
};

} // namespace vx::sync
