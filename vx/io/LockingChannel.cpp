#include "vx/io/LockingChannel.h"

#include "vx/io/detail/ChannelBoundary.h"

namespace vx::io {

LockingChannelFace::LockingChannelFace(IChannel* channel)
    : m_channel(channel)
{
}

LockingChannelFace::~LockingChannelFace() = default;

int LockingChannelFace::read(ByteBuffer& buffer)
{
    return detail::usable(m_channel).read(buffer);
}

int LockingChannelFace::write(ByteBuffer& buffer)
{
    return detail::usable(m_channel).write(buffer);
}

LockingChannel::LockingChannel(IChannel* channel, const char* name)
    : LockingChannelFace(channel)
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

} // namespace vx::io
