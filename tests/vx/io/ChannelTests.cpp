#include "tests/Slots.h"
#include "tests/vx/Offer.h"
#include "vx/Exceptions.h"
#include "vx/io/ByteArrayInputStream.h"
#include "vx/io/ByteArrayOutputStream.h"
#include "vx/io/ByteBuffer.h"
#include "vx/io/Channels.h"
#include "vx/io/IoException.h"
#include "vx/io/LockingChannel.h"
#include "vx/io/ReadWriteChannel.h"
#include "vx/util/CopyCharBuffer.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <thread>

namespace vx::io {
namespace {

using vorb::IVXChannel;

Reference<ByteArrayInputStream> streamOf(const char* text)
{
    return new ByteArrayInputStream(reinterpret_cast<const signed char*>(text), static_cast<int>(std::strlen(text)));
}

std::string textOf(const ByteArrayOutputStream& stream)
{
    return std::string(reinterpret_cast<const char*>(stream.getBytes()), static_cast<std::size_t>(stream.getSize()));
}

TEST(Channels, KeepTheOrderOfVirtualOperations)
{
    expectSlots("IReadChannel", 3, {slotOf(&IReadChannel::read)});
    expectSlots("IWriteChannel", 3, {slotOf(&IWriteChannel::write)});
    expectSlots("IInheritableChannel", 4, {slotOf(&IInheritableChannel::getInheritanceId)});
    expectSlots("IVXChannel", 3,
        {slotOf(&IVXChannel::Read), slotOf(&IVXChannel::Write), slotOf(&IVXChannel::GetInheritanceId)});
    const Reference<IChannel> channel = Channels::adaptStreams(nullptr, nullptr);
    EXPECT_EQ(callSlot<std::uint32_t>(static_cast<IReadChannel*>(channel.get()), 1), 2U);
    EXPECT_EQ(callSlot<std::uint32_t>(static_cast<IWriteChannel*>(channel.get()), 2), 1U);
}

TEST(Channels, MoveBytesOfStreams)
{
    const Reference<ByteArrayOutputStream> output(new ByteArrayOutputStream);
    const Reference<IChannel> channel = Channels::adaptStreams(streamOf("0123456789").get(), output.get());
    ByteBuffer buffer(100, VX_ENDIAN_LITTLE, false);
    buffer.setPosition(3);
    EXPECT_EQ(channel->read(buffer), 10);
    EXPECT_EQ(buffer.getPosition(), 13U);
    EXPECT_EQ(channel->read(buffer), -1);
    EXPECT_EQ(buffer.getPosition(), 13U);
    buffer.flip();
    buffer.setPosition(5);
    EXPECT_EQ(channel->write(buffer), 8);
    EXPECT_EQ(buffer.getPosition(), 13U);
    EXPECT_EQ(channel->write(buffer), 0);
    EXPECT_EQ(textOf(*output), "23456789");
    buffer.setLimit(4);
    EXPECT_EQ(channel->write(buffer), 0) << "a limit below the position leaves nothing";

    ByteBuffer readOnly(reinterpret_cast<const signed char*>("ab"), 2, VX_ENDIAN_LITTLE);
    EXPECT_THROW(channel->read(readOnly), ReadOnlyException);
    const Reference<IChannel> deaf = Channels::adaptStreams(nullptr, nullptr);
    EXPECT_THROW(deaf->read(buffer), UnsupportedOperationException);
    EXPECT_THROW(deaf->write(buffer), UnsupportedOperationException);
}

TEST(Channels, AreComponentsOfTheirStreams)
{
    struct Broken : InputStream {
        using InputStream::read;
        std::int32_t read(signed char*, std::int32_t) override { throw std::bad_alloc(); }
    };
    const Reference<ByteArrayOutputStream> output(new ByteArrayOutputStream);
    const Reference<IChannel> channel = Channels::adaptStreams(streamOf("abc").get(), output.get());
    const Reference<IVXChannel> face(static_cast<IReadChannel*>(channel.get()));
    ASSERT_NE(face, nullptr);
    signed char bytes[8] = {};
    std::int32_t length = 2;
    EXPECT_EQ(callSlot<std::int32_t>(face.get(), 3, bytes, &length), RESULT_OK);
    EXPECT_EQ(length, 2);
    length = 8;
    EXPECT_EQ(face->Read(bytes, &length), RESULT_OK);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(bytes), static_cast<std::size_t>(length)), "c");
    length = 8;
    EXPECT_EQ(face->Read(bytes, &length), RESULT_OK);
    EXPECT_EQ(length, -1);
    length = 2;
    EXPECT_EQ(callSlot<std::int32_t>(face.get(), 4, reinterpret_cast<const signed char*>("xyz"), &length), RESULT_OK);
    EXPECT_EQ(length, 2);
    EXPECT_EQ(textOf(*output), "xy");

    length = -1;
    EXPECT_EQ(face->Read(bytes, &length), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(face->Read(bytes, nullptr), RESULT_POINTER);
    EXPECT_EQ(face->Write(nullptr, &length), RESULT_POINTER);
    const Reference<Broken> broken(new Broken);
    const Reference<IChannel> failing = Channels::adaptStreams(broken.get(), nullptr);
    const Reference<IVXChannel> failingFace(static_cast<IReadChannel*>(failing.get()));
    length = 8;
    EXPECT_EQ(failingFace->Read(bytes, &length), RESULT_OUT_OF_MEMORY);
    EXPECT_EQ(failingFace->Write(bytes, &length), UnsupportedOperationException().getResult());

    const Reference<String> id(new String);
    EXPECT_EQ(face->GetInheritanceId(id.get()), RESULT_NOT_AVAILABLE);
    const Reference<IInheritableChannel> named = Channels::adaptStreams(nullptr, nullptr, u"vx.test=7");
    EXPECT_EQ(named->getInheritanceId(), u"vx.test=7");
    const Reference<IVXChannel> namedFace(static_cast<IReadChannel*>(named.get()));
    EXPECT_EQ(callSlot<std::int32_t>(namedFace.get(), 5, static_cast<IVXCharBuffer*>(id.get())), RESULT_OK);
    EXPECT_EQ(*id, u"vx.test=7");
    EXPECT_EQ(namedFace->GetInheritanceId(nullptr), RESULT_POINTER);
}

/// A channel of another library, which tells what it is told to tell.
struct ForeignChannel : Component<IVXChannel> {
    std::int32_t Read(signed char* bytes, std::int32_t* length) override
    {
        m_room = *length;
        if (*length > 0)
            *bytes = 'r';
        *length = m_told;
        return m_result;
    }
    std::int32_t Write(const signed char* bytes, std::int32_t* length) override
    {
        m_room = *length;
        m_written = *length > 0 ? *bytes : 0;
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
    signed char m_written = 0;
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
    buffer.setPosition(2);
    foreign->m_told = 1;
    EXPECT_EQ(channel->write(buffer), 1);
    EXPECT_EQ(foreign->m_written, 'r');
    EXPECT_EQ(buffer.getPosition(), 3U);

    foreign->m_told = -1;
    EXPECT_EQ(channel->read(buffer), -1);
    EXPECT_EQ(buffer.getPosition(), 3U) << "the end moves nothing";
    foreign->m_told = 6;
    EXPECT_THROW(channel->read(buffer), RangeErrorException) << "more than there was room for";
    EXPECT_THROW(channel->write(buffer), RangeErrorException);
    EXPECT_EQ(buffer.getPosition(), 3U);

    foreign->m_result = RESULT_END_OF_FILE;
    EXPECT_EQ(resultOf([&] { channel->read(buffer); }), RESULT_END_OF_FILE);
    EXPECT_EQ(resultOf([&] { channel->write(buffer); }), RESULT_END_OF_FILE);
    EXPECT_EQ(resultOf([&] { channel->getInheritanceId(); }), RESULT_END_OF_FILE);
    EXPECT_EQ(resultOf([&] { Channels::adaptVorbWithInheritance(foreign.get()); }), RESULT_END_OF_FILE);
    EXPECT_NO_THROW(Channels::adaptVorbChannel(foreign.get()));
    EXPECT_EQ(foreign->GetRefCount(), 2U) << "nothing is left of the channel that was not made";
}

TEST(ReadWriteChannel, JoinsTwoHalves)
{
    struct Whole : ReadWriteChannel {
        using ReadWriteChannel::ReadWriteChannel;
        std::int32_t GetInheritanceId(IVXCharBuffer*) override { return RESULT_NOT_IMPLEMENTED; }
    };
    const Reference<ByteArrayOutputStream> output(new ByteArrayOutputStream);
    const Reference<IChannel> reader = Channels::adaptStreams(streamOf("in").get(), nullptr);
    const Reference<IChannel> writer = Channels::adaptStreams(nullptr, output.get());
    const Reference<Whole> channel(new Whole(reader.get(), writer.get()));
    const Reference<IVXChannel> face(static_cast<Object*>(channel.get()));
    ASSERT_NE(face, nullptr);
    signed char bytes[8];
    std::int32_t length = 8;
    EXPECT_EQ(face->Read(bytes, &length), RESULT_OK);
    EXPECT_EQ(length, 2);
    EXPECT_EQ(face->Write(bytes, &length), RESULT_OK);
    EXPECT_EQ(textOf(*output), "in");
    ByteBuffer buffer(4, VX_ENDIAN_LITTLE, false);
    EXPECT_EQ(channel->read(buffer), -1);
    EXPECT_EQ(channel->write(buffer), 4);
}

TEST(LockingChannel, LocksForItsUsersAlone)
{
    const Reference<LockingChannel> channel(
        new LockingChannel(Channels::adaptStreams(streamOf("ab").get(), nullptr).get(), "test"));
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
    const Reference<IChannel> plain(channel.get());
    ByteBuffer buffer(2, VX_ENDIAN_LITTLE, false);
    EXPECT_EQ(plain->read(buffer), 1);
    EXPECT_THROW(plain->write(buffer), UnsupportedOperationException);
}

} // namespace
} // namespace vx::io
