#include "vx/io/Channels.h"

#include "vx/io/detail/ChannelBoundary.h"
#include "vx/util/CopyCharBuffer.h"
#include "vx/vorb/FailureText.h"

#include <algorithm>
#include <limits>

namespace vx::io {

namespace {

/// The number of bytes that remain in a buffer for a channel: 0 if the limit is below the position.
std::int32_t remainingOf(const ByteBuffer& buffer)
{
    if (buffer.getLimit() < buffer.getPosition())
        return 0;
    constexpr unsigned int MOST = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::min(buffer.remaining(), MOST));
}

/// Sets the position to `start` plus the bytes transferred; -1, the end of the stream, adds nothing. `start` is the
/// position before the transfer, because a stream on the same buffer moves the position itself. Throws
/// RangeErrorException for more bytes than there was room for.
int moveOver(ByteBuffer& buffer, unsigned int start, std::int32_t count)
{
    if (count > 0)
        buffer.setPosition(start + static_cast<unsigned int>(count));
    return count;
}

class IoStreamChannel final : public Object, public IInheritableChannel, public vorb::IVXChannel {
public:
    IoStreamChannel(InputStream* input, OutputStream* output, const String& id)
        : m_input(input)
        , m_output(output)
        , m_id(id)
    {
    }

    VX_OBJECT_UNKNOWN(Object)
    static const vx::vorb::InterfaceData* GetComIntfMap()
    {
        static const vx::vorb::InterfaceData map[] = {
            vx::vorb::viewRow<IoStreamChannel, vorb::IVXChannel>(), vx::vorb::forwardRow<Object>(), vx::vorb::endRow()};
        return map;
    }

    // IInheritableChannel
    int read(ByteBuffer& buffer) override
    {
        const unsigned int start = buffer.getPosition();
        signed char* const target = buffer.getBuffer() + start;
        return moveOver(buffer, start, detail::usable(m_input).read(target, remainingOf(buffer)));
    }
    int write(ByteBuffer& buffer) override
    {
        const unsigned int start = buffer.getPosition();
        const std::int32_t count = remainingOf(buffer);
        detail::usable(m_output).write(buffer.getConstBuffer() + start, count);
        return moveOver(buffer, start, count);
    }
    String getInheritanceId() override
    {
        if (m_id.isEmpty())
            throwResult(RESULT_NOT_AVAILABLE);
        return m_id;
    }

    // vorb::IVXChannel
    std::int32_t Read(signed char* bytes, std::int32_t* length) override
    {
        return detail::readInto(*this, bytes, length);
    }
    std::int32_t Write(const signed char* bytes, std::int32_t* length) override
    {
        return detail::writeFrom(*this, bytes, length);
    }
    std::int32_t GetInheritanceId(IVXCharBuffer* out) override
    {
        return vx::vorb::atBoundary([&] { util::copyText(out, getInheritanceId()); });
    }

private:
    Reference<InputStream> m_input;
    Reference<OutputStream> m_output;
    String m_id;
};

class VorbChannel final : public Object, public IInheritableChannel {
public:
    explicit VorbChannel(vorb::IVXChannel* channel)
        : m_channel(channel)
    {
    }

    VX_OBJECT_UNKNOWN(Object)

    // IInheritableChannel
    int read(ByteBuffer& buffer) override
    {
        const unsigned int start = buffer.getPosition();
        std::int32_t count = remainingOf(buffer);
        vorb::IVXChannel& channel = detail::usable(m_channel);
        vx::vorb::throwIfFailedIn(channel, channel.Read(buffer.getBuffer() + start, &count));
        return moveOver(buffer, start, count);
    }
    int write(ByteBuffer& buffer) override
    {
        const unsigned int start = buffer.getPosition();
        std::int32_t count = remainingOf(buffer);
        vorb::IVXChannel& channel = detail::usable(m_channel);
        vx::vorb::throwIfFailedIn(channel, channel.Write(buffer.getConstBuffer() + start, &count));
        return moveOver(buffer, start, count);
    }
    String getInheritanceId() override
    {
        const Reference<String> id(new String); // a component may add a reference to its argument
        throwIfFailed(detail::usable(m_channel).GetInheritanceId(id.get()));
        return *id;
    }

private:
    Reference<vorb::IVXChannel> m_channel;
};

} // namespace

Reference<IChannel> Channels::adaptStreams(InputStream* input, OutputStream* output)
{
    return new IoStreamChannel(input, output, String());
}

Reference<IInheritableChannel> Channels::adaptStreams(InputStream* input, OutputStream* output, const String& id)
{
    return new IoStreamChannel(input, output, id);
}

Reference<IChannel> Channels::adaptVorbChannel(vorb::IVXChannel* channel)
{
    return new VorbChannel(channel);
}

Reference<IInheritableChannel> Channels::adaptVorbWithInheritance(vorb::IVXChannel* channel)
{
    const Reference<IInheritableChannel> adapted(new VorbChannel(channel));
    static_cast<void>(adapted->getInheritanceId());
    return adapted;
}

} // namespace vx::io
