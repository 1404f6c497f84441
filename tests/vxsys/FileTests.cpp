#include "vxsys/File.h"

#include "Child.h"
#include "Scratch.h"
#include "tests/Told.h"
#include "vxsys/Result.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fcntl.h>
#include <sched.h>
#include <string>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <tuple>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using namespace std::literals;
using namespace vxsys::results;

class File : NotCopied {
public:
    File(const std::u16string& path, std::uint32_t flags)
    {
        m_result = VXFileOpen(path.c_str(), flags, 0700, &m_handle);
    }
    ~File()
    {
        if (m_handle != VX_FILE_INVALID_HANDLE) {
            EXPECT_EQ(VXFileClose(m_handle), 0);
        }
    }

    std::int32_t write(std::string_view text) const
    {
        std::int32_t done = 0;
        const auto put = VXFileIsRegular(m_handle) == RESULT_OK ? VXFileWriteRegular : VXFileWrite;
        const std::int32_t result = put(m_handle, text.data(), static_cast<std::int32_t>(text.size()), &done);
        return failed(result) ? result : done;
    }

    std::int32_t m_result;
    std::uint32_t m_handle = 7;
};

TEST(File, OpensWhatTheFlagsSay)
{
    const std::uint32_t CREATE = VX_FILE_WRITE | VX_FILE_CREATE;
    // The flags, the content before (null: no file), the result, and the content after "xy" was written
    const std::tuple<std::uint32_t, const char*, std::int32_t, const char*> cases[]
        = {{CREATE, nullptr, 0, "xy"}, {VX_FILE_WRITE, nullptr, RESULT_NOT_FOUND, ""}, {CREATE, "abc", 0, "xyc"},
            {CREATE | VX_FILE_TRUNCATE, "abc", 0, "xy"}, {CREATE | VX_FILE_AT_END, "abc", 0, "abcxy"},
            {VX_FILE_READ | VX_FILE_WRITE, "abc", 0, "xyc"},
            {VX_FILE_READ | VX_FILE_TRUNCATE, "abc", RESULT_INVALID_ARGUMENT, "abc"},
            {VX_FILE_READ | VX_FILE_APPEND, "abc", RESULT_INVALID_ARGUMENT, "abc"},
            {CREATE | VX_FILE_APPEND, "abc", 0, "abc#xy"}, {VX_FILE_CREATE, "abc", RESULT_INVALID_ARGUMENT, "abc"}};
    for (const auto& [flags, before, result, after] : cases) {
        const Scratch scratch;
        if (before != nullptr)
            put(scratch / "file", before);
        {
            const File file(scratch.full("file"), flags);
            EXPECT_EQ(file.m_result, result) << flags;
            EXPECT_EQ(file.m_handle == VX_FILE_INVALID_HANDLE, failed(result)) << flags;
            if ((flags & VX_FILE_APPEND) != 0 && !failed(result))
                std::ofstream(scratch / "file", std::ios::app) << '#';
            EXPECT_EQ(file.write("xy"), failed(result) ? RESULT_INVALID_HANDLE : 2) << flags;
            EXPECT_EQ(::fcntl(static_cast<int>(file.m_handle), F_GETFD), failed(result) ? -1 : FD_CLOEXEC) << flags;
        }
        EXPECT_EQ(contentOf(scratch / "file"), after) << flags;
    }
}

TEST(File, TellsWhyItDoesNotOpen)
{
    const Scratch scratch;
    put(scratch / "file", "");
    const std::pair<std::u16string, std::int32_t> cases[] = {{scratch.full("none"), RESULT_NOT_FOUND},
        {scratch.full(), RESULT_IS_DIRECTORY}, {scratch.full("file\\a"), RESULT_PATH_NOT_FOUND},
        {u"D:\\file", RESULT_PATH_NOT_FOUND}, {u"\\\\server\\share\\file", RESULT_PATH_NOT_FOUND},
        {u"", RESULT_NOT_FOUND}, {scratch.full("a") + u'\xD800', RESULT_INVALID_NAME},
        {scratch.full() + u'\\' + std::u16string(300, u'a'), RESULT_NAME_TOO_LONG},
        {std::u16string(5000, u'a'), RESULT_NAME_TOO_LONG}};
    for (const auto& [path, result] : cases)
        EXPECT_EQ(File(path, VX_FILE_READ).m_result, result) << std::filesystem::path(path);
}

TEST(File, TellsOfAClosedPeerByNoSignalOfItsOwn)
{
    sigset_t signal, before, waiting;
    sigemptyset(&signal);
    sigaddset(&signal, SIGPIPE);
    for (const int round : {0, 1, 2, 3}) {
        const bool isSocket = round % 2 != 0, wasThere = round / 2 != 0;
        pthread_sigmask(wasThere ? SIG_BLOCK : SIG_UNBLOCK, &signal, &before);
        if (wasThere)
            ::raise(SIGPIPE);
        int ends[2];
        ASSERT_EQ(isSocket ? ::socketpair(AF_UNIX, SOCK_STREAM, 0, ends) : ::pipe(ends), 0);
        ::close(ends[0]);
        std::int32_t done = 9;
        EXPECT_EQ(VXFileIsRegular(static_cast<std::uint32_t>(ends[1])), RESULT_FALSE);
        EXPECT_EQ(VXFileWrite(static_cast<std::uint32_t>(ends[1]), "x", 1, &done), code(0x8007006D)) << round;
        EXPECT_EQ(done, 0);
        ::close(ends[1]);
        sigpending(&waiting);
        EXPECT_EQ(sigismember(&waiting, SIGPIPE) != 0, wasThere) << round;
        const timespec atOnce {};
        EXPECT_EQ(sigtimedwait(&signal, nullptr, &atOnce), wasThere ? SIGPIPE : -1);
        pthread_sigmask(SIG_SETMASK, &before, nullptr);
    }
}

std::int32_t replace(const std::u16string& path, std::string_view content, VXFileStatus* status = nullptr)
{
    return VXFileReplace(path.c_str(), content.data(), static_cast<std::int64_t>(content.size()), 0666, status);
}

/// The same as `replace`, in steps.
std::int32_t replaceInSteps(const std::u16string& path, std::string_view content, VXFileStatus* status = nullptr)
{
    if (status != nullptr)
        *status = {};
    VXFileReplacement replacement = nullptr;
    std::uint32_t handle = 0;
    std::int32_t result = VXFileReplaceBegin(path.c_str(), 0666, &replacement, &handle);
    EXPECT_EQ(handle == VX_FILE_INVALID_HANDLE, failed(result));
    for (std::int32_t done = 0; !failed(result) && !content.empty();
         content.remove_prefix(static_cast<std::size_t>(done)))
        result = VXFileWriteRegular(
            handle, content.data(), std::min(static_cast<std::int32_t>(content.size()), 1000), &done);
    if (!failed(result))
        result = VXFileReplaceCommit(replacement, status);
    EXPECT_EQ(VXFileReplaceEnd(replacement), handle == VX_FILE_INVALID_HANDLE ? RESULT_INVALID_ARGUMENT : 0);
    return result;
}

class FileReplace : public testing::TestWithParam<decltype(&replace)> { };

INSTANTIATE_TEST_SUITE_P(File, FileReplace, testing::Values(&replace, &replaceInSteps));

TEST_P(FileReplace, KeepsEverythingButTheContent)
{
    const bool isRoot = ::geteuid() == 0;
    const uid_t owner = isRoot ? 12345 : ::geteuid();
    const gid_t group = isRoot ? 54321 : ::getegid();
    const Scratch scratch;
    const fs::path file = scratch / "folder/file";
    fs::create_directory(scratch / "folder");
    put(file, "old");
    fs::create_symlink("folder/file", scratch / "link");
    ASSERT_TRUE(::chown(file.c_str(), owner, group) == 0 && ::chmod(file.c_str(), 06751) == 0);
    VXFileStatus status, byName;
    EXPECT_EQ(GetParam()(scratch.full("link"), "a new one\0!"sv, &status), 0);
    struct stat after { };
    ASSERT_EQ(::lstat(file.c_str(), &after), 0);
    EXPECT_EQ(contentOf(file), "a new one\0!"sv);
    EXPECT_TRUE(fs::is_symlink(scratch / "link"));
    EXPECT_EQ((Told {after.st_mode & 07777, after.st_uid, after.st_gid}), (Told {06751, owner, group}));
    EXPECT_EQ(VXFileGetStatus(scratch.full("link").c_str(), &byName), 0);
    EXPECT_EQ(status, byName);
    EXPECT_EQ((Told {status.size, status.identity.number, status.modified}),
        (Told {11, after.st_ino, after.st_mtim.tv_sec * 1'000'000'000 + after.st_mtim.tv_nsec}));
}

TEST_P(FileReplace, IsDeniedToWhoMayNotWrite)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can become another user";
    const Scratch scratch;
    put(scratch / "readable", "old");
    put(scratch / "shared", "old"); // it would get another owner
    fs::permissions(scratch / "shared", fs::perms(0666));
    fs::permissions(scratch.getPath(), fs::perms(0777));
    Child child([&](Child::Side&) {
        ASSERT_EQ(::setresuid(65534, 65534, 65534), 0);
        for (const char* name : {"readable", "shared", "own"})
            EXPECT_EQ(GetParam()(scratch.full(name), "new", nullptr), name == "own"sv ? 0 : RESULT_ACCESS_DENIED);
    });
    EXPECT_EQ(child.wait(), 0);
    EXPECT_EQ(contentOf(scratch / "readable") + contentOf(scratch / "shared"), "oldold");
    EXPECT_EQ(scratch.countEntries(), 3);
}

TEST_P(FileReplace, FollowsNoLinkOfAnotherUserWhereAllMayCreateOne)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can make links of other users";
    constexpr uid_t OTHER = 12345, THIRD = 12346;
    const struct {
        mode_t folder;
        uid_t folderOwner, linkOwner;
        bool isFollowed;
    } rows[] = {{01777, 0, OTHER, false}, {01777, OTHER, THIRD, false}, {01777, OTHER, OTHER, true},
        {01777, OTHER, 0, true}, {0777, 0, OTHER, true}, {01755, 0, OTHER, true}};
    for (const auto& row : rows) {
        const Scratch scratch;
        put(scratch / "target", "old");
        std::filesystem::create_directory(scratch / "folder");
        std::filesystem::create_symlink("../target", scratch / "folder/link");
        ASSERT_EQ(::lchown((scratch / "folder/link").c_str(), row.linkOwner, 0), 0);
        ASSERT_EQ(::chown((scratch / "folder").c_str(), row.folderOwner, 0), 0);
        ASSERT_EQ(::chmod((scratch / "folder").c_str(), row.folder), 0);
        EXPECT_EQ(GetParam()(scratch.full("folder/link"), "new", nullptr), row.isFollowed ? 0 : RESULT_ACCESS_DENIED);
        EXPECT_EQ(contentOf(scratch / "target"), row.isFollowed ? "new" : "old");
    }
}

TEST_P(FileReplace, LosesNothingWhereThereIsNoRoom)
{
    const Scratch scratch;
    put(scratch / "file", "old");
    VXFileStatus status;
    {
        const SizeLimit small(4096);
        EXPECT_EQ(GetParam()(scratch.full("file"), std::string(5000, 'n'), &status), code(0x800700DF));
    }
    EXPECT_EQ(status, VXFileStatus());
    EXPECT_EQ(contentOf(scratch / "file"), "old");
    EXPECT_EQ(scratch.countEntries(), 1);
}

TEST_P(FileReplace, LeavesTheOldOrTheNewUnderAKill)
{
    const Scratch scratch;
    const std::string contents[] = {std::string(30'000, 'a'), std::string(90'000, 'b')};
    put(scratch / "file", contents[0]);
    for (unsigned round = 0; round < 40; ++round) {
        Child child([&](Child::Side& parent) {
            parent.tell('r');
            for (unsigned turn = 0; GetParam()(scratch.full("file"), contents[turn % 2], nullptr) == 0;)
                ++turn;
        });
        EXPECT_EQ(child.hear(), 'r');
        spin(round * 97);
        child.kill();
        EXPECT_EQ(child.wait(), -SIGKILL);
        const std::string found = contentOf(scratch / "file");
        EXPECT_TRUE(found == contents[0] || found == contents[1]) << found.size();
    }
}

TEST(FileReplacement, HasNoNameUntilItIsCommittedAndLeavesNothing)
{
    for (const bool isThere : {false, true}) {
        const Scratch scratch;
        if (isThere)
            put(scratch / "file", "old");
        const auto descriptors = openDescriptors();
        VXFileReplacement replacement = nullptr;
        std::uint32_t handle = 0;
        for (const bool isCommitted : {false, true}) {
            ASSERT_EQ(VXFileReplaceBegin(scratch.full("file").c_str(), 0600, &replacement, &handle), 0);
            EXPECT_EQ(scratch.countEntries(), isThere ? 1 : 0) << "this file system is expected to know unnamed files";
            if (isCommitted) {
                put(scratch / "file", "from another process"); // is replaced, or found where a new file is expected
                EXPECT_EQ(VXFileReplaceCommit(replacement, nullptr), 0);
            }
            EXPECT_EQ(VXFileReplaceEnd(replacement), 0);
            EXPECT_EQ(scratch.countEntries(), isThere || isCommitted ? 1 : 0);
            EXPECT_EQ(openDescriptors(), descriptors);
        }
        EXPECT_EQ(contentOf(scratch / "file"), "");
    }
}

TEST(FileReplacement, TakesNoAccessListFromItsFolder)
{
    struct List {
        std::uint32_t version = 2;
        struct {
            std::uint16_t kind, rights;
            std::uint32_t id;
        } entries[5]
            = {{1, 7, UINT32_MAX}, {2, 6, 65533}, {4, 0, UINT32_MAX}, {16, 6, UINT32_MAX}, {32, 0, UINT32_MAX}};
    } const list; // all for the owner, and much for another user
    const Scratch scratch;
    put(scratch / "file", "old");
    ASSERT_EQ(::chmod((scratch / "file").c_str(), 0640), 0);
    if (::setxattr(scratch.getPath().c_str(), "system.posix_acl_default", &list, sizeof list, 0) != 0)
        GTEST_SKIP() << "this file system has no access lists";
    VXFileReplacement replacement = nullptr;
    std::uint32_t handle = 0;
    ASSERT_EQ(VXFileReplaceBegin(scratch.full("file").c_str(), 0600, &replacement, &handle), 0);
    EXPECT_EQ(VXFileReplaceCommit(replacement, nullptr), 0);
    EXPECT_EQ(VXFileReplaceEnd(replacement), 0);
    EXPECT_EQ(::getxattr((scratch / "file").c_str(), "system.posix_acl_access", nullptr, 0), -1);
    EXPECT_EQ(fs::status(scratch / "file").permissions(), fs::perms(0640));
}

TEST(FileReplacement, HasANameOfItsOwnWhereItMust)
{
    const Scratch scratch;
    Child child([&](Child::Side& side) {
        if (::unshare(CLONE_NEWNS) != 0 || ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0
            || ::mount("none", "/proc", "tmpfs", 0, "") != 0) { // an unnamed file would get its name through it
            side.tell('s');
            return;
        }
        for (const bool isKept : {false, true}) {
            VXFileReplacement replacement = nullptr;
            std::uint32_t handle = 0;
            ASSERT_EQ(VXFileReplaceBegin(scratch.full("file").c_str(), 0600, &replacement, &handle), 0);
            EXPECT_EQ(Child([&](Child::Side&) { VXFileReplaceEnd(replacement); }).wait(), 0);
            EXPECT_EQ(scratch.countEntries(), 1) << "a child process ends its copy alone";
            if (!isKept)
                VXFileReplaceDiscard(replacement);
            EXPECT_EQ(scratch.countEntries(), isKept ? 1 : 0);
            EXPECT_EQ(failed(VXFileReplaceCommit(replacement, nullptr)), !isKept);
            EXPECT_EQ(VXFileReplaceEnd(replacement), 0);
            EXPECT_EQ(fs::exists(scratch / "file"), isKept);
        }
    });
    if (child.hear() == 's')
        GTEST_SKIP() << "needs the right to mount a file system";
    EXPECT_EQ(child.wait(), 0);
    EXPECT_EQ(scratch.countEntries(), 1);
}

TEST(File, IsReadAgainWhateverItsNameIs)
{
    const Scratch scratch;
    put(scratch / "file", "abcdef");
    const File file(scratch.full("file"), VX_FILE_WRITE);
    fs::rename(scratch / "file", scratch / "other");
    std::uint32_t again = 0;
    EXPECT_EQ(VXFileReopen(VX_FILE_INVALID_HANDLE, VX_FILE_READ, &again), RESULT_INVALID_HANDLE);
    ASSERT_EQ(VXFileReopen(file.m_handle, VX_FILE_READ, &again), 0);
    char bytes[8] = "";
    std::int32_t done = 0;
    std::int64_t position = -1;
    EXPECT_EQ(VXFileReadAt(again, 4, bytes, 8, &done), 0);
    EXPECT_EQ(VXFileGetPosition(again, &position), 0);
    EXPECT_EQ((Told {bytes, done, position}), "ef 2 0");
    EXPECT_EQ(VXFileClose(again), 0);
}

TEST(Path, ExpandsToTheFullForm)
{
    const Scratch scratch;
    std::filesystem::current_path(scratch.getPath());
    const std::u16string here = scratch.full(), above = here.substr(0, here.rfind(u'\\'));
    const std::pair<std::u16string, std::u16string> cases[] = {{u"", here}, {u".", here}, {u"C:", here},
        {u"a", here + u"\\a"}, {u"c:a/b", here + u"\\a\\b"}, {u".\\a\\.\\\\b\\", here + u"\\a\\b\\"}, {u"a\\..", here},
        {u"a\\..\\", here + u"\\"}, {u"..\\a", above + u"\\a"}, {u"a\\b\\..\\..\\..\\c", above + u"\\c"},
        {u"a\\...\\b..", here + u"\\a\\...\\b.."}, {std::u16string(300, u'x') + u"\\..\\y", here + u"\\y"},
        {u"..\\..\\..\\..\\..\\..\\..\\..\\a", u"C:\\a"}, {u"\\", u"C:\\"}, {u"\\\\", u"C:\\"}, {u"/a/../..", u"C:\\"},
        {u"C:\\a\\..\\..\\b", u"C:\\b"}, {u"d:\\a\\.\\b", u"D:\\a\\b"}, {u"d:a", u"D:\\a"}, {u"D:", u"D:\\"},
        {u"\\\\server\\share", u"\\\\server\\share"}, {u"//server/share/", u"\\\\server\\share\\"},
        {u"\\\\server\\share\\a\\..\\..\\b", u"\\\\server\\share\\b"}};
    for (const auto& [path, full] : cases) {
        std::u16string target(full.size() + 1, u'#');
        const auto size = static_cast<std::int32_t>(target.size());
        EXPECT_EQ(VXPathExpand(path.c_str(), target.data(), size), 0);
        EXPECT_EQ(target, full + u'\0');
        EXPECT_EQ(VXPathExpand(path.c_str(), target.data(), size - 1), RESULT_BUFFER_TOO_SMALL);
        EXPECT_EQ(target[0], u'\0');
    }
    char16_t target[8];
    EXPECT_EQ(VXPathExpand(u"\\\\\\share", target, 8), RESULT_INVALID_NAME);
    EXPECT_EQ(VXPathExpand(u"\\\\server", target, 8), RESULT_INVALID_NAME);
}

TEST(Path, GivesTheCurrentDirectoryOrSaysThatItCannot)
{
    const Scratch scratch;
    char16_t target[300];
    for (const char* name : {"d\xC3\xA4\xF0\x9F\x98\x80", "not\xFFtext", "overlong\xC0\xAF", "surrogate\xED\xA0\x80",
             "cut\xE2\x82", "back\\slash"}) {
        std::filesystem::create_directory(scratch / name);
        std::filesystem::current_path(scratch / name);
        const std::int32_t result = *name == 'd' ? RESULT_OK : RESULT_INVALID_NAME;
        EXPECT_EQ(VXPathGetCurrent(target, 300), result) << name;
        EXPECT_EQ(target, result == RESULT_OK ? scratch.full(name) : u"") << name;
        EXPECT_EQ(VXPathExpand(u"a", target, 300), result) << name;
        EXPECT_EQ(VXPathExpand(u"\\a", target, 300), RESULT_OK) << name;
    }
    std::filesystem::remove(std::filesystem::current_path());
    EXPECT_EQ(VXPathGetCurrent(target, 300), RESULT_NOT_FOUND);
}

} // namespace
