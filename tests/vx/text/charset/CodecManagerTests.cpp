#include "enc_info.h"
#include "vx/Exceptions.h"
#include "vx/Reference.h"
#include "vx/Result.h"
#include "vx/String.h"
#include "vx/text/charset/ByteToCharConverter.h"
#include "vx/text/charset/CharToByteConverter.h"
#include "vx/text/charset/CharsetException.h"
#include "vx/text/charset/CodecManager.h"
#include "vxsys/Component.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ctype.h>
#include <sstream>
#include <string>

namespace vx::text::charset {
namespace {

TEST(EncInfo, AnswersToC)
{
    const char* const fault = encInfoFault();
    EXPECT_EQ(fault, nullptr) << fault;
}

TEST(CodecManager, KnowsEveryNameInAnyCase)
{
    struct {
        const char* canonical;
        const char* others;
    } constexpr ENCODINGS[] = {
        {"ASCII",
            "ANSI_X3.4-1968 ISO-IR-6 ANSI_X3.4-1986 ISO_646.IRV:1991 ISO646-US US-ASCII US IBM367 CP367 CSASCII 646 "
            "DEFAULT ASCII7 20127"},
        {"ISO8859_1",
            "ISO_8859-1:1987 ISO-IR-100 ISO_8859-1 ISO-8859-1 LATIN1 L1 IBM819 CP819 CSISOLATIN1 8859_1 "
            "ISO_8859-1:1978 IBM-819 819 28591"},
        {"CP437", "IBM437 437 CSPC8CODEPAGE437 IBM-437"},
        {"CP1252", "WINDOWS-1252 1252"},
        {"UTF-8", "UTF8 UTF_8 65001"},
        {"UTF-16LE", ""},
        {"UTF-16BE", ""},
        {"UTF-32BE", ""},
        {"UTF-32LE", ""},
        {"AMP-7", "A7"},
    };
    for (const auto& row : ENCODINGS) {
        std::istringstream names(std::string(row.canonical) + " " + row.others);
        const std::u16string canonical(row.canonical, row.canonical + std::char_traits<char>::length(row.canonical));
        for (std::string name; names >> name;) {
            for (int (*change)(int) : {::toupper, ::tolower}) {
                std::u16string asked(name.begin(), name.end());
                std::transform(asked.begin(), asked.end(), asked.begin(),
                    [&](char16_t unit) { return static_cast<char16_t>(change(unit)); });
                const Reference<CharToByteConverter> encoder(CharToByteConverter::getConverter(asked.c_str()));
                const Reference<ByteToCharConverter> decoder(ByteToCharConverter::getConverter(asked.c_str()));
                EXPECT_EQ(encoder->getEncodingName(), canonical) << name;
                EXPECT_EQ(decoder->getEncodingName(), canonical) << name;
            }
        }
    }
}

/// What asking for a converter of `name` throws, decoder and encoder alike.
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

TEST(CodecManager, GoesOnWhereAComponentFails)
{
    constexpr _GUID CLASS {0x5A, 0x11, 0x7, {1, 9, 9, 7}};
    std::uint32_t token = 0;
    ASSERT_EQ(VXComRegisterClassObject(
                  u"Velmaris.CharCodec.CP1253", &CLASS,
                  [](void*, IVXUnknown*, const _GUID*, void**) noexcept { return RESULT_FAIL; }, nullptr, &token),
        0);
    expectFailure<UnknownEncodingException>(u"CP1253", u"CP1253");
    expectFailure<UnknownEncodingException>(u"windows-1253", u"windows-1253");
    EXPECT_EQ(VXComRevokeClassObject(token), 0);
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
    EXPECT_EQ(decoderName(u"1254"), u"CP437");

    EXPECT_THROW(manager.registerCodec(u"half", ENCODER, u"vx::text::charset::btccp437"), ClassNotFoundException);
    expectFailure<UnknownEncodingException>(u"half", u"half");
    manager.registerCodec(u"swapped", DECODER, ENCODER);
    expectFailure<CastFailedException>(u"swapped", u"");
    manager.registerCodec(u"abstract", u"CVXCTBSingleByte", u"CVXBTCSingleByte");
    expectFailure<IllegalAccessException>(u"abstract", u"");
}

} // namespace
} // namespace vx::text::charset
