#include "vx/Exceptions.h"
#include "vx/Reference.h"
#include "vx/Result.h"
#include "vx/Str1.h"
#include "vx/text/charset/CharToByteConverter.h"
#include "vx/text/charset/CharsetException.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace vx {
namespace {

using namespace text::charset;

TEST(Str1Narrow, DecodesWholeCharactersAndTellsWhatIsLeft)
{
    struct {
        const char* bytes;
        std::int32_t length;
        const char16_t *encoding, *text;
        std::int32_t result;
    } cases[] = {
        {"\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80", -1, u"utf-8", u"<\u00E9\u20AC\U0001F600", RESULT_OK},
        {"\xC3\xA9\xE2\x82\xAC", 4, u"UTF-8", u"<\u00E9", RESULT_FAIL},
        {"\xC3\xA9", -1, u"ISO8859_1", u"<\u00C3\u00A9", RESULT_OK},
        {"A", 1, u"UTF-16LE", u"<", RESULT_FAIL},
        {"", -1, u"nobody's", u"<", RESULT_OK},
        {nullptr, 5, u"UTF-8", u"<", RESULT_OK},
        {"abc", -2, u"UTF-8", u"<", RESULT_OK},
    };
    for (const auto& row : cases) {
        Str1 text(u"<");
        EXPECT_EQ(text.appendA(row.bytes, row.length, row.encoding), row.result) << row.bytes;
        EXPECT_EQ(text, row.text) << row.bytes;
        EXPECT_EQ(text.copyA(row.bytes, row.length, row.encoding), row.result) << row.bytes;
        EXPECT_EQ(text, row.text + 1) << row.bytes;
    }
    Str1 text(u"<");
    EXPECT_THROW(text.appendA("a", 1, u"nobody's"), UnknownEncodingException);
    EXPECT_THROW(
        text.appendA((std::string(600, 'a') + "\xED\xA0\x80").c_str(), -1, u"UTF-8"), InvalidCharacterException);
    EXPECT_EQ(text, u"<");
    EXPECT_EQ(Str1(std::u8string_view(u8"\u20AC")), u"\u20AC");
}

TEST(Str1Narrow, EncodesPieceByPieceIntoASmallArray)
{
    const Str1 text(u"a\u20ACb\u00E9\U0001F600");
    std::string bytes;
    std::int32_t position = 0, result = 0;
    do {
        char piece[6] = "?????";
        std::int32_t written = -1;
        result = text.convertToAZ(piece, 5, u"UTF-8", &written, &position);
        EXPECT_EQ(piece[written], result == 0 ? '\0' : '?') << bytes;
        bytes.append(piece, static_cast<std::size_t>(written)) += '|';
    } while (result == RESULT_BUFFER_TOO_SMALL && bytes.size() < 40);
    EXPECT_EQ(result, 0);
    EXPECT_EQ(bytes, "a\xE2\x82\xAC|b\xC3\xA9|\xF0\x9F\x98\x80|");
    char array[8] = "";
    EXPECT_EQ(text.toVXString().getBytes(array, 8, u"UTF-8"), 8) << "the pair has no room, and is no fault";
    EXPECT_STREQ(array, "a\xE2\x82\xAC\x62\xC3\xA9");
    EXPECT_EQ(text.convertToAZ(nullptr, 8), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(text.convertToAZ(array, 0), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(text.convertToAZ(array, 8, u"nobody's"), RESULT_UNKNOWN_ENCODING);
    EXPECT_EQ(text.convertToA(array, 8, nullptr), RESULT_INVALID_ARGUMENT);
    const Reference<CharToByteConverter> encoder(CharToByteConverter::getConverter(u"UTF-8"));
    EXPECT_EQ(text.convertToA(nullptr, -1, encoder.get()), RESULT_BUFFER_TOO_SMALL);
    for (std::int32_t outside : {-1, 6, 7}) {
        std::int32_t written = 9;
        result = outside < 0 ? RESULT_BUFFER_TOO_SMALL : 0; // in front, the text is still to come
        EXPECT_EQ(text.convertToAZ(array, 8, u"UTF-8", &written, &outside), result);
        EXPECT_EQ(written, 0);
    }
}

TEST(Str1Narrow, TellsHowFarItCameBeforeALoneSurrogate)
{
    const Str1 text(u"a\u00E9\xD83Dz");
    char array[16];
    std::int32_t written = 0, position = 0;
    EXPECT_EQ(text.convertToAZ(array, 16, u"UTF-8", &written, &position), RESULT_INVALID_CHARACTER);
    EXPECT_EQ(written, 3);
    EXPECT_EQ(position, 3);
    std::int32_t length = 7;
    EXPECT_EQ(text.getLengthA(&length, u"UTF-8"), RESULT_INVALID_CHARACTER);
    EXPECT_EQ(length, 0);
    EXPECT_EQ(text.getLengthA(&length, u"UTF-8", 3), 0);
    EXPECT_EQ(length, 1);
    EXPECT_EQ(text.getLengthA(&length, u"UTF-8", -1), RESULT_FAIL);
    EXPECT_EQ(text.getLengthA(nullptr), RESULT_POINTER);
    EXPECT_THROW(text.getBytesAZ(u"UTF-8"), InvalidCharacterException);
    EXPECT_THROW(Str1(u"a\xD83D").getBytesAZ(u"UTF-8"), InvalidCharacterException);
    std::ostringstream stream;
    stream << text.substring(0, 2) << Str1();
    EXPECT_EQ(stream.str(), "a\xC3\xA9");
}

} // namespace
} // namespace vx
