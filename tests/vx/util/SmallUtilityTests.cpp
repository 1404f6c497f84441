#include "tests/vx/Common.h"
#include "vx/util/Guid.h"
#include "vx/util/StringTokenizer.h"

namespace vx::util {
namespace {

TEST(Guid, StandsWhereAnIdentifierStands)
{
    constexpr _GUID ROOT {0, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
    const Guid root(ROOT);
    EXPECT_TRUE(ROOT == root && root == Guid(u"{00000000-0000-0000-c000-000000000046}"));
    EXPECT_EQ(root.toString(), u"{00000000-0000-0000-C000-000000000046}");
    EXPECT_TRUE(Guid() != root && Guid() < root && root > _GUID {} && root >= ROOT && ROOT <= root);
    EXPECT_FALSE(root < ROOT || root > root || root != ROOT);
    EXPECT_EQ(static_cast<const void*>(&static_cast<const _GUID&>(root)), &root);
    const std::unique_ptr<Guid> made(Guid::Generate());
    EXPECT_TRUE(Guid(made->toString().getData()) == *made);
    EXPECT_THROW(Guid(u"{00000000-0000-0000-C000-00000000004}"), Exception);
}

/// The remaining tokens, each after a "|". Calls `hasMoreTokens` `looks` times before each.
std::u16string tokensOf(StringTokenizer& tokenizer, int looks)
{
    std::u16string tokens;
    for (int left = tokenizer.getTokenCount(); left > 0; --left) {
        EXPECT_EQ(tokenizer.getTokenCount(), left);
        for (int look = 0; look < looks; ++look)
            EXPECT_TRUE(tokenizer.hasMoreTokens());
        (tokens += u"|") += tokenizer.nextToken().view();
    }
    EXPECT_FALSE(tokenizer.hasMoreTokens());
    EXPECT_THROW(tokenizer.nextToken(), Exception);
    return tokens;
}

TEST(StringTokenizer, WalksTheTokens)
{
    struct {
        const char16_t *text, *delimiters, *tokens, *withDelimiters;
    } cases[] = {{u"a,b", u",", u"|a|b", u"|a|,|b"}, {u",,a", u",", u"|a", u"|,|,|a"}, {u"", u",", u"", u""},
        {u",", u",", u"", u"|,"}, {u"ab;c,,d", u",;", u"|ab|c|d", u"|ab|;|c|,|,|d"},
        {u"longer text", u"", u"|longer text", u"|longer text"},
        {u" one\ttwo\r\n\fthree\v", nullptr, u"|one|two|three\v", u"| |one|\t|two|\r|\n|\f|three\v"}};
    for (const auto& row : cases) {
        for (const int looks : {0, 1, 2}) {
            StringTokenizer plain(row.text, row.delimiters), all(row.text, row.delimiters, true);
            EXPECT_EQ(tokensOf(plain, looks), row.tokens) << String(row.text);
            EXPECT_EQ(tokensOf(all, looks), row.withDelimiters) << String(row.text);
        }
    }
}

TEST(StringTokenizer, LetsADerivedClassSearch)
{
    struct Searcher : StringTokenizer {
        using StringTokenizer::scanToken;
        using StringTokenizer::skipDelims;
        using StringTokenizer::StringTokenizer;
    };
    const Searcher plain(u",,ab,c", u","), all(u",,ab,c", u",", true);
    struct {
        int start, skipped, scanned, skippedOfAll, scannedOfAll;
    } cases[] = {{0, 2, 0, 0, 1}, {2, 2, 4, 2, 4}, {4, 5, 4, 4, 5}, {5, 5, 7, 5, 7}, {6, 7, 6, 6, 7}, {7, 7, 7, 7, 8}};
    for (const auto& row : cases) {
        EXPECT_EQ(plain.skipDelims(row.start), row.skipped) << row.start;
        EXPECT_EQ(plain.scanToken(row.start), row.scanned) << row.start;
        EXPECT_EQ(all.skipDelims(row.start), row.skippedOfAll) << row.start;
        EXPECT_EQ(all.scanToken(row.start), row.scannedOfAll) << row.start;
    }
}

TEST(StringTokenizer, SearchesAnewWithNewDelimiters)
{
    StringTokenizer tokenizer(u",;a;b,c", u",");
    EXPECT_TRUE(tokenizer.hasMoreTokens());
    EXPECT_EQ(tokenizer.nextToken(u";"), u",") << "from the old position, without what was seen";
    EXPECT_EQ(tokenizer.getTokenCount(), 2);
    EXPECT_EQ(tokenizer.nextToken(), u"a") << "the new set stays";
}

} // namespace
} // namespace vx::util
