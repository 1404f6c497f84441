#include "tests/vx/Common.h"
#include "vx/text/charset/ByteToCharConverter.h"
#include "vx/text/charset/CharToByteConverter.h"
#include "vx/text/charset/CharsetException.h"
#include "vx/text/charset/CodecManager.h"
#include "vx/text/charset/EncInfo.h"

#include <span>

namespace vx::text::charset {
namespace {

TEST(EncInfo, ListsWhatNamesAndCodePagesFind)
{
    std::uint32_t count = 0;
    EXPECT_EQ(VXEnumerateEncInfo(&count, nullptr), RESULT_BUFFER_TOO_SMALL);
    ASSERT_EQ(count, 28U);
    VXEncInfo infos[29] {};
    count = 27;
    EXPECT_EQ(VXEnumerateEncInfo(&count, infos), RESULT_BUFFER_TOO_SMALL);
    EXPECT_EQ(infos[0].name, nullptr);
    count = 29;
    EXPECT_EQ(VXEnumerateEncInfo(&count, infos), RESULT_OK);
    EXPECT_EQ(count, 28U);
    EXPECT_EQ(infos[28].name, nullptr);
    VXEncInfo found {};
    for (const VXEncInfo& info : std::span(infos, 28)) {
        EXPECT_EQ(VXGetEncInfoByName(info.name, &found), RESULT_OK);
        EXPECT_EQ(found.codePage, info.codePage);
        EXPECT_EQ(VXGetEncInfoByCodePage(static_cast<std::int32_t>(info.codePage), &found), RESULT_OK);
        EXPECT_EQ(std::u16string(found.name), info.name);
    }
    for (const auto& [name, codePage] : {std::pair(u"iso_8859-1:1978", 28591U), std::pair(u"20127", 20127U),
             std::pair(u"EUC_JP", 20932U), std::pair(u"windows-31j", 932U), std::pair(u"Windows-1250", 1250U)}) {
        EXPECT_EQ(VXGetEncInfoByName(name, &found), RESULT_OK);
        EXPECT_EQ(found.codePage, codePage);
    }
    for (const char16_t* name : {u"UTF-16LE", u"A7", u"windows-1259", u"0", u"01252", u""})
        EXPECT_EQ(VXGetEncInfoByName(name, &found), RESULT_FAIL) << String(name);
    EXPECT_EQ(VXGetEncInfoByCodePage(-1252, &found), RESULT_FAIL);
}

TEST(CodecManager, KnowsNamesInAnyCase)
{
    for (const auto& [name, canonical] : {std::pair(u"aNsI_X3.4-1968", u"ASCII"), std::pair(u"default", u"ASCII"),
             std::pair(u"iso_8859-1:1978", u"ISO8859_1"), std::pair(u"L1", u"ISO8859_1"), std::pair(u"437", u"CP437"),
             std::pair(u"Windows-1252", u"CP1252"), std::pair(u"utf8", u"UTF-8"), std::pair(u"utf-16le", u"UTF-16LE"),
             std::pair(u"UTF-32be", u"UTF-32BE"), std::pair(u"a7", u"AMP-7")}) {
        const Reference<CharToByteConverter> encoder(CharToByteConverter::getConverter(name));
        const Reference<ByteToCharConverter> decoder(ByteToCharConverter::getConverter(name));
        EXPECT_EQ(std::u16string(encoder->getEncodingName()), canonical);
        EXPECT_EQ(std::u16string(decoder->getEncodingName()), canonical);
    }
}

template <class Failure>
void expectFailure(const char16_t* name, std::u16string_view description)
{
    const auto expectFor = [&](auto getConverter) {
        try {
            Reference<Object> converter(getConverter(name));
            ADD_FAILURE() << "somebody answers to " << String(name);
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.getDescription(), description);
        }
    };
    expectFor(ByteToCharConverter::getConverter);
    expectFor(CharToByteConverter::getConverter);
}

TEST(CodecManager, TellsTheNameThatNobodyAnswersTo)
{
    for (const char16_t* name : {u"UTF-16", u"utf-32", u"", u" UTF-8", u"Cp932", u"932", u"windows-31j", u"EUC_JP",
             u"CP866", u"nobody's", u"\u017Fomebody's \xD83D"}) {
        expectFailure<UnknownEncodingException>(name, name);
        EXPECT_EQ(CodecManager::getInstance()->getEncoder(name), nullptr);
        EXPECT_EQ(CodecManager::getInstance()->getDecoder(name), nullptr);
    }
    EXPECT_EQ(UnknownEncodingException().getResult(), RESULT_UNKNOWN_ENCODING);
}

TEST(CodecManager, TakesCodecsOfOthers)
{
    CodecManager& manager = *CodecManager::getInstance();
    const auto decoderName = [](const char16_t* name) {
        const Reference<ByteToCharConverter> decoder(ByteToCharConverter::getConverter(name));
        return std::u16string(decoder->getEncodingName());
    };
    constexpr const char16_t* ENCODER = u"vx::text::charset::CTBCP437";
    constexpr const char16_t* DECODER = u"vx::text::charset::BTCCP437";

    manager.registerCodec(u"Ours", ENCODER, DECODER);
    EXPECT_EQ(decoderName(u"oURS"), u"CP437");
    manager.registerCodec(u"OURS", u"vx::text::charset::CTBUTF8", u"vx::text::charset::BTCUTF8");
    manager.registerCodec(u"latin1", ENCODER, DECODER);
    EXPECT_EQ(decoderName(u"ours"), u"CP437") << "the first registration stands";
    EXPECT_EQ(decoderName(u"LATIN1"), u"ISO8859_1");

    expectFailure<UnknownEncodingException>(u"windows-1254", u"windows-1254");
    manager.registerCodec(u"CP1254", ENCODER, DECODER);
    EXPECT_EQ(decoderName(u"windows-1254"), u"CP437") << "found by the canonical name of an alias";

    EXPECT_THROW(manager.registerCodec(u"half", ENCODER, u"vx::text::charset::btccp437"), ClassNotFoundException);
    expectFailure<UnknownEncodingException>(u"half", u"half");
    manager.registerCodec(u"swapped", DECODER, ENCODER);
    expectFailure<CastFailedException>(u"swapped", u"");
}

} // namespace
} // namespace vx::text::charset
