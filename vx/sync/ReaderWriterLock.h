#pragma once

#include "vx/sync/LockObject.h"
#include "vxsys/Lock.h"

namespace vx::sync {

/// Many readers or one writer. The operations of `LockObject` are the writer's side. A waiting writer comes before readers
/// that ask later, and a writer that releases lets in the readers that are waiting by then, so neither side starves. A
/// reader may take the readers' side again. A reader that asks for the writer's side, and a writer that asks for either
/// side, would wait for themselves: `wait` and `waitShared` throw ResultException with the code of a deadlock.
class VX_API ReaderWriterLock : public LockObject {
public:
    /// `name` is a label for people; null for none. `flags` is 0.
    explicit ReaderWriterLock(const char* name = nullptr, unsigned int flags = 0);
    ReaderWriterLock(const ReaderWriterLock&) = delete;
    ReaderWriterLock& operator=(const ReaderWriterLock&) = delete;
    /// For a held lock it throws ResultException, unless another exception is on its way, as the destructor of `Mutex`.
    ~ReaderWriterLock() noexcept(false) override;

    // LockObject
    void wait() override VX_ACQUIRE();
    bool tryWait() override VX_TRY_ACQUIRE(true);
    void signal() override VX_RELEASE();

    /// The readers' side. Any thread may release what one of them took.
    virtual void waitShared() VX_ACQUIRE_SHARED();
    virtual bool tryWaitShared() VX_TRY_ACQUIRE_SHARED(true);
    virtual void signalShared() VX_RELEASE_SHARED();

private:
    VXHandle m_handle = nullptr;
};

} // namespace vx::sync
