#include "Run.h"

#include "tests/Slots.h"
#include "tests/vx/Common.h"
#include "tests/vxsys/Scratch.h"
#include "vx/text/charset/BTCSingleByte.h"
#include "vx/text/charset/BTCUTF16.h"
#include "vx/text/charset/BTCUTF32.h"
#include "vx/text/charset/BTCUTF8.h"
#include "vx/text/charset/CTBSingleByte.h"
#include "vx/text/charset/CTBUTF16.h"
#include "vx/text/charset/CTBUTF32.h"
#include "vx/text/charset/CTBUTF8.h"
#include "vx/text/charset/CharsetException.h"

namespace vx::text::charset {
namespace {

// A code page class cannot be made with another table.
static_assert(!std::is_constructible_v<BTCCP437, const char16_t*, const char16_t*>);
static_assert(!std::is_constructible_v<CTBCP1252, const char16_t*, const int*, const unsigned char*>);

/// Classes that differ only in parts of their names.
struct Decoder {
    using Converter = ByteToCharConverter;
    using Unit = char16_t;
    static constexpr int CAPACITY = 3;
    static constexpr auto get = &Converter::getSubstitutionChars;
    static constexpr auto set = &Converter::setSubstitutionChars;
};

struct Encoder {
    using Converter = CharToByteConverter;
    using Unit = signed char;
    static constexpr int CAPACITY = 7;
    static constexpr auto get = &Converter::getSubstitutionBytes;
    static constexpr auto set = &Converter::setSubstitutionBytes;
};

template <class Side>
class Converters : public testing::Test {
};
using Sides = testing::Types<Decoder, Encoder>;
TYPED_TEST_SUITE(Converters, Sides);

TYPED_TEST(Converters, StandInTheirSlots)
{
    using Converter = typename TypeParam::Converter;
    expectSlots("converter", slotOf(&Object::toString) + 1,
        {&Converter::convert, &Converter::flush, &Converter::reset, &Converter::getEncodingName,
            &Converter::getMaxBytesPerChar, &Converter::getMaxCharsPerByte, &Converter::getSubstitutionMode,
            &Converter::setSubstitutionMode, TypeParam::get, TypeParam::set});
    const std::size_t hook = slotOf(TypeParam::set) + 1;
    expectSlots("decoders", hook, {&BTCSingleByte::convertByte});
    expectSlots("encoders", hook, {&CTBSingleByte::convertChar});
    expectSlots("UTF-16", hook, {&ByteToCharUTF::convertChar, &BTCUTF16::convertUTF16});
    expectSlots("UTF-32", hook, {&ByteToCharUTF::convertChar, &BTCUTF32::convertUTF32});
    expectSlots("UTF-16", hook, {&CharToByteUTF::convertChar, &CTBUTF16::convertUTF16});
    expectSlots("UTF-32", hook, {&CharToByteUTF::convertChar, &CTBUTF32::convertUTF32});
}

TYPED_TEST(Converters, KeepASubstitutionOfTheirOwn)
{
    using Unit = typename TypeParam::Unit;
    const auto newConverter
        = [] { return Reference<typename TypeParam::Converter>(TypeParam::Converter::getConverter(u"cp437")); };
    const auto first = newConverter();
    const auto second = newConverter();
    EXPECT_NE(first, second);

    Unit units[8] = {};
    const Unit letters[8] = {'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h'};
    for (int length : {0, 2, TypeParam::CAPACITY, TypeParam::CAPACITY + 1, -1}) {
        (first.get()->*TypeParam::set)(letters, length);
        const int held = std::clamp(length, 0, TypeParam::CAPACITY);
        EXPECT_EQ((first.get()->*TypeParam::get)(nullptr, 0), held);
        std::fill(std::begin(units), std::end(units), Unit {});
        EXPECT_EQ((first.get()->*TypeParam::get)(units, 8), held);
        EXPECT_TRUE(std::equal(units, units + held, letters));
        EXPECT_EQ(units[held], 0) << "no more than there are";
    }
    (first.get()->*TypeParam::set)(letters, 2);
    first->setSubstitutionMode(false);
    EXPECT_TRUE(second->getSubstitutionMode());
    EXPECT_EQ((second.get()->*TypeParam::get)(nullptr, 0), 1);

    *second = *first;
    EXPECT_FALSE(second->getSubstitutionMode());
    EXPECT_EQ((second.get()->*TypeParam::get)(units, 1), 1);
    EXPECT_EQ(units[0], 'a');
}

TYPED_TEST(Converters, FollowTheEnvironmentWithoutAName)
{
    const auto name = [](const char* locale) {
        const ScopedVariable all("LC_ALL", locale);
        const Reference<typename TypeParam::Converter> byName(TypeParam::Converter::getConverter(nullptr));
        const Reference<typename TypeParam::Converter> byDefault(TypeParam::Converter::getDefaultConverter());
        EXPECT_EQ(std::u16string(byName->getEncodingName()), byDefault->getEncodingName());
        return std::u16string(byName->getEncodingName());
    };
    EXPECT_EQ(name("C"), u"UTF-8");
    EXPECT_EQ(name("xx_XX.ISO8859-1"), u"ISO8859_1");
    EXPECT_EQ(name("xx_XX.KOI8-R"), u"ASCII") << "that only the platform knows";
    EXPECT_EQ(name("xx_XX.a-name-of-an-encoding-beyond-forty-units"), u"ASCII");
}

TEST(Converter, SubstitutesByTheRulesOfItsFamily)
{
    const std::tuple<const char16_t*, std::string_view, int, std::int32_t, const char16_t*, std::int32_t> decodings[]
        = {// The encoding, the source, the length of the substitution, the room, and what is written and read.
            // One byte: exactly one unit, or nothing.
            {u"ASCII", "a\xE9\x62", 0, 1, u"a", 2}, {u"ASCII", "a\xE9\x62", 2, 2, u"ab", 3},
            // Values above the last code point need room for one more unit than they use.
            {u"UTF-8", "\xF4\xBF\xBF\xBF\x41", 3, 3, u"", 0}, {u"UTF-8", "\xF4\xBF\xBF\xBF\x41", 3, 4, u"xyzA", 5},
            {u"UTF-8", "\xF4\xBF\xBF\xBF\x41", 0, 1, u"A", 5}, {u"UTF-32BE", {"\x00\x11\x00\x00", 4}, 2, 3, u"xy", 4},
            {u"UTF-8", "\xC3\x41", 3, 2, u"\uFFFDA", 2}}; // a bad byte has its own
    for (const auto& [encoding, source, length, room, units, read] : decodings) {
        const Reference<ByteToCharConverter> decoder(ByteToCharConverter::getConverter(encoding));
        decoder->setSubstitutionChars(u"xyz", length);
        const Decode run(*decoder, std::string(source), room);
        EXPECT_EQ(run.output, units) << length << " " << room;
        EXPECT_EQ(run.read, read) << length << " " << room;
    }
    const std::tuple<const char16_t*, int, std::int32_t, const char*, std::int32_t> encodings[]
        = {{u"a\u0100b", 1, 3, "axb", 3}, {u"a\u0100b", 0, 2, "ab", 3}, {u"a\u0100b", 2, 2, "ab", 3},
            {u"a\u0100b", 1, 1, "a", 1}, {u"\U0001F600b", 1, 2, "xb", 3}, {u"\U0001F600b", 1, 0, "", 1},
            {u"\U0001F600b", 7, 1, "b", 3}};
    for (const auto& [source, length, room, bytes, read] : encodings) {
        for (const char16_t* name : {u"ASCII", u"ISO8859_1", u"CP437", u"CP1252"}) {
            const Reference<CharToByteConverter> encoder(CharToByteConverter::getConverter(name));
            encoder->setSubstitutionBytes(reinterpret_cast<const signed char*>("xyzuvwt"), length);
            const Encode run(*encoder, source, room);
            EXPECT_EQ(run.output, bytes) << length << " " << room;
            EXPECT_EQ(run.read, read) << length << " " << room;
        }
    }
}

TEST(Converter, HoldsALeadSurrogateUntilItIsReset)
{
    for (const char16_t* name : {u"ASCII", u"CP1252", u"UTF-8", u"UTF-32LE"}) {
        const Reference<CharToByteConverter> encoder(CharToByteConverter::getConverter(name));
        constexpr char HELD[] = "leading surrogate without trailing";
        EXPECT_EQ(Encode(*encoder, u"\xD83D", 4).read, 1);
        std::int32_t written = 0;
        signed char bytes[4];
        for (int again = 0; again < 2; ++again) {
            EXPECT_EQ(saidBy<InvalidCharacterException>([&] { encoder->flush(bytes, &written, 4); }), HELD);
            const Encode other(*encoder, u"A", 4);
            EXPECT_TRUE(other.failure == HELD && other.read == 0) << other.failure;
        }
        encoder->reset();
        EXPECT_EQ(encoder->flush(bytes, &written, 4) | written, 0);
        EXPECT_EQ(Encode(*encoder, u"A", 4).output[0], 'A');
    }
    const Reference<CharToByteConverter> encoder(new CTBUTF8);
    EXPECT_EQ(Encode(*encoder, u"\xD83D", 0).output, "");
    EXPECT_EQ(Encode(*encoder, u"\xDE00", 3).read, 0) << "the pair waits for its room";
    EXPECT_EQ(Encode(*encoder, u"\xDE00", 4).output, "\xF0\x9F\x98\x80");
}

/// Derived encodings: their hooks are called, although the base class has a faster way.
template <class Base>
struct Rot1 : Base {
    char16_t convertByte(signed char byte) override { return static_cast<char16_t>(byte + 1); }
};
template <class Base>
struct UnRot1 : Base {
    signed char convertChar(char16_t unit) override { return static_cast<signed char>(unit - 1); }
};
struct Rot1Utf16 : BTCUTF16LE {
    char16_t convertChar(char16_t unit) override { return static_cast<char16_t>(unit + 1); }
};
struct UnRot1Utf16 : CTBUTF16LE {
    char16_t convertChar(char16_t unit) override { return static_cast<char16_t>(unit - 1); }
};
struct Rot1Utf32 : BTCUTF32LE {
    std::uint32_t convertUTF32(std::uint32_t value) override { return value + 1; }
};
struct UnRot1Utf32 : CTBUTF32LE {
    std::uint32_t convertUTF32(std::uint32_t value) override { return value - 1; }
};

TEST(Converter, AsksTheHooksOfDerivedClasses)
{
    const std::u16string text(70, u'B');
    const auto expectRot1 = [&](ByteToCharConverter* newDecoder, CharToByteConverter* newEncoder, std::size_t width) {
        const Reference<ByteToCharConverter> decoder(newDecoder);
        const Reference<CharToByteConverter> encoder(newEncoder);
        const std::string bytes = Encode(*encoder, text, 300).output;
        ASSERT_EQ(bytes.size(), width * text.size());
        for (std::size_t at = 0; at < bytes.size(); ++at)
            EXPECT_EQ(bytes[at], at % width == 0 ? 'A' : 0);
        EXPECT_EQ(Decode(*decoder, bytes).output, text);
    };
    expectRot1(new Rot1<BTCASCII>, new UnRot1<CTBASCII>, 1);
    expectRot1(new Rot1<BTCCP1252>, new UnRot1<CTBISO8859_1>, 1);
    expectRot1(new Rot1<BTCASCII>, new UnRot1<CTBCP437>, 1);
    expectRot1(new Rot1Utf16, new UnRot1Utf16, 2);
    expectRot1(new Rot1Utf32, new UnRot1Utf32, 4);
    char16_t table[256];
    unsigned char pages[512] = {};
    int pageIndex[256] = {};
    for (int byte = 0; byte < 256; ++byte)
        table[byte] = static_cast<char16_t>(byte + 1);
    pageIndex[0] = 256;
    pages[256 + 'B'] = 'A';
    expectRot1(new BTCSingleByteTable(u"ours", table), new CTBSingleByteTable(u"ours", pageIndex, pages), 1);
}

} // namespace
} // namespace vx::text::charset
