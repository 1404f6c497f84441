#include "tests/Outcome.h"
#include "vx/Exceptions.h"
#include "vx/util/FilePath.h"
#include "vx/util/PathNormalizer.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <utility>

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

TEST(FilePath, TakesAPathApart)
{
    const struct {
        const char16_t *text, *path, *drive, *directory, *name, *baseName, *extension, *parent;
        bool isAbsolute;
    } cases[] = {
        {u"C:/a/b.txt", u"C:\\a\\b.txt", u"C:", u"C:\\a", u"b.txt", u"b", u".txt", u"C:\\a", true},
        {u"C:\\", u"C:\\", u"C:", u"C:\\", u"", u"", u"", u"", true},
        {u"C:", u"C:", u"C:", u"C:", u"", u"", u"", u"", true},
        {u"C:\\a\\..\\..\\b", u"C:..\\b", u"C:.", u"C:..", u"b", u"b", u"", u"C:..", true},
        {u"\\..", u"", u"", u"", u"", u"", u"", u"", true},
        {u"\\a", u"\\a", u"", u"\\", u"a", u"a", u"", u"\\", true},
        {u".a", u".a", u"", u"", u".a", u"", u".a", u"", false},
        {u"a.b.c", u"a.b.c", u"", u"", u"a.b.c", u"a.b", u".c", u"", false},
        {u"a.", u"a.", u"", u"", u"a.", u"a", u".", u"", false},
        {u"", u"", u"", u"", u"", u"", u"", u"", false},
        {u"\\\\", u"\\", u"", u"\\", u"", u"", u"", u"", true},
        {u"//s/v", u"\\\\s\\v", u"\\\\s\\v", u"\\\\s\\v", u"", u"", u"", u"", true},
        {u"\\\\s\\v\\", u"\\\\s\\v\\", u"\\\\s\\v", u"\\\\s\\v\\", u"", u"", u"", u"", true},
        {u"\\\\s\\v\\a\\.\\b.c", u"\\\\s\\v\\a\\b.c", u"\\\\s\\v", u"\\\\s\\v\\a", u"b.c", u"b", u".c", u"\\\\s\\v\\a",
            true},
    };
    for (const auto& row : cases) {
        const String text(row.text);
        const FilePath path(text);
        EXPECT_EQ(path.toString(), row.path) << text;
        EXPECT_EQ(path.getDrive(), row.drive) << text;
        EXPECT_EQ(path.getDirectory(), row.directory) << text;
        EXPECT_EQ(path.getName(), row.name) << text;
        EXPECT_EQ(path.getBaseName(), row.baseName) << text;
        EXPECT_EQ(path.getExtension(), row.extension) << text;
        EXPECT_EQ(path.getParentPath(), row.parent) << text;
        EXPECT_EQ(path.isAbsolutePath(), row.isAbsolute) << text;
        EXPECT_EQ(path.isUNCPath(), String(row.path).startsWith(u"\\\\")) << text;
        EXPECT_EQ(text, row.text) << "the argument stays as it was";
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
