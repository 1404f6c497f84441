#include "vx/io/ReadWriteChannel.h"

#include "vx/io/detail/ChannelBoundary.h"

namespace vx::io {

ReadWriteChannelFace::ReadWriteChannelFace(IReadChannel* reader, IWriteChannel* writer)
    : m_reader(reader)
    , m_writer(writer)
{
}

ReadWriteChannelFace::~ReadWriteChannelFace() = default;

int ReadWriteChannelFace::read(ByteBuffer& buffer)
{
    return detail::usable(m_reader).read(buffer);
}

int ReadWriteChannelFace::write(ByteBuffer& buffer)
{
    return detail::usable(m_writer).write(buffer);
}

std::int32_t ReadWriteChannelFace::Read(signed char* bytes, std::int32_t* length)
{
    return detail::readInto(*this, bytes, length);
}

std::int32_t ReadWriteChannelFace::Write(const signed char* bytes, std::int32_t* length)
{
    return detail::writeFrom(*this, bytes, length);
}

ReadWriteChannel::ReadWriteChannel(IReadChannel* reader, IWriteChannel* writer)
    : ReadWriteChannelFace(reader, writer)
{
}

ReadWriteChannel::~ReadWriteChannel() noexcept(false) = default;

const vx::vorb::InterfaceData* ReadWriteChannel::GetComIntfMap()
{
    static const vx::vorb::InterfaceData map[]
        = {vx::vorb::viewRow<ReadWriteChannel, vorb::IVXChannel>(), vx::vorb::forwardRow<Object>(), vx::vorb::endRow()};
    return map;
}

} // namespace vx::io
