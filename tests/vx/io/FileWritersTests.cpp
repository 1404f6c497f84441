#include "tests/Random.h"
#include "tests/Threads.h"
#include "tests/vxsys/Child.h"
#include "tests/vxsys/Scratch.h"
#include "vx/io/FileOutputStream.h"

#include <gtest/gtest.h>

#include <fstream>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

using vx::String;
using vx::io::FileOutputStream;

constexpr unsigned ATEND = FileOutputStream::ATEND, APPEND = FileOutputStream::APPEND,
                   KEEPCLOSED = FileOutputStream::KEEPCLOSED, LOCK = FileOutputStream::LOCK;

constexpr int WRITERS = 8;
constexpr int RECORDS = RECORDS_OF_A_WRITER;

/// "writer sequence length filling" and a line end; the filling is `length` letters that follow from the rest.
std::string recordOf(int writer, int sequence, std::size_t length)
{
    std::string record = std::to_string(writer) + ' ' + std::to_string(sequence) + ' ' + std::to_string(length) + ' ';
    const std::size_t head = record.size();
    record.resize(head + length + 1, '\n');
    for (std::size_t i = 0; i < length; ++i)
        record[head + i] = static_cast<char>('a' + (static_cast<std::size_t>(writer + sequence) + i) % 26);
    return record;
}

void writeRecords(const String& path, unsigned mode, int writer, int count, std::size_t longest)
{
    FileOutputStream stream(path, mode);
    std::mt19937 random(static_cast<unsigned>(writer));
    for (int sequence = 0; sequence < count; ++sequence) {
        // Mostly short, sometimes of many pages, which the system writes in several steps.
        const std::size_t length = random() % 100 == 0 ? random() % longest : random() % 200;
        const std::string record = recordOf(writer, sequence, length);
        stream.write(record.data(), static_cast<std::int32_t>(record.size()));
    }
}

/// Finds each writer's records whole and in order, and tells how many there are of each.
std::vector<int> countRecords(const std::filesystem::path& path)
{
    std::vector<int> counts(WRITERS, 0);
    std::ifstream file(path, std::ios::binary);
    for (std::string line; std::getline(file, line);) {
        int writer = -1, sequence = 0;
        std::size_t length = 0;
        std::istringstream(line) >> writer >> sequence >> length;
        if (file.eof() || writer < 0 || writer >= WRITERS || length > line.size()
            || line + '\n' != recordOf(writer, counts[static_cast<std::size_t>(writer)], length)) {
            ADD_FAILURE() << "torn, lost or doubled: " << line.substr(0, 80);
            return counts;
        }
        ++counts[static_cast<std::size_t>(writer)];
    }
    return counts;
}

class FileWriters : public testing::TestWithParam<unsigned> {
protected:
    // Memory is flushed at once: what is looked for is order, not the disk.
    const ScopedVariable m_folder {"TMPDIR", "/dev/shm"};
    const Scratch m_scratch;
    const String m_path {m_scratch.full("file").c_str()};
};

class ManyWriters : public FileWriters { };

TEST_P(ManyWriters, KeepEachRecordWholeAndLoseNone)
{
    constexpr std::size_t LONGEST = 20'000;
    std::vector<std::unique_ptr<Child>> writers;
    for (int writer = 0; writer < WRITERS; ++writer) {
        writers.push_back(
            std::make_unique<Child>([&](Child::Side&) { writeRecords(m_path, GetParam(), writer, RECORDS, LONGEST); }));
    }
    for (auto& writer : writers)
        EXPECT_EQ(writer->wait(), 0);
    EXPECT_EQ(countRecords(m_scratch / "file"), std::vector<int>(WRITERS, RECORDS));
}

INSTANTIATE_TEST_SUITE_P(FileOutputStream, ManyWriters, testing::Values(APPEND, APPEND | LOCK, APPEND | KEEPCLOSED));

class KilledWriters : public FileWriters { };

TEST_P(KilledWriters, GoOnWhenTwoAreKilled)
{
    constexpr int COUNT = RECORDS / 10;
    constexpr std::size_t LONGEST = 500'000;
    Random random;
    std::vector<std::unique_ptr<Child>> writers;
    for (int writer = 0; writer < WRITERS; ++writer) {
        writers.push_back(std::make_unique<Child>([&](Child::Side&) {
            const bool isVictim = writer < 2; // writes until it is killed
            writeRecords(m_path, GetParam(), writer, isVictim ? INT_MAX : COUNT, LONGEST);
        }));
    }
    for (int victim = 0; victim < 2; ++victim) {
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 50'000)); // any moment: nothing rests on it
        writers[static_cast<std::size_t>(victim)]->kill();
    }
    for (int writer = 0; writer < WRITERS; ++writer)
        EXPECT_EQ(writers[static_cast<std::size_t>(writer)]->wait(), writer < 2 ? -SIGKILL : 0);
    FileOutputStream last(m_path, GetParam());
    last.write("", 0); // one of the victims may have been the last to write
    const std::vector<int> counts = countRecords(m_scratch / "file");
    EXPECT_EQ(std::vector<int>(counts.begin() + 2, counts.end()), std::vector<int>(WRITERS - 2, COUNT));
}

INSTANTIATE_TEST_SUITE_P(FileOutputStream, KilledWriters, testing::Values(APPEND, LOCK | KEEPCLOSED | ATEND));

TEST(ThreadWriters, MayBeThreadsOfOneStream)
{
    const Scratch scratch;
    for (const unsigned mode : {APPEND, APPEND | KEEPCLOSED}) {
        const std::string name = std::to_string(mode);
        FileOutputStream stream(String(scratch.full(name.c_str()).c_str()), mode);
        inThreads(WRITERS, [&stream](int writer) {
            for (int sequence = 0; sequence < 50; ++sequence) {
                const std::string record = recordOf(writer, sequence, 20);
                stream.write(record.data(), static_cast<std::int32_t>(record.size()));
                EXPECT_GT(stream.getSize(), 0);
            }
        });
        EXPECT_EQ(countRecords(scratch / name.c_str()), std::vector<int>(WRITERS, 50));
    }
}

} // namespace
