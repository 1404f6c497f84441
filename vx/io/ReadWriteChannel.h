#pragma once

#include "vx/Object.h"
#include "vx/Reference.h"
#include "vx/io/IChannel.h"
#include "vx/io/vorb/IVXChannel.h"

namespace vx::io {

/// The channel of `ReadWriteChannel`, without the object.
class VX_API ReadWriteChannelFace : public IChannel, public vorb::IVXChannel {
public:
    // IChannel
    int read(ByteBuffer& buffer) override;
    int write(ByteBuffer& buffer) override;

    // vorb::IVXChannel
    std::int32_t Read(signed char* bytes, std::int32_t* length) override;
    std::int32_t Write(const signed char* bytes, std::int32_t* length) override;

protected:
    ReadWriteChannelFace(IReadChannel* reader, IWriteChannel* writer);
    ~ReadWriteChannelFace();

private:
    Reference<IReadChannel> m_reader;
    Reference<IWriteChannel> m_writer;
};

/// A channel of two halves, to which it holds references. With a null half its direction is not supported. A derived
/// class gives the name that another process uses.
class VX_API ReadWriteChannel : public Object, public ReadWriteChannelFace {
public:
    ReadWriteChannel(IReadChannel* reader, IWriteChannel* writer);
    ReadWriteChannel(const ReadWriteChannel&) = delete;
    ReadWriteChannel& operator=(const ReadWriteChannel&) = delete;
    ~ReadWriteChannel() noexcept(false) override;

    VX_OBJECT_UNKNOWN(Object)
    static const vx::vorb::InterfaceData* GetComIntfMap();
};

} // namespace vx::io
