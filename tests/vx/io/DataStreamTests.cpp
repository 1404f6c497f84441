#include "StreamDoubles.h"

#include "tests/Random.h"
#include "tests/Slots.h"
#include "tests/Told.h"

using namespace vx;
using namespace vx::io;

namespace {

TEST(DataStreams, StandInTheirOrder)
{
    using In = DataInputStream;
    using Out = DataOutputStream;
    expectSlots("input", slotOf(&InputStream::reset) + 1,
        {&In::readFully, &In::readBool, &In::readByte, &In::readChar16, &In::readChar32, &In::readInt16, &In::readInt32,
            &In::readInt64, &In::readFloat, &In::readDouble, &In::readString});
    expectSlots("output", slotOf(&OutputStream::close) + 1,
        {&Out::writeBool, &Out::writeByte, &Out::writeChar16, &Out::writeChar32, &Out::writeInt16, &Out::writeInt32,
            &Out::writeInt64, &Out::writeFloat, &Out::writeDouble, &Out::writeString});
    expectSlots("bits", slotOf(&InputStream::reset) + 1,
        {slotOf<int (BitInputStream::*)(int)>(&BitInputStream::read), &BitInputStream::readBit});
    expectSlots("bits", slotOf(&OutputStream::close) + 1,
        {slotOf<void (BitOutputStream::*)(std::uint32_t, int)>(&BitOutputStream::write), &BitOutputStream::writeBit});
}

TEST(DataStreams, CarryEveryNumberHighestByteFirst)
{
    const Reference<ByteArrayOutputStream> bytes(new ByteArrayOutputStream);
    DataOutputStream out(bytes.get());
    out.writeBool(true);
    out.writeUnsignedByte(254);
    out.writeShort(-2);
    out.writeUnsignedShort(65534);
    out.writeChar(u'\u20AC');
    out.writeLong(0x01020304);
    out.writeUnsignedLong(0xFFFEFDFC);
    out.writeChar32(0x1F600);
    out.writeInt64(0x01020304F5060708);
    out.writeFloat(1.0F);
    out.writeDouble(-2.0);
    EXPECT_EQ(contentOf(*bytes),
        std::string("\1\xFE\xFF\xFE\xFF\xFE\x20\xAC\1\2\3\4\xFF\xFE\xFD\xFC"
                    "\0\1\xF6\0\1\2\3\4\xF5\6\7\x8"
                    "\x3F\x80\0\0\xC0\0\0\0\0\0\0\0",
            40));
    DataInputStream in(over(contentOf(*bytes)).get());
    EXPECT_EQ((Told {in.readBool(), int {in.readUnsignedByte()}, in.readShort(), in.readUnsignedShort(),
                  int {in.readChar()}, in.readLong(), in.readUnsignedLong(), std::uint32_t {in.readChar32()},
                  in.readInt64(), in.readFloat(), in.readDouble()}),
        (Told {1, 254, -2, 65534, 0x20AC, 0x01020304, 0xFFFEFDFC, 0x1F600, 0x01020304F5060708, 1.0F, -2.0}));
}

TEST(DataStreams, EndInsideAValueWithItsBytesGone)
{
    std::string events;
    DataInputStream in(new Source<Bytes>(unitsFrom<signed char>('a', 9), events, {2, 0, 3}));
    signed char target[7] = {};
    in.readFully(target, 6);
    EXPECT_EQ((Told {reinterpret_cast<const char*>(target), events}), "abcdef read(6) read(4) read(4) read(1) ");
    EXPECT_THROW(in.readDouble(), UnexpectedEOFException);
    EXPECT_THROW(in.readByte(), UnexpectedEOFException);
}

/// A class of which nothing is known, so that each of its operations must be called.
template <class Stream>
struct Unknown : Stream {
    using Stream::Stream;
};

/// Numbers and characters through a buffer of 16 bytes, up to a stranger among the characters and the end, with the calls
/// that reached the source.
template <class Buffer>
std::string readThrough(const std::vector<int>& steps)
{
    const std::string bytes = "\1\2\xFF\xFEnumbers of one to 8 bytes.ABCDEFGHJKLMNPQRSTUVWXYZ2345OABC\x80\x81\x82";
    std::string told;
    {
        const Reference<InputStream> buffer(
            new Buffer(new Source<Bytes>(std::vector<signed char>(bytes.begin(), bytes.end()), told, steps), 16));
        DataInputStream numbers(buffer.get());
        for (int round = 0; round < 2; ++round)
            told += Told {numbers.readInt16(), numbers.readBool(), numbers.readInt32(), numbers.readInt64()} + "; ";
        AlphaNumInputStream characters(buffer.get());
        signed char target[32];
        for (const std::int32_t length : {4, 5, 1, 6, 20}) {
            std::fill(std::begin(target), std::end(target), 0);
            try {
                told += Told {characters.read(target, length)};
            } catch (const text::charset::InvalidCharacterException&) {
                told += "a stranger";
            }
            for (const signed char byte : target)
                told += ' ' + std::to_string(byte);
        }
        EXPECT_THROW(numbers.readInt64(), UnexpectedEOFException);
        buffer->close();
        EXPECT_THROW(numbers.readByte(), IoException);
    }
    return told;
}

TEST(DataStreams, ReadTheSameFromABufferAsByteByByte)
{
    for (const std::vector<int>& steps : {std::vector<int> {}, {1, 2, 3, 4, 5, 6, 7, 8, 9}, {3, 3, 3, 3, 3, 3, 3, 3}})
        EXPECT_EQ(readThrough<BufferedInputStream>(steps), readThrough<Unknown<BufferedInputStream>>(steps));
}

template <class Buffer>
std::string writeThrough(std::int32_t size)
{
    std::string told;
    {
        const Reference<OutputStream> buffer(new Buffer(new Sink<Bytes>(told), size));
        DataOutputStream numbers(buffer.get());
        for (int round = 0; round < 5; ++round) {
            numbers.writeInt16(0x6162);
            numbers.writeBool(true);
            numbers.writeInt32(0x63646566);
            numbers.writeInt64(0x6768696A6B6C6D6E);
        }
        numbers.flush();
        buffer->close();
        EXPECT_THROW(numbers.writeInt16(1), IoException);
    }
    return told;
}

template <class Array>
std::string writeInto(std::int32_t capacity)
{
    const Reference<Array> array(new Array(capacity));
    DataOutputStream numbers(array.get());
    for (int number = 0; number < 40; ++number) {
        numbers.writeInt16(static_cast<short>(number));
        numbers.writeInt32(-number);
    }
    return contentOf(*array);
}

TEST(DataStreams, WriteTheSameToABufferAsToAnUnknownStream)
{
    for (const std::int32_t size : {1, 2, 4, 8, 9, 16})
        EXPECT_EQ(writeThrough<BufferedOutputStream>(size), writeThrough<Unknown<BufferedOutputStream>>(size));
    for (const std::int32_t capacity : {0, 5, 239, 240})
        EXPECT_EQ(writeInto<ByteArrayOutputStream>(capacity), writeInto<Unknown<ByteArrayOutputStream>>(capacity));
}

TEST(BitStreams, PackFromTheTopOfEachByte)
{
    const Reference<ByteArrayOutputStream> bytes(new ByteArrayOutputStream);
    BitOutputStream out(bytes.get());
    for (const bool bit : {true, false, true})
        out.writeBit(bit);
    out.flush();
    out.write(5, 3);
    out.write(1, 1);
    out.flush();
    out.write(0, 4);
    out.write(static_cast<signed char>(0xFF)); // across two bytes
    out.write(0xFFFFFFFF, 32);
    out.write("\x12", 1);
    out.write(3, 4);
    EXPECT_THROW(out.write(8, 3), RangeErrorException);
    EXPECT_THROW(out.write(1UL << 32, 3), RangeErrorException);
    EXPECT_THROW(out.write(1, 33), ResultException);
    EXPECT_EQ(contentOf(*bytes), "\xA0\xB0\x0F\xFF\xFF\xFF\xFF\xF1\x23");
    BitInputStream in(over(contentOf(*bytes)).get());
    signed char target[8] = {};
    EXPECT_EQ((Told {in.readBit(), in.read(3), in.read(), in.read(12), in.read(target, 2), int {target[1]}, in.read(24),
                  in.read(7), in.read(2)}),
        (Told {1, 2, 0x0B, 0x00F, 2, -1, 0xFFFFF1, 0x11, -1}))
        << "one bit is left";
}

std::string encoded(std::string_view bytes, const char16_t* alphabet, std::size_t piece = 1000)
{
    const Reference<ByteArrayOutputStream> text(new ByteArrayOutputStream);
    AlphaNumOutputStream out(text.get(), alphabet);
    for (; !bytes.empty(); bytes.remove_prefix(std::min(piece, bytes.size())))
        out.write(bytes.data(), static_cast<std::int32_t>(std::min(piece, bytes.size())));
    out.flush();
    return contentOf(*text);
}

std::string decoded(std::string_view text, const char16_t* alphabet, std::int32_t piece = 1000)
{
    AlphaNumInputStream in(over(text).get(), alphabet);
    std::string bytes;
    char block[1000];
    for (std::int32_t got; (got = in.read(block, piece)) > 0;)
        bytes.append(block, static_cast<std::size_t>(got));
    return bytes;
}

TEST(AlphaNumStreams, LayBitsOutAsBase32)
{
    constexpr const char16_t* BASE32 = u"ABCDEFGHIJKLMNOPQRSTUVWXYZ234567";
    const std::pair<const char*, const char*> vectors[] = {// RFC 4648, without its padding
        {"", ""}, {"f", "MY"}, {"fo", "MZXQ"}, {"foo", "MZXW6"}, {"foob", "MZXW6YQ"}, {"fooba", "MZXW6YTB"},
        {"foobar", "MZXW6YTBOI"}};
    for (const auto& [bytes, text] : vectors) {
        EXPECT_EQ(encoded(bytes, BASE32), text);
        EXPECT_EQ(decoded(text, BASE32).c_str(), std::string(bytes)) << "up to a zero byte";
    }
}

TEST(AlphaNumStreams, ComeBackInPiecesOfAnySize)
{
    Random random;
    for (std::size_t length = 0; length < 42; ++length) {
        std::string bytes(length, '\0');
        for (char& byte : bytes)
            byte = static_cast<char>(random());
        const std::string text = encoded(bytes, nullptr);
        EXPECT_EQ(text.size(), (length * 8 + 4) / 5);
        for (const int piece : {1, 2, 3, 4, 7}) {
            EXPECT_EQ(encoded(bytes, nullptr, static_cast<std::size_t>(piece)), text);
            std::string expected = bytes;
            expected.append(length % 5 == 0 ? 0 : 1, '\0');
            EXPECT_EQ(decoded(text, nullptr, piece), expected) << length;
        }
    }
}

TEST(AlphaNumStreams, GroupByFlushAndTellStrangers)
{
    std::string events;
    AlphaNumOutputStream out(new Sink<Bytes>(events));
    out.write(static_cast<signed char>(0xFF));
    out.flush();
    EXPECT_EQ(events, "write(9) write(6) flush ");
    for (const char* text : {"AAa", "AAO", "AA1", "AA ", "AA\xC1"})
        EXPECT_THROW(decoded(text, nullptr), text::charset::InvalidCharacterException) << text;
}

} // namespace
