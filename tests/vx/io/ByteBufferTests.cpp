#include "StreamDoubles.h"

#include "legacy/CVXByteBuffer.h"
#include "tests/Told.h"

#include <functional>

using namespace vx;
using namespace vx::io;

namespace {

struct Newer {
    using Buffer = ByteBuffer;
    using Byte = signed char;
    static constexpr auto LITTLE = VX_ENDIAN_LITTLE;
    static constexpr auto BIG = VX_ENDIAN_BIG;
};
struct Older {
    using Buffer = CVXByteBuffer;
    using Byte = unsigned char;
    static constexpr auto LITTLE = CVX_ORDER_LITTLE;
    static constexpr auto BIG = CVX_ORDER_BIG;
};

template <class Generation>
class ByteBuffers : public testing::Test {
public:
    static std::string text(const typename Generation::Buffer& buffer)
    {
        return {reinterpret_cast<const char*>(buffer.getConstBuffer()), buffer.getCapacity()};
    }
    static const auto* bytes(const char* text) { return reinterpret_cast<const typename Generation::Byte*>(text); }
};
using Generations = testing::Types<Newer, Older>;
TYPED_TEST_SUITE(ByteBuffers, Generations);

TYPED_TEST(ByteBuffers, StoreNumbersInTheirOrder)
{
    typename TypeParam::Buffer buffer(64, TypeParam::BIG, false);
    for (const auto order : {TypeParam::BIG, TypeParam::LITTLE}) {
        buffer.clear();
        buffer.setOrder(order);
        buffer.put(0); // a byte, not a null pointer
        buffer.rewind();
        buffer.put(static_cast<typename TypeParam::Byte>(0x81));
        buffer.putInt16(-2);
        buffer.putInt32(0x01020304);
        buffer.putInt64(0x0102030405060788);
        buffer.putFloat(-1.5F);
        buffer.putDouble(1e300);
        std::string expected("\x81\xFF\xFE\1\2\3\4\1\2\3\4\5\6\7\x88\xBF\xC0\0\0"
                             "\x7E\x37\xE4\x3C\x88\0\x75\x9C",
            27);
        if (order == TypeParam::LITTLE) {
            for (const auto& [first, size] : {std::pair {1, 2}, {3, 4}, {7, 8}, {15, 4}, {19, 8}})
                std::reverse(expected.begin() + first, expected.begin() + first + size);
        }
        EXPECT_EQ(this->text(buffer).substr(0, 27), expected);
        buffer.flip();
        EXPECT_EQ((Told {buffer.remaining(), buffer.get(), buffer.getInt16(), buffer.getInt32(), buffer.getInt64(),
                      buffer.getFloat(), buffer.getDouble()}),
            (Told {27, '\x81', -2, 0x01020304, 0x0102030405060788, -1.5, 1e300}));
    }
}

TYPED_TEST(ByteBuffers, MoveBytesUpToTheLimit)
{
    using Byte = typename TypeParam::Byte;
    char block[] = "................";
    typename TypeParam::Buffer buffer(reinterpret_cast<Byte*>(block), 16, TypeParam::BIG, false);
    buffer.setPosition(6);
    EXPECT_EQ((Told {buffer.put(this->bytes("0123456789abcdef"), 16), buffer.put(0U, this->bytes("ABC"), 3), block}),
        "10 3 ABC...0123456789");
    buffer.setLimit(8);
    Byte target[20] = {};
    EXPECT_EQ(buffer.get(target, 20), 0U) << "the position may be beyond the limit, but nothing is read there";
    EXPECT_THROW(buffer.setPosition(9), RangeErrorException);
    EXPECT_THROW(buffer.setLimit(17), RangeErrorException);
    buffer.rewind();
    const auto slice = buffer.slice();
    buffer.setPosition(4);
    slice->setPosition(2);
    slice->put(&buffer); // they overlap
    EXPECT_EQ((Told {block, buffer.getPosition()}), "AB..010123456789 8");
}

TYPED_TEST(ByteBuffers, ShareOrCopyTheirBlock)
{
    using Buffer = typename TypeParam::Buffer;
    auto first = std::make_unique<Buffer>(4, TypeParam::LITTLE, false);
    first->put(this->bytes("abcd"), 4);
    first->setLimit(2);
    const Buffer copy(*first);
    const auto duplicate = first->duplicate(true);
    Buffer assigned(1, TypeParam::BIG, true);
    assigned = *first;
    first->put(0U, this->bytes("x"), 1);
    EXPECT_EQ(this->text(copy), "xbcd");
    EXPECT_TRUE(duplicate->isReadOnly());
    EXPECT_THROW(first->duplicate(false, 3), RangeErrorException);
    first.reset(); // an owned block exists as long as it has an owner
    EXPECT_EQ((Told {this->text(copy), this->text(assigned)}), "xbcd xbcd");
}

TYPED_TEST(ByteBuffers, WriteNothingWhereTheyAreReadOnly)
{
    using Byte = typename TypeParam::Byte;
    const Byte block[8] = {1, 2, 3};
    typename TypeParam::Buffer buffer(block, 8, TypeParam::BIG);
    const std::function<void()> writes[]
        = {[&] { buffer.put(0, 1); }, [&] { buffer.put(Byte {}); }, [&] { buffer.putInt16(1); },
            [&] { buffer.putInt32(0, 1); }, [&] { buffer.putInt64(1); }, [&] { buffer.put(block, 0); },
            [&] { buffer.readFrom(nullptr); }, [&] { buffer.getBuffer(); }, [&] { buffer.slice()->put(Byte {}); }};
    for (const auto& write : writes)
        EXPECT_THROW(write(), ReadOnlyException);
}

TYPED_TEST(ByteBuffers, FillAndEmptyThroughStreams)
{
    std::string events;
    typename TypeParam::Buffer buffer(6, TypeParam::BIG, false);
    Source<Bytes> source(unitsFrom<signed char>('a', 9), events, {2, 3, 0});
    // A read that gives nothing ends it
    EXPECT_EQ((Told {buffer.readFrom(&source), buffer.readFully(&source), buffer.readFully(&source), events}),
        "2 3 1 read(6) read(4) read(1) read(1) ");
    EXPECT_EQ(this->text(buffer), "abcdef");
    Sink<Bytes> sink(events);
    buffer.setPosition(2);
    EXPECT_EQ(buffer.writeTo(&sink), 4U);
}

TYPED_TEST(ByteBuffers, CompareWholeBlocksWithoutSigns)
{
    using Buffer = typename TypeParam::Buffer;
    const auto over = [&](const char* text, unsigned size) { return Buffer(this->bytes(text), size, TypeParam::BIG); };
    Buffer abc = over("abc", 3);
    abc.setLimit(1);
    EXPECT_TRUE(abc.equals(over("abc", 3)));
    EXPECT_EQ(abc.compareTo(over("abd", 3)), -1);
    EXPECT_EQ(over("\x80", 1).compareTo(over("\x7F", 1)), 1);
    EXPECT_FALSE(abc.equals(String(u"abc")));
}

TEST(ByteBufferStreams, StayWithinTheWindow)
{
    const Reference<ByteBuffer> buffer(new ByteBuffer(8, VX_ENDIAN_BIG, false));
    buffer->setLimit(5);
    ByteBufferOutputStream out(buffer.get());
    out.write("abc", 3);
    EXPECT_EQ(out.Overflowed(), 0);
    out.write("defg", 4);
    EXPECT_EQ(out.Overflowed(), 1);
    buffer->rewind();
    ByteBufferInputStream in(buffer.get());
    char target[8] = {};
    EXPECT_EQ((Told {in.read(), in.read(target, 8), target, in.read()}), "97 4 bcde -1");
}

} // namespace
