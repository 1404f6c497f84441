#include "StreamDoubles.h"

#include "tests/Slots.h"
#include "tests/vx/Offer.h"
#include "vx/Exceptions.h"
#include "vx/io/ByteBuffer.h"
#include "vx/io/ByteBufferStreams.h"
#include "vx/io/Channels.h"
#include "vx/io/LockingChannel.h"
#include "vx/io/ReadWriteChannel.h"
#include "vx/util/CopyCharBuffer.h"

#include <functional>
#include <thread>

namespace vx::io {
namespace {

using vorb::IVXChannel;

TEST(Channels, KeepTheOrderOfVirtualOperations)
{
    expectSlots("IReadChannel", 3, {&IReadChannel::read});
    expectSlots("IWriteChannel", 3, {&IWriteChannel::write});
    expectSlots("IInheritableChannel", 4, {&IInheritableChannel::getInheritanceId});
    expectSlots("IVXChannel", 3, {&IVXChannel::Read, &IVXChannel::Write, &IVXChannel::GetInheritanceId});
    const Reference<IChannel> channel = Channels::adaptStreams(nullptr, nullptr);
    EXPECT_EQ(callSlot<std::uint32_t>(static_cast<IReadChannel*>(channel.get()), 1), 2U);
    EXPECT_EQ(callSlot<std::uint32_t>(static_cast<IWriteChannel*>(channel.get()), 2), 1U);
}

TEST(Channels, MoveBytesOfStreams)
{
    const Reference<ByteArrayOutputStream> output(new ByteArrayOutputStream);
    const Reference<IChannel> channel = Channels::adaptStreams(over("0123456789").get(), output.get());
    ByteBuffer buffer(100, VX_ENDIAN_LITTLE, false);
    buffer.setPosition(3);
    EXPECT_EQ(channel->read(buffer), 10);
    EXPECT_EQ(channel->read(buffer), -1);
    EXPECT_EQ(buffer.getPosition(), 13U);
    buffer.flip();
    buffer.setPosition(5);
    EXPECT_EQ(channel->write(buffer), 8);
    EXPECT_EQ(contentOf(*output), "23456789");
    ByteBuffer readOnly(reinterpret_cast<const signed char*>("ab"), 2, VX_ENDIAN_LITTLE);
    EXPECT_THROW(channel->read(readOnly), ReadOnlyException);
    EXPECT_THROW(Channels::adaptStreams(nullptr, nullptr)->read(buffer), UnsupportedOperationException);
    EXPECT_THROW(Channels::adaptVorbWithInheritance(nullptr), UnsupportedOperationException);
    EXPECT_THROW(LockingChannel(nullptr, nullptr).write(buffer), UnsupportedOperationException);
}

TEST(Channels, EndAtTheLimitWhenTheirStreamsMoveTheBuffer)
{
    const Reference<ByteBuffer> buffer(new ByteBuffer(8, VX_ENDIAN_LITTLE, false));
    const Reference<InputStream> input(new ByteBufferInputStream(buffer.get()));
    const Reference<OutputStream> output(new ByteBufferOutputStream(buffer.get()));
    const Reference<IChannel> channel = Channels::adaptStreams(input.get(), output.get());
    const std::pair<const char*, std::function<unsigned()>> rows[] = {
        {"write", [&] { return static_cast<unsigned>(channel->write(*buffer)); }},
        {"read", [&] { return static_cast<unsigned>(channel->read(*buffer)); }},
        {"writeTo", [&] { return buffer->writeTo(output.get()); }},
        {"readFrom", [&] { return buffer->readFrom(input.get()); }},
        {"readFully", [&] { return buffer->readFully(input.get()); }},
    };
    for (const auto& [name, move] : rows) {
        buffer->clear();
        buffer->setPosition(2);
        EXPECT_EQ(move(), 6U) << name;
        EXPECT_EQ(buffer->getPosition(), 8U) << name;
    }
}

TEST(ReadWriteChannel, IsAComponentOfItsHalves)
{
    struct Whole : ReadWriteChannel {
        using ReadWriteChannel::ReadWriteChannel;
        std::int32_t GetInheritanceId(IVXCharBuffer*) override { return RESULT_NOT_IMPLEMENTED; }
    };
    struct Broken : InputStream {
        using InputStream::read;
        std::int32_t read(signed char*, std::int32_t) override { throw std::bad_alloc(); }
    };
    const Reference<ByteArrayOutputStream> output(new ByteArrayOutputStream);
    const Reference<IChannel> reader = Channels::adaptStreams(over("abc").get(), nullptr);
    const Reference<IChannel> writer = Channels::adaptStreams(new Broken, output.get());
    const Reference<Whole> channel(new Whole(reader.get(), writer.get()));
    const Reference<IVXChannel> face(static_cast<Object*>(channel.get()));
    ASSERT_NE(face, nullptr);
    signed char bytes[8] = {};
    std::int32_t length = 2;
    EXPECT_EQ(callSlot<std::int32_t>(face.get(), 3, bytes, &length), RESULT_OK);
    EXPECT_EQ(callSlot<std::int32_t>(face.get(), 4, reinterpret_cast<const signed char*>("xyz"), &length), RESULT_OK);
    EXPECT_EQ(length, 2);
    EXPECT_EQ(contentOf(*output), "xy");
    for (const std::int32_t expected : {1, -1}) {
        length = 8;
        EXPECT_EQ(face->Read(bytes, &length), RESULT_OK);
        EXPECT_EQ(length, expected);
    }
    EXPECT_EQ(face->Read(bytes, &length), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(face->Write(nullptr, &length), RESULT_POINTER);
    length = 0;
    EXPECT_EQ(face->Write(nullptr, &length), RESULT_OK) << "nothing, from nowhere";
    const Reference<IVXChannel> failing(static_cast<IReadChannel*>(writer.get()));
    length = 8;
    EXPECT_EQ(failing->Read(bytes, &length), RESULT_OUT_OF_MEMORY);
}

/// A channel of another library. The test sets its results.
struct ForeignChannel : Component<IVXChannel> {
    std::int32_t Read(signed char* bytes, std::int32_t* length) override
    {
        m_room = *length;
        if (*length > 0)
            *bytes = 'r';
        *length = m_told;
        return m_result;
    }
    std::int32_t Write(const signed char*, std::int32_t* length) override
    {
        *length = m_told;
        return m_result;
    }
    std::int32_t GetInheritanceId(IVXCharBuffer* out) override
    {
        const Reference<IVXCharBuffer> kept(out);
        String id(u"foreign");
        VXCopyCharBuffer(out, &id);
        return m_result;
    }

    std::int32_t m_result = RESULT_OK;
    std::int32_t m_told = 0;
    std::int32_t m_room = 0;
};

TEST(Channels, AdaptComponents)
{
    const Reference<ForeignChannel> foreign(new ForeignChannel);
    const Reference<IInheritableChannel> channel = Channels::adaptVorbWithInheritance(foreign.get());
    EXPECT_EQ(channel->getInheritanceId(), u"foreign");
    ByteBuffer buffer(8, VX_ENDIAN_BIG, false);
    buffer.setPosition(2);
    foreign->m_told = 3;
    EXPECT_EQ(channel->read(buffer), 3);
    EXPECT_EQ(foreign->m_room, 6);
    EXPECT_EQ(buffer.getPosition(), 5U);
    EXPECT_EQ(buffer.get(2U), 'r');
    EXPECT_EQ(channel->write(buffer), 3);
    foreign->m_told = -1;
    EXPECT_EQ(channel->read(buffer), -1);
    EXPECT_EQ(buffer.getPosition(), 8U) << "the end moves nothing";
    foreign->m_told = 6;
    EXPECT_THROW(channel->read(buffer), RangeErrorException) << "more than there was room for";
    EXPECT_THROW(channel->write(buffer), RangeErrorException);
    foreign->m_result = RESULT_END_OF_FILE;
    EXPECT_EQ(resultOf([&] { channel->read(buffer); }), RESULT_END_OF_FILE);
    EXPECT_EQ(resultOf([&] { Channels::adaptVorbWithInheritance(foreign.get()); }), RESULT_END_OF_FILE);
    EXPECT_EQ(foreign->GetRefCount(), 2U) << "nothing is left of the channel that was not made";
}

TEST(LockingChannel, LocksForItsUsersAlone)
{
    const Reference<LockingChannel> channel(
        new LockingChannel(Channels::adaptStreams(over("ab").get(), nullptr).get(), "test"));
    channel->wait();
    std::thread([&] {
        EXPECT_FALSE(channel->tryWait());
        ByteBuffer buffer(1, VX_ENDIAN_LITTLE, false);
        EXPECT_EQ(channel->read(buffer), 1) << "which takes no lock";
    }).join();
    channel->signal();
    std::thread([&] {
        EXPECT_TRUE(channel->tryWait());
        channel->signal();
    }).join();
}

} // namespace
} // namespace vx::io
