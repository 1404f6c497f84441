#include "Run.h"

#include "vx/text/charset/BTCAMP7.h"
#include "vx/text/charset/CTBAMP7.h"

#include <gtest/gtest.h>

#include <string>

namespace vx::text::charset {
namespace {

/// The output. If not all was read, "|" and the number of bytes read follow, then the exception.
template <class Out, class Converter, class Text>
std::basic_string<Out> converted(Converter& converter, const Text& source, std::int32_t room)
{
    const Run<Converter, typename Text::value_type, Out> run(converter, source, room);
    std::string rest = static_cast<std::size_t>(run.read) < source.size() ? "|" + std::to_string(run.read) : "";
    rest += (run.failure.empty() ? "" : "|") + run.failure;
    return run.output + std::basic_string<Out>(rest.begin(), rest.end());
}

TEST(CTBAMP7, WritesPrintableAsciiOnly)
{
    struct {
        std::u16string source;
        const char* bytes;
        const char* strict = nullptr; ///< without substitution, where that differs
        std::int32_t room = 100;
    } cases[] = {{u"a&b", "a&AMP;b"}, {u"\"'~\t\r\n", "\"'~\t\r\n"},
        {std::u16string(u"\0\x1F\x7F\x80", 4), "&_0;&_1F;&_7F;&_80;"},
        {u"\u00E9\u20AC\uFFFD\uFFFF", "&_E9;&_20AC;&_FFFD;&_FFFF;"},
        {u"\U00010000\U0001F600\U000FFFFE", "&_10000;&_1F600;&_FFFFE;"}, {u"a\U000FFFFFb", "a?b", "a|1|unmappable"},
        {u"\U0010FFFF", "?", "|0|unmappable"}, {u"x\xDC00y", "x&_DC00;y"}, {u"x\xD800", "x|1"},
        {u"x\xD800y", "x|1|leading surrogate without trailing"},
        {u"\xD800\xD800\xDC00", "|0|leading surrogate without trailing"}, {u"a&", "a|1", nullptr, 5},
        {u"a&", "a&AMP;", nullptr, 6}, {u"a\U00010000", "a|1", nullptr, 8}, {u"a\U00010000", "a&_10000;", nullptr, 9},
        {u"a\u20AC", "a|1", nullptr, 7}, {u"ab", "a|1", nullptr, 1},
        {u"\U000FFFFF", "|0", "|0|unmappable", 1}}; // a substitution needs one byte more
    for (const auto& row : cases) {
        CTBAMP7 encoder;
        EXPECT_EQ((converted<char>(encoder, row.source, row.room)), row.bytes);
        encoder.setSubstitutionMode(false);
        EXPECT_EQ((converted<char>(encoder, row.source, row.room)), row.strict != nullptr ? row.strict : row.bytes);
        EXPECT_EQ(encoder.flush(nullptr, nullptr, 0), 0);
    }
}

TEST(BTCAMP7, ReadsEveryValidFormAndWaitsForTheRest)
{
    struct {
        std::string source;
        const char16_t* text;
        const char16_t* strict = nullptr;
        std::int32_t room = 100;
    } cases[] = {{"&_e9;&_E9;&_0000E;&_fFfE;", u"\u00E9\u00E9\u000E\uFFFE"},
        {"&AMP;&APOS;&QUOT;\x01\x7F", u"&'\"\x01\x7F"}, {"&_10000;&_FFFFF;", u"\U00010000\U000FFFFF"},
        {"&_000041;", u"\uFFFD_000041;", u"|0|unmappable"}, {"&_00004", u"|0"},
        {"&_4G;", u"\uFFFD_4G;", u"|0|unmappable"}, {"x&lt;", u"x\uFFFDlt;", u"x|1|unmappable"},
        {"&amp;", u"\uFFFDamp;", u"|0|unmappable"}, {"&&AMP;", u"\uFFFD&", u"|0|unmappable"},
        {"a\x80\xFF", u"a\uFFFD\uFFFD", u"a|1|unmappable"}, {"&_FFFD;", u"\uFFFD_FFFD;", u"|0|unmappable"},
        {"x&_D800;", u"x|1|Invalid AMP-7 sequence (decoded chars in surrogate range)"}, {"&_10000;", u"|0", nullptr, 1},
        {"a&l", u"a|1", u"a|1|unmappable", 2}, // a substitution needs one unit more
        {"a&l", u"a\uFFFDl", u"a|1|unmappable", 3}};
    for (const auto& row : cases) {
        BTCAMP7 decoder;
        EXPECT_EQ((converted<char16_t>(decoder, row.source, row.room)), row.text) << row.source;
        decoder.setSubstitutionMode(false);
        EXPECT_EQ((converted<char16_t>(decoder, row.source, row.room)), row.strict != nullptr ? row.strict : row.text)
            << row.source;
        EXPECT_EQ(decoder.flush(nullptr, nullptr, 0), 0);
    }
    BTCAMP7 decoder;
    EXPECT_EQ((converted<char16_t>(decoder, std::string("&_;"), 2)), std::u16string(1, u'\0'));
    for (const std::string form : {"&AMP;", "&APOS;", "&QUOT;", "&_20AC;", "&_FFFFF;"}) {
        for (std::size_t length = 1; length < form.size(); ++length)
            EXPECT_EQ((converted<char16_t>(decoder, "x" + form.substr(0, length), 9)), u"x|1") << form << length;
    }
}

} // namespace
} // namespace vx::text::charset
