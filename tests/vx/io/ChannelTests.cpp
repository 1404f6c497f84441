#include "StreamDoubles.h"

#include "tests/Slots.h"
#include "tests/Told.h"
#include "tests/vx/Offer.h"

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
    EXPECT_EQ((Told {channel->read(buffer), channel->read(buffer), buffer.getPosition()}), "10 -1 13");
    buffer.flip();
    buffer.setPosition(5);
    EXPECT_EQ((Told {channel->write(buffer), contentOf(*output)}), "8 23456789");
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
    const std::function<unsigned()> ways[] = {[&] { return static_cast<unsigned>(channel->write(*buffer)); },
        [&] { return static_cast<unsigned>(channel->read(*buffer)); }, [&] { return buffer->writeTo(output.get()); },
        [&] { return buffer->readFrom(input.get()); }, [&] { return buffer->readFully(input.get()); }};
    for (const auto& move : ways) {
        buffer->clear();
        buffer->setPosition(2);
        EXPECT_EQ((Told {move(), buffer->getPosition()}), "6 8") << &move - ways;
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
    EXPECT_EQ((Told {length, contentOf(*output)}), "2 xy");
    for (const std::int32_t expected : {1, -1}) {
        length = 8;
        EXPECT_EQ((Told {face->Read(bytes, &length), length}), (Told {RESULT_OK, expected}));
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
    EXPECT_EQ((Told {channel->read(buffer), foreign->m_room, buffer.getPosition(), buffer.get(2U)}), "3 6 5 r");
    EXPECT_EQ(channel->write(buffer), 3);
    foreign->m_told = -1;
    EXPECT_EQ((Told {channel->read(buffer), buffer.getPosition()}), "-1 8") << "the end moves nothing";
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
    ByteBuffer buffer(1, VX_ENDIAN_LITTLE, false);
    std::thread([&] { EXPECT_EQ((Told {channel->tryWait(), channel->read(buffer)}), "0 1"); }).join();
    channel->signal();
    std::thread([&] { EXPECT_TRUE(channel->tryWait() && (channel->signal(), true)); }).join();
}

} // namespace
} // namespace vx::io
