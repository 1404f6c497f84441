#include "Child.h"
#include "Scratch.h"
#include "vxsys/File.h"
#include "vxsys/Result.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using namespace std::literals;
using namespace vxsys::results;

constexpr std::int32_t TOO_LARGE = code(0x800700DF);

std::int32_t replace(const std::u16string& path, std::string_view content, VXFileStatus* status = nullptr)
{
    return VXFileReplace(path.c_str(), content.data(), static_cast<std::int64_t>(content.size()), 0666, status);
}

struct stat statusOf(const fs::path& path)
{
    struct stat status { };
    EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
    return status;
}

TEST(FileReplace, KeepsEverythingButTheContent)
{
    constexpr uid_t OWNER = 12345;
    constexpr gid_t GROUP = 54321;
    const bool isRoot = ::geteuid() == 0;
    const Scratch scratch;
    fs::create_directory(scratch / "folder");
    put(scratch / "folder/file", "old");
    fs::create_symlink("folder/file", scratch / "link");
    ASSERT_EQ(::chmod((scratch / "folder/file").c_str(), 06751), 0);
    if (isRoot) {
        ASSERT_EQ(::chown((scratch / "folder/file").c_str(), OWNER, GROUP), 0);
        ASSERT_EQ(::chmod((scratch / "folder/file").c_str(), 06751), 0);
    }

    VXFileStatus status;
    EXPECT_EQ(replace(scratch.full("link"), "a new one\0!"sv, &status), 0);
    const struct stat after = statusOf(scratch / "folder/file");
    EXPECT_EQ(contentOf(scratch / "folder/file"), "a new one\0!"sv);
    EXPECT_TRUE(fs::is_symlink(scratch / "link"));
    EXPECT_EQ(after.st_mode & 07777, 06751U);
    EXPECT_EQ(after.st_uid, isRoot ? OWNER : ::geteuid());
    EXPECT_EQ(after.st_gid, isRoot ? GROUP : ::getegid());
    VXFileStatus byName;
    EXPECT_EQ(VXFileGetStatus(scratch.full("link").c_str(), &byName), 0);
    EXPECT_EQ(status, byName);
    EXPECT_EQ(status.size, 11);
    EXPECT_EQ(status.identity.number, after.st_ino);
    EXPECT_EQ(status.modified, after.st_mtim.tv_sec * 1'000'000'000 + after.st_mtim.tv_nsec);
}

TEST(FileReplace, MakesWhatIsNotThere)
{
    const Scratch scratch;
    fs::current_path(scratch.getPath());
    fs::create_symlink("target", "link");
    const mode_t mask = ::umask(027);
    EXPECT_EQ(replace(u"plain", ""), 0);
    EXPECT_EQ(replace(u"link", "x"), 0);
    ::umask(mask);
    EXPECT_EQ(statusOf("plain").st_mode & 07777, 0640U);
    EXPECT_EQ(contentOf("target"), "x");

    const std::u16string longest(255, u'n'); // leaves no room for a longer name beside it
    EXPECT_EQ(replace(longest, "x"), 0);
    EXPECT_EQ(replace(longest + u"n", "x"), RESULT_NAME_TOO_LONG);
    EXPECT_EQ(std::distance(fs::directory_iterator("."), {}), 4);
}

TEST(FileReplace, TellsWhyItDoesNot)
{
    const Scratch scratch;
    fs::create_directory(scratch / "folder");
    fs::create_symlink("circle", scratch / "circle");
    ASSERT_EQ(::mkfifo((scratch / "pipe").c_str(), 0600), 0);
    struct {
        const char* name;
        std::int32_t result;
    } cases[] = {
        {"folder", RESULT_ACCESS_DENIED},
        {"folder/", RESULT_ACCESS_DENIED},
        {"pipe", RESULT_ACCESS_DENIED},
        {"none/file", RESULT_NOT_FOUND},
        {"pipe/file", RESULT_PATH_NOT_FOUND},
        {"circle", code(0x80070781)},
    };
    for (const auto& row : cases)
        EXPECT_EQ(replace(scratch.full(row.name), "x"), row.result) << row.name;
    EXPECT_EQ(VXFileReplace(nullptr, "", 0, 0, nullptr), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(VXFileReplace(u"x", nullptr, 1, 0, nullptr), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(VXFileReplace(u"x", "", -1, 0, nullptr), RESULT_INVALID_ARGUMENT);
    VXFileStatus status;
    EXPECT_EQ(VXFileGetStatus(scratch.full("none").c_str(), &status), RESULT_NOT_FOUND);
    EXPECT_EQ(status, VXFileStatus());
}

TEST(FileReplace, IsDeniedToWhoMayNotWrite)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can become somebody else";
    const Scratch scratch;
    put(scratch / "readable", "old");
    put(scratch / "shared", "old");
    ASSERT_EQ(::chmod((scratch / "shared").c_str(), 0666), 0);
    Child child([&](Child::Side&) {
        ASSERT_EQ(::chmod(scratch.getPath().c_str(), 0777), 0);
        ASSERT_EQ(::setresuid(65534, 65534, 65534), 0);
        EXPECT_EQ(replace(scratch.full("readable"), "new"), RESULT_ACCESS_DENIED);
        EXPECT_EQ(replace(scratch.full("shared"), "new"), RESULT_ACCESS_DENIED); // it would be another owner's
        EXPECT_EQ(replace(scratch.full("own"), "new"), 0);
    });
    EXPECT_EQ(child.wait(), 0);
    EXPECT_EQ(contentOf(scratch / "readable"), "old");
    EXPECT_EQ(contentOf(scratch / "shared"), "old");
    EXPECT_EQ(std::distance(fs::directory_iterator(scratch.getPath()), {}), 3);
}

TEST(FileReplace, LosesNothingWhereThereIsNoRoom)
{
    const Scratch scratch;
    put(scratch / "file", "old");
    rlimit before {};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit small {4096, before.rlim_max};
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    VXFileStatus status;
    EXPECT_EQ(replace(scratch.full("file"), std::string(5000, 'n'), &status), TOO_LARGE);
    ::setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(status, VXFileStatus());
    EXPECT_EQ(contentOf(scratch / "file"), "old");
    EXPECT_EQ(std::distance(fs::directory_iterator(scratch.getPath()), {}), 1);
}

TEST(FileReplace, LeavesTheOldOrTheNewUnderAKill)
{
    const Scratch scratch;
    const std::string contents[] = {std::string(30'000, 'a'), std::string(90'000, 'b')};
    put(scratch / "file", contents[0]);
    for (unsigned round = 0; round < 40; ++round) {
        Child child([&](Child::Side& parent) {
            parent.tell('r');
            for (unsigned turn = 0;; ++turn) {
                if (replace(scratch.full("file"), contents[turn % 2]) != 0)
                    parent.tell('x');
            }
        });
        EXPECT_EQ(child.hear(), 'r');
        ::usleep(round * 97); // spreads the kills, decides nothing
        child.kill();
        EXPECT_EQ(child.wait(), -SIGKILL);
        EXPECT_EQ(child.hear(), '\0');
        const std::string found = contentOf(scratch / "file");
        EXPECT_TRUE(found == contents[0] || found == contents[1]) << found.size();
    }
}

} // namespace
