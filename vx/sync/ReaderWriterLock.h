#pragma once

#include "vx/sync/LockObject.h"
#include "vxsys/Lock.h"

namespace vx::sync {

/// Many readers or one writer. The operations of `LockObject` are the writer's. A writer that waits goes before readers
/// that come later, and one that leaves lets in the readers that wait by then, so that neither side starves. A reader may
/// read again, but must not ask for the writer's side; a writer that asks for either side gets a ResultException.
class VX_API ReaderWriterLock : public LockObject {
public:
    /// `name` labels it for a person; null is anonymous.
    explicit ReaderWriterLock(const char* name = nullptr, unsigned int flags = 0);
    ReaderWriterLock(const ReaderWriterLock&) = delete;
    ReaderWriterLock& operator=(const ReaderWriterLock&) = delete;
    ~ReaderWriterLock() noexcept(false) override;

    // LockObject
    void wait() override VX_ACQUIRE();
    bool tryWait() override VX_TRY_ACQUIRE(true);
    void signal() override VX_RELEASE();

    /// The reader's side.
    virtual void waitShared() VX_ACQUIRE_SHARED();
    virtual bool tryWaitShared() VX_TRY_ACQUIRE_SHARED(true);
    virtual void signalShared() VX_RELEASE_SHARED();

private:
    VXHandle m_handle = nullptr;
};

} // namespace vx::sync
