#include "vxsys/File.h"

#include "Scratch.h"
#include "vxsys/Result.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

namespace {

using namespace vxsys::results;

std::u16string expand(const std::u16string& path)
{
    char16_t target[300];
    EXPECT_EQ(VXPathExpand(path.c_str(), target, static_cast<std::int32_t>(std::size(target))), 0);
    return target;
}

TEST(Path, ExpandsToTheFullForm)
{
    const Scratch scratch;
    std::filesystem::current_path(scratch.getPath());
    const std::u16string here = scratch.full();
    const std::u16string above = here.substr(0, here.rfind(u'\\'));
    struct {
        std::u16string path;
        std::u16string full;
    } cases[] = {
        {u"", here},
        {u".", here},
        {u"C:", here},
        {u"a", here + u"\\a"},
        {u"c:a/b", here + u"\\a\\b"},
        {u".\\a\\.\\\\b\\", here + u"\\a\\b\\"},
        {u"a\\..", here},
        {u"a\\..\\", here + u"\\"},
        {u"..\\a", above + u"\\a"},
        {u"a\\b\\..\\..\\..\\c", above + u"\\c"},
        {u"a\\...\\b..", here + u"\\a\\...\\b.."},
        {std::u16string(300, u'x') + u"\\..\\y", here + u"\\y"},
        {u"..\\..\\..\\..\\..\\..\\..\\..\\a", u"C:\\a"},
        {u"\\", u"C:\\"},
        {u"\\\\", u"C:\\"},
        {u"/a/../..", u"C:\\"},
        {u"C:\\a\\..\\..\\b", u"C:\\b"},
        {u"d:\\a\\.\\b", u"D:\\a\\b"},
        {u"d:a", u"D:\\a"},
        {u"D:", u"D:\\"},
        {u"\\\\server\\share", u"\\\\server\\share"},
        {u"//server/share/", u"\\\\server\\share\\"},
        {u"\\\\server\\share\\a\\..\\..\\b", u"\\\\server\\share\\b"},
    };
    for (const auto& row : cases)
        EXPECT_EQ(expand(row.path), row.full);
}

TEST(Path, NeedsRoomForTheWholeTextAndItsTerminator)
{
    for (const std::u16string path : {u"C:\\ab\\c", u"C:\\", u"\\\\s\\h\\a"}) {
        const auto length = static_cast<std::int32_t>(path.size());
        for (std::int32_t size = 1; size <= length; ++size) {
            std::u16string target(static_cast<std::size_t>(size), u'#');
            EXPECT_EQ(VXPathExpand(path.c_str(), target.data(), size), RESULT_BUFFER_TOO_SMALL) << size;
            EXPECT_EQ(target[0], u'\0') << size;
        }
        std::u16string target(path.size() + 1, u'#');
        EXPECT_EQ(VXPathExpand(path.c_str(), target.data(), length + 1), 0);
        EXPECT_EQ(target, path + u'\0');
    }
    char16_t target[8];
    EXPECT_EQ(VXPathExpand(u"\\\\\\share", target, 8), RESULT_INVALID_NAME);
    EXPECT_EQ(VXPathExpand(u"\\\\server", target, 8), RESULT_INVALID_NAME);
    EXPECT_EQ(VXPathExpand(nullptr, target, 8), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(VXPathExpand(u"a", nullptr, 8), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(VXPathExpand(u"a", target, 0), RESULT_INVALID_ARGUMENT);
}

TEST(Path, GivesTheCurrentDirectoryOrSaysThatItCannot)
{
    const Scratch scratch;
    struct {
        const char* name;
        std::int32_t result;
    } cases[] = {
        {"d\xC3\xA4\xF0\x9F\x98\x80", RESULT_OK},
        {"not\xFFtext", RESULT_INVALID_NAME},
        {"overlong\xC0\xAF", RESULT_INVALID_NAME},
        {"surrogate\xED\xA0\x80", RESULT_INVALID_NAME},
        {"cut\xE2\x82", RESULT_INVALID_NAME},
        {"back\\slash", RESULT_INVALID_NAME},
    };
    char16_t target[300];
    for (const auto& row : cases) {
        std::filesystem::create_directory(scratch / row.name);
        std::filesystem::current_path(scratch / row.name);
        EXPECT_EQ(VXPathGetCurrent(target, 300), row.result) << row.name;
        EXPECT_EQ(target, row.result == RESULT_OK ? scratch.full(row.name) : u"") << row.name;
        EXPECT_EQ(VXPathExpand(u"a", target, 300), row.result) << row.name;
        EXPECT_EQ(VXPathExpand(u"\\a", target, 300), RESULT_OK) << row.name;
    }
    std::filesystem::remove(std::filesystem::current_path());
    EXPECT_EQ(VXPathGetCurrent(target, 300), RESULT_NOT_FOUND);

    std::filesystem::current_path("/");
    EXPECT_EQ(VXPathGetCurrent(target, 4), 0);
    EXPECT_EQ(target, std::u16string(u"C:\\"));
    EXPECT_EQ(VXPathGetCurrent(target, 3), RESULT_BUFFER_TOO_SMALL);
    EXPECT_EQ(VXPathGetCurrent(nullptr, 4), RESULT_INVALID_ARGUMENT);
}

TEST(Path, TakesTheDirectoryForTemporaryFilesThatTheEnvironmentNames)
{
    const Scratch scratch;
    std::filesystem::create_directory(scratch / "not\xFFtext");
    std::ofstream(scratch / "file");
    std::filesystem::permissions(scratch / "file", std::filesystem::perms::owner_all);
    const std::u16string fallback = u"C:\\tmp\\";
    const std::u16string own = scratch.full() + u"\\";
    struct {
        std::string variable;
        std::u16string directory;
    } cases[] = {
        {scratch.getPath().string(), own},
        {scratch.getPath().string() + "//", own},
        {"/", u"C:\\"},
        {"", fallback},
        {"relative", fallback},
        {scratch / "none", fallback},
        {scratch / "file", fallback},
        {scratch / "not\xFFtext", fallback},
    };
    char16_t target[300];
    for (const auto& row : cases) {
        const ScopedVariable variable("TMPDIR", row.variable.c_str());
        EXPECT_EQ(VXPathGetTemp(target, 300), 0) << row.variable;
        EXPECT_EQ(target, row.directory) << row.variable;
    }
    const ScopedVariable variable("TMPDIR", nullptr);
    EXPECT_EQ(VXPathGetTemp(target, 8), 0);
    EXPECT_EQ(VXPathGetTemp(target, 7), RESULT_BUFFER_TOO_SMALL);
    EXPECT_EQ(target[0], u'\0');
    EXPECT_EQ(VXPathGetTemp(target, -1), RESULT_INVALID_ARGUMENT);
}

} // namespace
