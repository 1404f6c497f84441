#include "tests/vx/Common.h"
#include "vx/util/FilePath.h"
#include "vx/util/PathNormalizer.h"

#include <filesystem>

using namespace vx;
using vx::util::FilePath;
using vx::util::PathNormalizer;

namespace {

String forwardOf(String text)
{
    text.translate(u'\\', u'/');
    return text;
}

TEST(PathNormalizer, ResolvesDotsAndDoubledSeparators)
{
    const std::pair<const char16_t*, const char16_t*> cases[] = {{u"a\\.\\b", u"a\\b"}, {u"a\\\\b", u"a\\b"},
        {u"a\\b\\..\\..\\c", u"c"}, {u"a\\..\\..\\b", u"..\\b"}, {u"..\\", u"..\\"}, {u"..", u".."}, {u".\\", u".\\"},
        {u".\\.", u".\\"}, {u"a\\b\\..", u"a\\"}, {u"a\\..", u""}, {u"a\\..\\.", u".\\"},
        {u"a\\.b\\..c", u"a\\.b\\..c"}, {u"\\\\a", u"\\a"}, {u"\\..\\a", u"a"}, {u"a\\...\\b", u"a\\...\\b"}};
    PathNormalizer backward, forward(PathNormalizer::SLASH_FORWARD);
    for (const auto& [path, result] : cases) {
        const String text(path);
        EXPECT_EQ(backward.normalize(text), result) << text;
        EXPECT_EQ(backward.normalize(forwardOf(path)), result) << text;
        EXPECT_EQ(forward.normalize(text), forwardOf(result)) << text;
        EXPECT_EQ(text, path) << "the argument stays as it was";
    }
    const std::u16string_view zeroInside(u"a\0\\.\\b", 6);
    EXPECT_EQ(backward.normalize(zeroInside), std::u16string_view(u"a\0\\b", 4));
}

/// Path, drive, directory, name, base name, extension and parent, and "/" where the path is absolute.
std::string partsOf(const FilePath& path)
{
    std::string text = path.isAbsolutePath() ? "/" : "";
    for (const String& part : {path.toString(), path.getDrive(), path.getDirectory(), path.getName(),
             path.getBaseName(), path.getExtension(), path.getParentPath()})
        text += '|' + part.toUtf8();
    return text;
}

TEST(FilePath, TakesAPathApart)
{
    const std::pair<const char16_t*, const char*> cases[] = {
        {u"C:/a/b.txt", "/|C:\\a\\b.txt|C:|C:\\a|b.txt|b|.txt|C:\\a"},
        {u"C:\\", "/|C:\\|C:|C:\\||||"},
        {u"C:", "/|C:|C:|C:||||"},
        {u"C:\\a\\..\\..\\b", "/|C:..\\b|C:.|C:..|b|b||C:.."},
        {u"\\..", "/|||||||"},
        {u"\\a", "/|\\a||\\|a|a||\\"},
        {u".a", "|.a|||.a||.a|"},
        {u"a.b.c", "|a.b.c|||a.b.c|a.b|.c|"},
        {u"a.", "|a.|||a.|a|.|"},
        {u"", "|||||||"},
        {u"\\\\", "/|\\||\\||||"},
        {u"//s/v", "/|\\\\s\\v|\\\\s\\v|\\\\s\\v||||"},
        {u"\\\\s\\v\\", "/|\\\\s\\v\\|\\\\s\\v|\\\\s\\v\\||||"},
        {u"\\\\s\\v\\a\\.\\b.c", "/|\\\\s\\v\\a\\b.c|\\\\s\\v|\\\\s\\v\\a|b.c|b|.c|\\\\s\\v\\a"},
    };
    for (const auto& [text, parts] : cases) {
        const FilePath path(text);
        EXPECT_EQ(partsOf(path), parts);
        EXPECT_EQ(path.isUNCPath(), path.toString().startsWith(u"\\\\")) << parts;
    }
}

TEST(FilePath, RefusesABrokenRoot)
{
    const std::pair<const char16_t*, const char*> cases[] = {{u"ab:c", "invalid drive"}, {u"a\\b:", "invalid drive"},
        {u"\\\\\\x", "no server name"}, {u"\\\\server", "no share name"}, {u"\\\\server\\\\a", "no share name"}};
    for (const auto& row : cases)
        EXPECT_EQ(saidBy<InvalidPathException>([&] { FilePath {row.first}; }), row.second) << String(row.first);
}

TEST(FilePath, AsksTheSystem)
{
    String current(std::filesystem::current_path().string());
    current.translate(u'/', u'\\');
    current = String(u"C:") + current;
    EXPECT_EQ(FilePath::getCurrentDir(), current + u"\\");
    EXPECT_EQ(FilePath(u"a/../b").getAbsolutePath(), current + u"\\b");
    EXPECT_EQ(FilePath(u"C:x").getAbsolutePath(), u"C:x");
    EXPECT_EQ(FilePath(u"b").getCanonicalPath(), current + u"\\b");
    EXPECT_EQ(FilePath(u"\\b").getCanonicalPath(), u"C:\\b");
    EXPECT_EQ(FilePath(u"\\\\s\\v\\b").getCanonicalPath(), u"\\\\s\\v\\b");
    EXPECT_TRUE(FilePath::getTempDir().endsWith(u"\\"));
    const String longest = String(u"C:\\") + String(u'x', 257);
    EXPECT_EQ(FilePath(longest).getCanonicalPath(), longest);
    EXPECT_THROW(FilePath(longest + u"x").getCanonicalPath(), ResultException);
}

} // namespace
