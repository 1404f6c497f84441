#include "vx/io/RotatingFileStream.h"

#include "tests/vxsys/Child.h"
#include "tests/vxsys/Scratch.h"
#include "vx/Exception.h"
#include "vx/Occasion.h"

#include <gtest/gtest.h>

#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <map>
#include <sched.h>
#include <string>
#include <sys/mount.h>
#include <sys/stat.h>
#include <vector>

namespace {

using namespace vx;
using io::RotatingFileStream;
using io::Rotation;

class RotatingFile : public testing::Test {
protected:
    /// Each file with its size, by name.
    std::string listing() const
    {
        std::map<std::string, std::uintmax_t> sizes;
        for (const auto& entry : std::filesystem::directory_iterator(m_scratch.getPath()))
            sizes[entry.path().filename().string()] = entry.file_size();
        std::string text;
        for (const auto& [name, size] : sizes)
            text += (text.empty() ? "" : " ") + name + ':' + std::to_string(size);
        return text;
    }

    void write(RotatingFileStream& stream, const std::vector<std::size_t>& sizes) const
    {
        for (const std::size_t size : sizes)
            stream.write(std::string(size, 'x').c_str(), static_cast<std::int32_t>(size));
    }

    const ScopedVariable m_folder {"TMPDIR", "/dev/shm"};
    const Scratch m_scratch;
    const String m_path {m_scratch.full("log").c_str()};
};

TEST_F(RotatingFile, BeginsANewFileBeforeTheLimitAndRemovesTheOldest)
{
    const struct {
        Rotation rotation;
        std::vector<std::size_t> sizes;
        const char* files;
    } cases[] = {
        {{.mostBytes = 10}, {4, 6, 1}, "log:1 log.000009.gz:5 log.000010:7 log.000011:10"},
        {{.mostBytes = 10}, {99, 99}, "log:99 log.000009.gz:5 log.000010:7 log.000011:99"},
        {{.mostBytes = 10}, {4, 7, 0, 3}, "log:10 log.000009.gz:5 log.000010:7 log.000011:4"},
        {{.mostBytes = 10, .keepFiles = 2}, {9, 9, 9}, "log:9 log.000011:9 log.000012:9"},
        {{.mostBytes = 10, .keepFiles = 3}, {9, 9}, "log:9 log.000009.gz:5 log.000010:7 log.000011:9"},
        {{.mostBytes = 10, .keepBytes = 16}, {9, 9}, "log:9 log.000010:7 log.000011:9"},
        {{.mostBytes = 10, .keepBytes = 1}, {9, 9}, "log:9"},
    };
    for (const auto& row : cases) {
        for (const auto& entry : std::filesystem::directory_iterator(m_scratch.getPath()))
            std::filesystem::remove(entry);
        put(m_scratch / "log.000009.gz", "older");
        put(m_scratch / "log.000010", "younger");
        write(*Reference<RotatingFileStream>(new RotatingFileStream(m_path, row.rotation)), row.sizes);
        EXPECT_EQ(listing(), row.files);
    }
    for (const char* other : {"log.00001", "log.000099x", "log.1234567890123456789", "log2.000099"}) {
        put(m_scratch / other, "");
        write(*Reference<RotatingFileStream>(new RotatingFileStream(m_path, {.mostBytes = 1, .keepFiles = 1})), {9});
        EXPECT_EQ(contentOf(m_scratch / other), "") << "it is no log of this stream";
        EXPECT_TRUE(std::filesystem::exists(m_scratch / other));
    }
    const auto complaint = [](const String& path, const Rotation& rotation) {
        try {
            RotatingFileStream(path, rotation);
        } catch (const Exception& failure) {
            return getOccasion(failure).toUtf8();
        }
        return std::string();
    };
    EXPECT_EQ(complaint(String(), {}), "open a file with an empty path");
    EXPECT_EQ(complaint(m_path, {.keepFiles = -1}), "set a negative limit for " + m_path.toUtf8());
}

TEST_F(RotatingFile, GivesEachFileThatItCreatesItsMode)
{
    constexpr std::int32_t WANTED = 0640;
    const mode_t mask = ::umask(077);
    const auto modeOf = [this](const char* name) {
        return static_cast<int>(std::filesystem::status(m_scratch / name).permissions());
    };
    RotatingFileStream stream(m_path, {.mostBytes = 5, .access = WANTED});
    EXPECT_EQ(modeOf("log"), WANTED);
    write(stream, {4, 4});
    std::filesystem::rename(m_scratch / "log", m_scratch / "old");
    write(stream, {1});
    for (const char* name : {"log", "log.000001", "old"})
        EXPECT_EQ(modeOf(name), WANTED) << name;
    std::filesystem::permissions(m_scratch / "log", std::filesystem::perms(0600));
    RotatingFileStream(m_path, {.access = WANTED}).write("x", 1);
    EXPECT_EQ(modeOf("log"), 0600) << "its owner chose it";
    ::umask(mask);
}

TEST_F(RotatingFile, BeginsANewFileWithEachHourAndDay)
{
    constexpr std::time_t HOUR = 3600, DAY = 24 * HOUR, HALF = HOUR / 2;
    const ScopedVariable zone("TZ", "HALF-0:30"); // half an hour apart from whole ones
    for (const int row : {0, 1, 2, 3, 4, 5, 6, 7}) {
        const bool isDaily = row % 2 != 0, isUtc = row / 2 % 2 != 0, isBefore = row / 4 != 0;
        const std::time_t period = isDaily ? DAY : HOUR, offset = isUtc ? 0 : HALF;
        const auto beginNow = [&] { return (std::time(nullptr) + offset) / period * period - offset; };
        std::time_t begin = 0;
        do { // in one period
            std::filesystem::remove(m_scratch / "log.000001");
            put(m_scratch / "log", "old");
            begin = beginNow();
            const Rotation rotation {.every = isDaily ? Rotation::Every::DAY : Rotation::Every::HOUR, .isUtc = isUtc};
            RotatingFileStream first(m_path, rotation);
            RotatingFileStream second(m_path, rotation);
            for (RotatingFileStream* stream : {&first, &first, &second}) { // the clock of the files is late
                const timespec modified[2] = {{begin - (isBefore ? 1 : 0), 0}, {begin - (isBefore ? 1 : 0), 0}};
                ASSERT_EQ(::utimensat(AT_FDCWD, (m_scratch / "log").c_str(), modified, 0), 0);
                write(*stream, {2});
            }
        } while (begin != beginNow());
        EXPECT_EQ(listing(), isBefore ? "log:6 log.000001:3" : "log:9") << row;
    }
}

TEST_F(RotatingFile, FollowsTheNameAndTellsWhatIsClosed)
{
    std::string closed, failures;
    Rotation rotation {.mostBytes = 10};
    rotation.onClosed = [&](const String& path) {
        closed += path.toUtf8().substr(path.toUtf8().size() - 6) + ' ';
        throw ResultException(-1, u"no room");
    };
    rotation.onFailure = [&](const Exception& failure) { failures += failure.getDescription().toUtf8(); };
    RotatingFileStream first(m_path, rotation);
    RotatingFileStream second(m_path, rotation);
    write(first, {6, 6});
    write(second, {1, 6, 6});
    EXPECT_EQ(closed, "000001 000002 ");
    EXPECT_EQ(failures, "no roomno room");
    write(first, {1});
    EXPECT_EQ(listing(), "log:7 log.000001:6 log.000002:7 log.000003:6");
    std::filesystem::remove(m_scratch / "log");
    write(second, {2});
    first.close();
    write(first, {2});
    EXPECT_EQ(std::filesystem::file_size(m_scratch / "log"), 4U);

    failures.clear();
    rotation.onFailure = [&](const Exception& failure) { failures += getOccasion(failure).toUtf8() + '\n'; };
    const std::string longest(250, 'n'); // no number can be added to it
    RotatingFileStream stuck(String(m_scratch.full(longest.c_str()).c_str()), rotation);
    write(stuck, {9, 9, 9});
    EXPECT_EQ(std::filesystem::file_size(m_scratch / longest.c_str()), 27U) << "each entry is there";
    EXPECT_EQ(failures, "rename " + String(m_scratch.full(longest.c_str()).c_str()).toUtf8() + '\n');
}

TEST_F(RotatingFile, GoesOnWithAFileThatCannotBeFollowedByAnother)
{
    const std::string disk = m_scratch / "disk";
    std::filesystem::create_directory(disk);
    Child child([&](Child::Side& side) {
        if (::unshare(CLONE_NEWNS) != 0 || ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0
            || ::mount("none", disk.c_str(), "tmpfs", 0, "nr_inodes=2") != 0) {
            side.tell('s');
            return;
        }
        std::string failures;
        Rotation rotation {.mostBytes = 10};
        rotation.onFailure = [&](const Exception& failure) { failures += getOccasion(failure).toUtf8(); };
        RotatingFileStream stream((disk + "/log").c_str(), rotation);
        write(stream, {9, 9, 9});
        EXPECT_EQ(std::filesystem::file_size(disk + "/log"), 27U);
        EXPECT_EQ(failures, "open " + String((disk + "/log").c_str()).toUtf8());
    });
    if (child.hear() == 's')
        GTEST_SKIP() << "needs the right to mount a file system";
    EXPECT_EQ(child.wait(), 0);
}

} // namespace
