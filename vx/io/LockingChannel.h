#pragma once

#include "vx/Reference.h"
#include "vx/io/IChannel.h"
#include "vx/sync/Mutex.h"

namespace vx::io {

/// The channel of `LockingChannel`, without the lock.
class VX_API LockingChannelFace : public IChannel {
public:
    // IChannel
    int read(ByteBuffer& buffer) override;
    int write(ByteBuffer& buffer) override;

protected:
    explicit LockingChannelFace(IChannel* channel);
    ~LockingChannelFace();

private:
    Reference<IChannel> m_channel;
};

/// A channel with a lock for its callers: `wait` and `signal` enclose a sequence of calls, such as a request and its
/// response. `read` and `write` by themselves take no lock.
class VX_API LockingChannel : public sync::LockObject, public LockingChannelFace {
public:
    /// Holds a reference to `channel`; `name` labels the lock for diagnostics.
    LockingChannel(IChannel* channel, const char* name);
    ~LockingChannel() noexcept(false) override;

    VX_OBJECT_UNKNOWN(sync::LockObject)

    // LockObject
    void wait() override VX_ACQUIRE() VX_NO_THREAD_SAFETY_ANALYSIS;
    bool tryWait() override VX_TRY_ACQUIRE(true) VX_NO_THREAD_SAFETY_ANALYSIS;
    void signal() override VX_RELEASE() VX_NO_THREAD_SAFETY_ANALYSIS;

private:
    sync::Mutex m_lock;
};

} // namespace vx::io
