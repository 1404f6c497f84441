#include "vx/io/LockingChannel.h"

#include "vx/io/detail/ChannelBoundary.h"

namespace vx::io {

LockingChannel::LockingChannel(IChannel* channel, const char* name)
    : m_channel(channel)
    , m_lock(name)
{
}

LockingChannel::~LockingChannel() noexcept(false) = default;

void LockingChannel::wait()
{
    m_lock.wait();
}

bool LockingChannel::tryWait()
{
    return m_lock.tryWait();
}

void LockingChannel::signal()
{
    m_lock.signal();
}

int LockingChannel::read(ByteBuffer& buffer)
{
    return detail::usable(m_channel).read(buffer);
}

int LockingChannel::write(ByteBuffer& buffer)
{
    return detail::usable(m_channel).write(buffer);
}

} // namespace vx::io
