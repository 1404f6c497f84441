#include "tests/AllocationProbe.h"
#include "tests/vx/Common.h"
#include "tests/vx/UserBuffer.h"
#include "vx/AnsiBytes.h"
#include "vx/Str1.h"
#include "vx/text/charset/CharToByteConverter.h"
#include "vx/text/charset/CharsetException.h"
#include "vx/util/MTByteBuffer.h"
#include "vx/util/ROByteBuffer.h"

#include <cstring>
#include <iterator>
#include <optional>
#include <random>
#include <sstream>
#include <vector>

namespace vx {
namespace {

using namespace text::charset;

TEST(NarrowText, IsDecodedByEncodingName)
{
    const struct {
        const char* bytes;
        int length;
        const char16_t* encoding;
        std::u16string_view text;
        bool isWhole = true; ///< otherwise it ends inside a character, which only a Str1 reports
    } cases[] = {
        {"a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80", -1, u"UTF-8", u"a\u00E9\u20AC\U0001F600"},
        {"\xC3\xA9\xE2\x82\xAC", 4, u"utf-8", u"\u00E9", false},
        {"a\xC3\xA9", 2, u"ISO8859_1", u"a\u00C3"},
        {"a\0b", 3, u"UTF-8", {u"a\0b", 3}},
        {"a\0b", -1, u"UTF-8", u"a"},
        {"a\0b\0", 4, u"UTF-16LE", u"ab"},
        {"A", 1, u"UTF-16LE", u"", false},
        {"abc", -2, u"UTF-8", u""},
        {"", -1, u"nobody's", u""},
        {nullptr, -1, u"UTF-8", u""},
        {nullptr, 5, u"UTF-8", u""},
        {"abc", -1, nullptr, u"abc"},
        {"a\xE9", 2, u"AMP-7", u"a\uFFFD"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(&row - cases);
        Str1 light(u"<");
        EXPECT_EQ(light.appendA(row.bytes, row.length, row.encoding), row.isWhole ? RESULT_OK : RESULT_FAIL);
        EXPECT_EQ(light, std::u16string(u"<").append(row.text));
        EXPECT_EQ(light.copyA(row.bytes, row.length, row.encoding), row.isWhole ? RESULT_OK : RESULT_FAIL);
        EXPECT_EQ(light, row.text);
        String text(u"old");
        const String sharer(text);
        EXPECT_EQ(String(row.bytes, row.length, row.encoding), row.text);
        EXPECT_EQ(String(reinterpret_cast<const signed char*>(row.bytes), row.length, row.encoding), row.text);
        EXPECT_EQ(String(reinterpret_cast<const unsigned char*>(row.bytes), row.length, row.encoding), row.text);
        EXPECT_EQ(String::CVXString(row.bytes, row.length, row.encoding), row.text);
        EXPECT_EQ(text.setTo(row.bytes, row.length, row.encoding), row.text);
        EXPECT_EQ(text.getData()[text.getLength()], 0);
        EXPECT_EQ(sharer, u"old");
    }
    String text(u"old");
    Str1 light(u"old");
    EXPECT_THROW(text.setTo("a", 1, u"nobody's"), UnknownEncodingException);
    EXPECT_THROW(light.appendA("a", 1, u"nobody's"), UnknownEncodingException);
    const std::string late = std::string(600, 'a') + "\xED\xA0\x80";
    EXPECT_THROW(text.setTo(late.c_str(), -1, u"UTF-8"), InvalidCharacterException);
    EXPECT_THROW(light.appendA(late.c_str(), -1, u"UTF-8"), InvalidCharacterException);
    EXPECT_TRUE(text == u"old" && light == u"old");
}

template <class Text>
void expectRefusal(const Text& text)
{
    EXPECT_THROW(text.toUtf8(), InvalidCharacterException);
    std::ostringstream stream;
    stream << text;
    EXPECT_TRUE(stream.bad() && stream.str().empty());
    EXPECT_FALSE(stream << Text(u"more")) << "as after a failure of any other inserter";
    stream.clear();
    stream.exceptions(std::ios_base::badbit);
    EXPECT_THROW(stream << text, InvalidCharacterException);
    EXPECT_TRUE(stream.bad());
}

TEST(NarrowText, RefusesHalvesOfCharactersByOneRule)
{
    for (const char16_t* text : {u"a\xD83D", u"\xD83Dz", u"\xDE00", u"a\u20AC\xDE00z", u"\xDE00\xD83D",
             u"\xD83D\xDE00\xDE00", u"\xDE00\xD83D\xDE00"}) {
        SCOPED_TRACE(::testing::PrintToString(std::u16string(text)));
        expectRefusal(String(text));
        expectRefusal(Str1(text));
    }
    for (const char* bytes : {"\xED\xA0\x80", "\xED\xB0\x80", "a\xE2\x82", "\xC3", "\xF0\x9F\x98"}) {
        EXPECT_THROW(String {std::string_view(bytes)}, InvalidCharacterException) << bytes;
        EXPECT_THROW(Str1 {std::string_view(bytes)}, InvalidCharacterException) << bytes;
        String old(u"old");
        EXPECT_THROW(old = std::string(bytes), InvalidCharacterException) << bytes;
        EXPECT_EQ(old, u"old") << bytes;
    }
    EXPECT_EQ(String(u"a\u00E9\u20AC\U0001F600\uFFFD").toUtf8(), "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\xEF\xBF\xBD");
    EXPECT_EQ(String(std::string("a\xFFz")), u"a\uFFFDz");
}

TEST(NarrowText, ConvertsMixedTextOfEveryShortLength)
{
    const struct {
        std::u16string_view units;
        std::string_view bytes;
    } characters[] = {{u"a", "a"}, {u"\u00E9", "\xC3\xA9"}, {u"\u20AC", "\xE2\x82\xAC"},
        {u"\U0001F600", "\xF0\x9F\x98\x80"}, {std::u16string_view(u"", 1), std::string_view("", 1)}};
    std::mt19937 random(5);
    for (std::size_t length = 0; length < 600; ++length) {
        std::u16string units;
        std::string bytes;
        const std::size_t first = length % 3 == 0 ? 0 : random() % std::size(characters);
        const std::size_t kinds = length % 3 == 0 ? 2 : 1 + random() % (std::size(characters) - first);
        while (units.size() < length / 2) {
            const auto& next = characters[first + random() % kinds];
            units += next.units;
            bytes += next.bytes;
        }
        const String text(units.data(), static_cast<int>(units.size()));
        ASSERT_EQ(text.toUtf8(), bytes) << length;
        ASSERT_EQ(String(std::string_view(bytes)), text) << length;
        std::vector<char> array(bytes.size() + 1 + random() % (2 * bytes.size() + 40)); // nothing after it is written
        const auto written
            = static_cast<std::size_t>(text.getBytes(array.data(), static_cast<std::int32_t>(array.size()), u"UTF-8"));
        ASSERT_EQ(std::string(array.data(), written), bytes + '\0') << array.size();
        units.insert(random() % (units.size() + 1), 1, random() % 2 == 0 ? u'\xDBFF' : u'\xDC00');
        const String broken(units.data(), static_cast<int>(units.size()));
        ASSERT_THROW(broken.toUtf8(), InvalidCharacterException) << "an odd number of halves, in " << units.size();
    }
}

TEST(NarrowText, DecodesOddBytesAtEveryPlace)
{
    const struct {
        std::string_view bytes;
        std::optional<std::u16string_view> units; ///< none: they throw
    } odd[] = {{"\xC3\xA9", u"\u00E9"}, {"\xE2\x82\xAC", u"\u20AC"}, {"\xF0\x9F\x98\x80", u"\U0001F600"},
        {"\xC3", u"\uFFFD"}, {"\xE2\x82", u"\uFFFD\uFFFD"}, {"\xF0\x9F\x98", u"\uFFFD\uFFFD\uFFFD"},
        {"\x80", u"\uFFFD"}, {"\xFF", u"\uFFFD"}, {"\xC1\xBF", u"\uFFFD\uFFFD"}, {"\xE0\x9F\xBF", u"\u07FF"},
        {"\xED\x9F\xBF", u"\uD7FF"}, {"\xED\xA0\x80", {}}, {"\xEE\x80\x80", u"\uE000"}, {"\xF0\x8F\xBF\xBF", u"\uFFFF"},
        {"\xF4\x8F\xBF\xBF", u"\U0010FFFF"}, {"\xF4\x90\x80\x80", u"\uFFFD"},
        {"\xF5\x80\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"}};
    const struct {
        std::string_view bytes;
        std::u16string_view units;
    } fills[] = {{"x", u"x"}, {"\xCE\xB1", u"\u03B1"}, {"\xF0\x9F\x98\x80", u"\U0001F600"}};
    for (const auto& row : odd) {
        for (const auto& fill : fills) {
            for (std::size_t place = 0; place < 135; ++place) {
                std::string bytes(place % fill.bytes.size(), 'x');
                std::u16string units(bytes.size(), u'x');
                while (bytes.size() < place) {
                    bytes += fill.bytes;
                    units += fill.units;
                }
                bytes.append(row.bytes).append("y\xD0\xAFz");
                SCOPED_TRACE(::testing::PrintToString(bytes));
                if (row.units)
                    ASSERT_EQ(String(std::string_view(bytes)), units.append(*row.units).append(u"y\u042Fz"));
                else
                    ASSERT_THROW(String {std::string_view(bytes)}, InvalidCharacterException);
            }
        }
    }
}

TEST(NarrowText, KeepsNoRoomThatTheTextDidNotNeed)
{
    std::string bytes;
    for (int i = 0; i < 1000; ++i)
        bytes += "\xE2\x82\xAC";
    for (const auto& [capacity, units] : {std::pair(0, 1008U), std::pair(1200, 1200U)}) {
        AllocationProbe probe;
        const String text(bytes.c_str(), -1, u"UTF-8", capacity);
        EXPECT_EQ(probe.lastRawSize(), units * sizeof(char16_t)) << capacity;
    }
    AllocationProbe probe;
    const String plain(u'x', 1000);
    plain.getBytes(u"UTF-8");
    EXPECT_EQ(probe.lastRawSize(), 1008U);
    EXPECT_LT(plain.toUtf8().capacity(), 1100U);
}

TEST(NarrowText, KeepsWhatItEncodedUntilTheTextChanges)
{
    String text(u"\u00E9t\u00E9 and then a longer text");
    const char* first = text.getBytes(nullptr);
    EXPECT_EQ(text.getBytes(), first);
    EXPECT_EQ(text.getDataT(false), first);
    EXPECT_EQ(text.getReadLockT(true), first);
    text.releaseReadLock();
    const char* latin = text.getBytes(u"ISO8859_1");
    EXPECT_STREQ(latin, "\xE9t\xE9 and then a longer text");
    EXPECT_EQ(text.getBytes(u"iso8859_1"), latin) << "case of ASCII letters means nothing";
    EXPECT_EQ(text.getBytesReadLock(u"ISO8859_1"), latin);
    text.releaseReadLock();
    EXPECT_THROW(text.getBytes(u"nobody's"), UnknownEncodingException);
    EXPECT_THROW(text.getBytesReadLock(u"nobody's"), UnknownEncodingException);
    EXPECT_EQ(text.getBytes(u"ISO8859_1"), latin) << "a failure costs no cache";
    const String copy(text);
    EXPECT_NE(copy.getBytes(u"ISO8859_1"), latin) << "each string has its own";

    const std::function<void(String&)> writes[] = {
        [](String& s) { s.setCharAt(0, u'X'); },
        [](String& s) { s += u'X'; },
        [](String& s) { s.setTo(String::AcquireWrap, u"X"); },
        [](String& s) { s.setTo(String::AcquireShare, String(u"X")); },
        [](String& s) { s.setTo("X", 1, u"UTF-8"); },
        [](String& s) { s = std::string_view("X"); },
        [](String& s) { s.getWriteLock(0)[0] = u'X', s.getBytes(u"UTF-8"), s.releaseWriteLock(1); },
        [](String& s) { s = s.getBytes(u"UTF-8") + 1; },
        [](String& s) { s.setTo(s.getBytes(u"UTF-8") + 1, 2, u"UTF-8"); },
        [](String& s) { s.clear(); },
        [](String& s) { String(u"X").swap(s); },
        [](String& s) { s = String(u"X"); },
        [](String& s) { s.trim(u'a'); },
    };
    for (const auto& write : writes) {
        String changed(u"abc");
        EXPECT_STREQ(changed.getBytes(u"UTF-8"), "abc");
        write(changed);
        EXPECT_EQ(changed.getBytes(u"UTF-8"), changed.toUtf8()) << &write - writes;
        EXPECT_NE(changed, u"abc") << &write - writes;
    }
}

TEST(NarrowText, EncodesWholeCharactersIntoAnArray)
{
    const String text(u"a\u20AC\U0001F600");
    const std::tuple<int, int, const char*> cases[]
        = {{-1, 0, "######"}, {0, 0, "######"}, {1, 1, "a#####"}, {2, 2, "a\0####"}, {3, 2, "a\0####"},
            {4, 4, "a\xE2\x82\xAC##"}, {5, 5, "a\xE2\x82\xAC\0#"}, {7, 5, "a\xE2\x82\xAC\0#"}};
    for (const auto& [size, result, bytes] : cases) {
        char out[12] = "###########";
        EXPECT_EQ(text.getBytes(out, size, u"UTF-8"), result) << size;
        EXPECT_EQ(std::memcmp(out, bytes, 6), 0) << size;
    }
    char out[12];
    EXPECT_EQ(text.getBytes(reinterpret_cast<unsigned char*>(out), 12, u"UTF-8"), 9);
    EXPECT_STREQ(out, "a\xE2\x82\xAC\xF0\x9F\x98\x80");
    EXPECT_EQ(text.getBytes(reinterpret_cast<signed char*>(out), 8, u"UTF-8"), 8) << "full, and without a terminator";
    EXPECT_EQ(text.getBytes(static_cast<char*>(nullptr), 12, u"UTF-8"), 0);
    EXPECT_EQ(String().getBytes(out, 1, u"UTF-8"), 1);
    EXPECT_EQ(out[0], 0);
    EXPECT_EQ(String(u"\u20AC").getBytes(out, 12, u"ISO8859_1"), 2) << "what has no mapping is substituted";
    EXPECT_THROW(String(u"a\xD83D").getBytes(u"UTF-8"), InvalidCharacterException);
}

TEST(NarrowText, EncodesPieceByPieceIntoASmallArray)
{
    const Str1 text(u"a\u20ACb\u00E9\U0001F600"), broken(u"a\u00E9\xD83Dz");
    std::string bytes;
    std::int32_t position = 0, result = 0, written = 0;
    do {
        char piece[6] = "?????";
        result = text.convertToAZ(piece, 5, u"UTF-8", &written, &position);
        EXPECT_EQ(piece[written], result == 0 ? '\0' : '?') << bytes;
        bytes.append(piece, static_cast<std::size_t>(written)) += '|';
    } while (result == RESULT_BUFFER_TOO_SMALL && bytes.size() < 40);
    EXPECT_EQ(result, 0);
    EXPECT_EQ(bytes, "a\xE2\x82\xAC|b\xC3\xA9|\xF0\x9F\x98\x80|");
    char array[16] = "";
    EXPECT_EQ(text.toVXString().getBytes(array, 8, u"UTF-8"), 8) << "the pair has no room, and is no fault";
    EXPECT_STREQ(array, "a\xE2\x82\xAC\x62\xC3\xA9");
    EXPECT_EQ(text.convertToAZ(nullptr, 8), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(text.convertToAZ(array, 0), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(text.convertToAZ(array, 8, u"nobody's"), RESULT_UNKNOWN_ENCODING);
    EXPECT_EQ(text.convertToA(array, 8, nullptr), RESULT_INVALID_ARGUMENT);
    const Reference<CharToByteConverter> encoder(CharToByteConverter::getConverter(u"UTF-8"));
    EXPECT_EQ(text.convertToA(nullptr, -1, encoder.get()), RESULT_BUFFER_TOO_SMALL);
    for (std::int32_t outside : {-1, 6, 7}) {
        result = outside < 0 ? RESULT_BUFFER_TOO_SMALL : 0; // nothing of the text is read yet
        EXPECT_EQ(text.convertToAZ(array, 8, u"UTF-8", &written, &outside), result);
        EXPECT_EQ(written, 0);
    }

    position = 0;
    EXPECT_EQ(broken.convertToAZ(array, 16, u"UTF-8", &written, &position), RESULT_INVALID_CHARACTER);
    EXPECT_TRUE(written == 3 && position == 3) << "up to the lone surrogate";
    std::int32_t length = 7;
    EXPECT_EQ(broken.getLengthA(&length, u"UTF-8"), RESULT_INVALID_CHARACTER);
    EXPECT_EQ(length, 0);
    EXPECT_EQ(broken.getLengthA(&length, u"UTF-8", 3), 0);
    EXPECT_EQ(length, 1);
    EXPECT_EQ(broken.getLengthA(&length, u"UTF-8", -1), RESULT_FAIL);
    EXPECT_EQ(broken.getLengthA(nullptr), RESULT_POINTER);
    EXPECT_THROW(broken.getBytesAZ(u"UTF-8"), InvalidCharacterException);
    EXPECT_THROW(Str1(u"a\xD83D").getBytesAZ(u"UTF-8"), InvalidCharacterException);
}

TEST(NarrowText, EncodesIntoAByteBuffer)
{
    const String text(u"a\u20AC");
    const Reference<util::MTByteBuffer> locked(new util::MTByteBuffer(reinterpret_cast<const signed char*>("old"), 3));
    text.getBytes(locked.get(), u"UTF-8");
    EXPECT_EQ(locked->getLength(), 5);
    EXPECT_EQ(std::memcmp(locked->getData(), "a\xE2\x82\xAC", 5), 0);
    EXPECT_THROW(String(u"\xD83D").getBytes(locked.get(), u"UTF-8"), InvalidCharacterException);
    EXPECT_EQ(locked->getLength(), 5);
    EXPECT_THROW(text.getBytes(locked.get(), u"nobody's"), UnknownEncodingException);
    locked->freeExtra(); // would wait for ever if a lock was not released
    String::AnsiBytes bytes(u"UTF-8");
    text.getBytes(&bytes, u"UTF-8");
    EXPECT_EQ(bytes.getLength(), 5);
    util::ROByteBuffer readOnly;
    auto* foreign = new UserBuffer(u"abc");
    const String adopted(String::AcquireShare, foreign);
    struct {
        const String& text;
        util::IByteBuffer* out;
        std::int32_t result;
    } failures[] = {{text, nullptr, RESULT_POINTER}, {text, &readOnly, RESULT_NOT_IMPLEMENTED},
        {adopted, &bytes, UserBuffer::FAILURE}};
    foreign->m_failing = 1;
    for (const auto& row : failures)
        EXPECT_EQ(resultOf([&] { row.text.getBytes(row.out, u"UTF-8"); }), row.result);
    EXPECT_THROW(adopted.getBytesReadLock(u"nobody's"), UnknownEncodingException);
    EXPECT_TRUE(foreign->isUnlocked());
}

} // namespace
} // namespace vx
