#pragma once

#include "vx/sync/LockObject.h"
#include "vxsys/Lock.h"

namespace vx::sync {

/// Many readers or one writer; a waiting writer goes before readers that come later. The operations of `LockObject` are
/// the writer's. A reader must not ask for the writer's side.
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

    virtual void waitShared();
    virtual bool tryWaitShared();
    virtual void signalShared();

private:
    VXHandle m_handle = nullptr;
};

} // namespace vx::sync
