#include "Run.h"

#include "tests/Slots.h"
#include "tests/vx/Common.h"
#include "tests/vx/Offer.h"
#include "vx/text/charset/BTCMultiByte.h"
#include "vx/text/charset/CTBMultiByte.h"
#include "vx/text/charset/CharsetException.h"
#include "vx/util/CopyCharBuffer.h"

namespace vx::text::charset {
namespace {

TEST(MultiByte, KeepsTheOrderOfVirtualOperations)
{
    expectSlots("BTCMultiByte", 21, {&BTCMultiByte::convertBytes});
    expectSlots("CTBMultiByte", 21, {&CTBMultiByte::convertChar});
    expectSlots("IVXCharCodec", 3,
        {&IVXCharCodec::GetName, &IVXCharCodec::GetMaxBytesPerChar, &IVXCharCodec::GetMaxCharsPerByte,
            &IVXCharCodec::ConvertBytes, &IVXCharCodec::ConvertChar});
}

/// A codec of another library. Small letters are themselves; "2" and "4" begin sequences of that many bytes, which are
/// U+20AC and U+1F600; "s" is a surrogate, "h" a value that is too high, and "u" has no character. The test sets the
/// rest.
struct TestCodec : Component<IVXCharCodec> {
    std::int32_t GetName(IVXCharBuffer* name) override
    {
        const Reference<IVXCharBuffer> kept(name); // as a library may
        String test(u"Test");
        VXCopyCharBuffer(name, &test);
        return m_results[0];
    }
    std::int32_t GetMaxBytesPerChar(std::int32_t* value) override
    {
        *value = 4;
        return m_results[1];
    }
    std::int32_t GetMaxCharsPerByte(std::int32_t* value) override
    {
        *value = 1;
        return m_results[2];
    }
    std::int32_t ConvertBytes(const signed char* bytes, std::int32_t* length, std::uint32_t* codePoint) override
    {
        if (m_decode)
            return m_decode(length, codePoint);
        const int needed = *bytes == '2' ? 2 : *bytes == '4' ? 4 : 1;
        if (*length < needed)
            return *length = 0;
        *length = needed;
        const std::map<char, std::uint32_t> others {
            {'2', 0x20AC}, {'4', 0x1F600}, {'s', 0xD912}, {'h', 0x110000}, {'u', 0xFFFD}};
        const auto found = others.find(*bytes);
        *codePoint = found != others.end() ? found->second : static_cast<unsigned char>(*bytes);
        return RESULT_OK;
    }
    std::int32_t ConvertChar(std::uint32_t codePoint, IVXByteBuffer* bytes) override
    {
        const Reference<IVXByteBuffer> kept(bytes);
        if (m_encode)
            return m_encode(codePoint, bytes);
        return codePoint < 0x80    ? fill(bytes, std::string(1, static_cast<char>(codePoint)))
            : codePoint == 0x20AC  ? fill(bytes, "2x")
            : codePoint == 0x1F600 ? fill(bytes, "4xyz")
                                   : RESULT_UNMAPPABLE_CHARACTER;
    }

    static std::int32_t fill(IVXByteBuffer* target, const std::string& text)
    {
        signed char* place = nullptr;
        const int length = static_cast<int>(text.size());
        if (const std::int32_t result = target->GetWriteLock(length, &place); result < 0)
            return result;
        std::copy(text.begin(), text.end(), place);
        return target->ReleaseWriteLock(length);
    }

    std::int32_t m_results[3] {};
    std::function<std::int32_t(std::int32_t*, std::uint32_t*)> m_decode;
    std::function<std::int32_t(std::uint32_t, IVXByteBuffer*)> m_encode;
};

/// A conversion of one text, as "output|number of units read|failure".
template <class Kind, class Converter, class Text>
String runOf(Converter& converter, const Text& text, int room)
{
    const Kind run(converter, text, room);
    return String(run.output) + u"|" + String::valueOf(run.read) + u"|" + String(run.failure);
}

TEST(BTCMultiByte, DecodesSequenceBySequence)
{
    const Reference<TestCodec> codec(new TestCodec);
    BTCCom decoder(codec.get());
    EXPECT_EQ(std::u16string(decoder.getEncodingName()), u"Test");
    const std::tuple<const char*, int, bool, const char16_t*> cases[]
        = {{"a2xb4xyzc", 100, true, u"a\u20ACb\U0001F600c|9|"}, {"a2", 100, true, u"a|1|"}, {"4xy", 100, true, u"|0|"},
            {"a2x", 1, true, u"a|1|"}, {"4xyz", 1, true, u"|0|"}, {"s", 0, true, u"|0|"}, {"au", 1, true, u"a|1|"},
            {"au", 2, true, u"a\uFFFD|2|"},
            {"as", 100, true, u"a|1|Invalid byte sequence (decoded chars in surrogate range)"},
            {"ahub", 100, true, u"a\uFFFD\uFFFDb|4|"}, {"ah", 100, false, u"a|1|unmappable"},
            {"au", 1, false, u"a|1|unmappable"}};
    for (const auto& [bytes, room, substitutes, result] : cases) {
        decoder.setSubstitutionMode(substitutes);
        EXPECT_EQ(runOf<Decode>(decoder, bytes, room), result) << bytes;
    }
    decoder.setSubstitutionMode(true);
    decoder.setSubstitutionChars(u"<?>", 3);
    EXPECT_EQ(Decode(decoder, "uau", 6).output, u"<?>a") << "all of it or nothing";
    EXPECT_EQ(decoder.flush(nullptr, nullptr, 0), 0);
}

TEST(CTBMultiByte, EncodesCharacterByCharacter)
{
    const Reference<TestCodec> codec(new TestCodec);
    const std::tuple<const char16_t*, int, bool, const char16_t*> cases[]
        = {{u"a\u20ACb\U0001F600", 100, true, u"a2xb4xyz|5|"}, {u"a\u20AC", 2, true, u"a|1|"},
            {u"\U0001F600", 3, true, u"|1|"}, {u"a\u00E4b", 100, true, u"a?b|3|"},
            {u"a\U0001F601b", 100, true, u"a?b|4|"}, {u"a\u00E4", 1, true, u"a|1|"},
            {u"a\u00E4", 1, false, u"a|1|unmappable"}, {u"\U0001F601", 100, false, u"|1|unmappable"},
            {u"a\xDC00", 100, true, u"a|1|trailing surrogate without leading"},
            {u"\xD83D\xD83D", 100, true, u"|1|leading surrogate without trailing"},
            {u"\xD83Dz", 100, false, u"|1|leading surrogate without trailing"}};
    for (const auto& [text, room, substitutes, result] : cases) {
        CTBCom encoder(codec.get());
        encoder.setSubstitutionMode(substitutes);
        EXPECT_EQ(runOf<Encode>(encoder, text, room), result);
    }
    CTBCom encoder(codec.get());
    EXPECT_EQ(Encode(encoder, u"\xD83D").output, "");
    signed char none = 0;
    std::int32_t position = 0;
    EXPECT_THROW(encoder.flush(&none, &position, 1), InvalidCharacterException);
    EXPECT_EQ(Encode(encoder, u"\xDE00", 3).read, 0) << "the lead stays held where there is no room";
    EXPECT_EQ(Encode(encoder, u"\xDE00").output, "4xyz");
    EXPECT_EQ(encoder.flush(&none, &position, 1), 0);
}

TEST(MultiByte, TakesALyingCodecForOneWithoutTheCharacter)
{
    const Reference<TestCodec> codec(new TestCodec);
    BTCCom decoder(codec.get());
    CTBCom encoder(codec.get());
    const std::pair<decltype(codec->m_decode), const char16_t*> decoded[] = {
        {[](auto*, auto*) { return RESULT_FAIL; }, u"\uFFFD|3|"}, // and writes nothing
        {[](auto* length, auto* value) { return *value = 'x', *length = 4; }, u"\uFFFD|3|"}, // more than there are
        {[](auto* length, auto* value) { return *value = 'x', *length = 1, RESULT_FAIL; }, u"xxx|3|"},
        {[](auto* length, auto*) { return *length = 0; }, u"|0|"}, // waits for ever
        {[](auto*, auto* value) { return *value = 0xFFFFFFFF, RESULT_OK; }, u"\uFFFD|3|"},
    };
    for (const auto& [decode, result] : decoded) {
        codec->m_decode = decode;
        EXPECT_EQ(runOf<Decode>(decoder, "abc", 100), result) << &decode - &decoded->first;
    }
    const std::pair<decltype(codec->m_encode), const char*> encoded[] = {
        {[](auto, auto*) { return RESULT_OK; }, "?"},
        {[](auto, auto* to) { return TestCodec::fill(to, "x"), RESULT_FAIL; }, "?"},
        {[](auto, auto* to) { return TestCodec::fill(to, "1234567"); }, "?"},
        {[](auto, auto* to) { return TestCodec::fill(to, "123456"); }, "123456"}, // as long as can be
        {[](auto, auto* to) { return to->ReleaseWriteLock(7); }, "?"}, // a length without bytes
    };
    for (const auto& [encode, output] : encoded) {
        codec->m_encode = encode;
        EXPECT_EQ(Encode(encoder, u"a").output, output) << &encode - &encoded->first;
    }
}

TEST(CodecManager, AsksForComponentsByTheNameThatIsAsked)
{
    std::string asked;
    const auto offer = [&](const char* who, bool isBroken) {
        return [&asked, who, isBroken] {
            (asked += who) += ' ';
            auto* codec = new TestCodec;
            codec->m_results[0] = isBroken ? RESULT_END_OF_FILE : RESULT_OK;
            return codec->GetUnknown();
        };
    };
    const auto ask = [&](const char16_t* name) {
        asked.clear();
        const Reference<ByteToCharConverter> decoder(ByteToCharConverter::getConverter(name));
        const Reference<CharToByteConverter> encoder(CharToByteConverter::getConverter(name));
        EXPECT_EQ(std::u16string(decoder->getEncodingName()), u"Test");
        EXPECT_EQ(Decode(*decoder, "2x").output, u"\u20AC");
        EXPECT_EQ(Encode(*encoder, u"\u20AC").output, "2x");
        return asked;
    };
    const Offer canonical(u"Velmaris.CharCodec.CP1257", offer("canonical", false));
    EXPECT_EQ(ask(u"Windows-1257"), "canonical canonical ") << "a new one each time";
    EXPECT_EQ(ask(u"1257"), "canonical canonical ");
    {
        const Offer alias(u"Velmaris.CharCodec.windows-1257", offer("alias", false));
        EXPECT_EQ(ask(u"Windows-1257"), "alias alias ");
        EXPECT_EQ(ask(u"cp1257"), "canonical canonical ");
        const Offer own(u"Velmaris.CharCodec.UTF-8", [] { return nullptr; });
        EXPECT_EQ(std::u16string(
                      Reference<ByteToCharConverter>(ByteToCharConverter::getConverter(u"utf-8"))->getEncodingName()),
            u"UTF-8")
            << "the library's own come first";
        const Offer broken(u"Velmaris.CharCodec.broken", offer("broken", true));
        EXPECT_EQ(resultOf([] { ByteToCharConverter::getConverter(u"broken"); }), RESULT_END_OF_FILE);
        EXPECT_EQ(resultOf([] { CharToByteConverter::getConverter(u"broken"); }), RESULT_END_OF_FILE);
    }
}

} // namespace
} // namespace vx::text::charset
