#include "tests/Random.h"
#include "tests/Threads.h"
#include "tests/vxsys/Child.h"
#include "tests/vxsys/Scratch.h"
#include "vx/io/EntryStream.h"
#include "vx/io/FileOutputStream.h"
#include "vx/io/OutputStreamWriter.h"
#include "vx/log/BasicLogWriter.h"
#include "vx/log/LogEntry.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace vx;
using io::FileOutputStream;

constexpr unsigned ATEND = FileOutputStream::ATEND, APPEND = FileOutputStream::APPEND,
                   KEEPCLOSED = FileOutputStream::KEEPCLOSED, LOCK = FileOutputStream::LOCK;

constexpr int WRITERS = 8;
constexpr int RECORDS = RECORDS_OF_A_WRITER;

/// "writer sequence length filling" and a line end. The filling is `length` letters that can be computed from the rest.
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
    Random random;
    for (int sequence = 0; sequence < count; ++sequence) {
        // Mostly short, sometimes of many pages, which the system writes in several steps.
        const std::size_t length = random() % 100 == 0 ? random() % longest : random() % 200;
        const std::string record = recordOf(writer, sequence, length);
        stream.write(record.data(), static_cast<std::int32_t>(record.size()));
    }
}

/// Expects complete records of each writer in their order, each between `head` and `foot`. Returns how many there are
/// of each writer.
std::vector<int> countRecords(
    const std::filesystem::path& path, const std::string& head = "", const std::string& foot = "")
{
    std::vector<int> counts(WRITERS, 0);
    const std::string content = contentOf(path);
    for (std::size_t place = 0; place < content.size();) {
        std::size_t writer = WRITERS, sequence = 0, length = 0;
        std::istringstream(content.substr(place + std::min(head.size(), content.size() - place), 40)) >> writer
            >> sequence >> length;
        std::string record;
        if (writer < WRITERS && length < content.size())
            record = head + recordOf(static_cast<int>(writer), counts[writer]++, length) + foot;
        if (record.empty() || content.compare(place, record.size(), record) != 0) {
            ADD_FAILURE() << "torn, lost or doubled: " << content.substr(place, 80);
            return counts;
        }
        place += record.size();
    }
    return counts;
}

/// A user that no process has. Its named objects are removed at the end of the block.
class OtherUser {
public:
    ~OtherUser()
    {
        const std::string folder = "/dev/shm/vxsys4-" + std::to_string(m_id) + '-';
        for (const auto& entry : std::filesystem::directory_iterator("/dev/shm")) {
            if (entry.path().string().starts_with(folder))
                std::filesystem::remove_all(entry.path());
        }
    }

    bool isPossible() const { return ::geteuid() == 0; }
    void become() const { ASSERT_EQ(::setuid(m_id), 0); }

private:
    const uid_t m_id = 1'000'000'000 + static_cast<uid_t>(::getpid());
};

/// Runs `work(0)` to `work(WRITERS - 1)`, each in a separate process.
template <class Work>
std::vector<std::unique_ptr<Child>> startWriters(Work work)
{
    std::vector<std::unique_ptr<Child>> writers;
    for (int writer = 0; writer < WRITERS; ++writer)
        writers.push_back(std::make_unique<Child>([&](Child::Side&) { work(writer); }));
    return writers;
}

template <class Work>
void runWriters(Work work)
{
    for (const auto& writer : startWriters(work))
        EXPECT_EQ(writer->wait(), 0);
}

class FileWriters : public testing::Test {
protected:
    // A file in memory is flushed at once: this tests the order, not the disk.
    const ScopedVariable m_folder {"TMPDIR", "/dev/shm"};
    const Scratch m_scratch;
    const String m_path {m_scratch.full("file").c_str()};
};

/// How the writers of one file differ. Their semaphores are different ones then.
enum class Apart { IN_NOTHING, BY_SPELLING, BY_USER };

class ManyWriters : public FileWriters, public testing::WithParamInterface<std::pair<unsigned, Apart>> { };

TEST_P(ManyWriters, KeepEachRecordWholeAndLoseNone)
{
    constexpr std::size_t LONGEST = 20'000;
    const auto [mode, apart] = GetParam();
    const OtherUser other;
    if (apart == Apart::BY_USER && !other.isPossible())
        GTEST_SKIP() << "needs the right to become another user";
    std::filesystem::permissions(m_scratch.getPath(), std::filesystem::perms(0755));
    put(m_scratch / "file", "");
    std::filesystem::permissions(m_scratch / "file", std::filesystem::perms(0666));
    const String spelled((m_scratch.full() + u"\\.\\file").c_str());
    runWriters([&, mode = mode, apart = apart](int writer) {
        const bool isOdd = writer % 2 != 0;
        if (isOdd && apart == Apart::BY_USER)
            other.become();
        writeRecords(isOdd && apart == Apart::BY_SPELLING ? spelled : m_path, mode, writer, RECORDS, LONGEST);
    });
    EXPECT_EQ(countRecords(m_scratch / "file"), std::vector<int>(WRITERS, RECORDS));
}

INSTANTIATE_TEST_SUITE_P(FileOutputStream, ManyWriters,
    testing::Values(std::pair(APPEND, Apart::IN_NOTHING), std::pair(APPEND | LOCK, Apart::BY_SPELLING),
        std::pair(APPEND, Apart::BY_USER), std::pair(APPEND | KEEPCLOSED, Apart::BY_SPELLING)));

TEST_F(FileWriters, KeepLogEntriesWholeThatAreLargerThanEveryBuffer)
{
    constexpr int ENTRIES = 20;
    runWriters([&](int writer) {
        const Reference<io::EntryStream> file(new io::EntryStream(new FileOutputStream(m_path, APPEND), false));
        const Reference<io::Writer> text(new io::OutputStreamWriter(file.get(), u"UTF-8", 256));
        const Reference<log::ILogProcessor> log = log::BasicLogWriter::create(text.get());
        for (int sequence = 0; sequence < ENTRIES; ++sequence) {
            const Reference<log::LogEntry> entry = log::LogEntry::create();
            entry->setField(
                u"text", new String(recordOf(writer, sequence, 5'000 * static_cast<std::size_t>(sequence))));
            log->process(entry.get());
        }
    });
    EXPECT_EQ(countRecords(m_scratch / "file", "text=", '\n' + std::string(25, '-') + '\n'),
        std::vector<int>(WRITERS, ENTRIES));
}

class KilledWriters : public FileWriters, public testing::WithParamInterface<unsigned> { };

TEST_P(KilledWriters, GoOnWhenTwoAreKilled)
{
    constexpr int COUNT = RECORDS / 10;
    constexpr std::size_t LONGEST = 500'000;
    Random random;
    const auto writers = startWriters([&](int writer) {
        writeRecords(
            m_path, GetParam(), writer, writer < 2 ? INT_MAX : COUNT, LONGEST); // two write until they are killed
    });
    for (std::size_t victim = 0; victim < 2; ++victim) {
        spin(random() % 50'000);
        writers[victim]->kill();
    }
    for (std::size_t writer = 0; writer < writers.size(); ++writer)
        EXPECT_EQ(writers[writer]->wait(), writer < 2 ? -SIGKILL : 0);
    FileOutputStream last(m_path, GetParam());
    last.write("", 0); // a killed writer may have been the last one
    const std::vector<int> counts = countRecords(m_scratch / "file");
    EXPECT_EQ(std::vector<int>(counts.begin() + 2, counts.end()), std::vector<int>(WRITERS - 2, COUNT));
}

INSTANTIATE_TEST_SUITE_P(FileOutputStream, KilledWriters, testing::Values(APPEND, LOCK | KEEPCLOSED | ATEND));

constexpr int ROUNDS = 20, BATCH = 10;

std::string entryOfOthers(int sequence, std::size_t length)
{
    std::string entry = '[' + std::to_string(sequence) + ']';
    entry.resize(length - 1, 'o');
    return entry + '\n';
}

/// Appends like any other program, without the semaphore, and confirms each entry.
void appendWithoutSemaphore(const std::filesystem::path& path, std::size_t length, Child::Side& side)
{
    const int file = ::open(path.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
    for (int round = 0; round < ROUNDS; ++round) {
        side.hear();
        for (int i = 0; i < BATCH; ++i) {
            const std::string entry = entryOfOthers(round * BATCH + i, length);
            EXPECT_EQ(::write(file, entry.data(), entry.size()), static_cast<ssize_t>(entry.size()));
        }
        side.tell('w');
    }
}

class OtherPrograms : public FileWriters, public testing::WithParamInterface<std::size_t> { };

TEST_P(OtherPrograms, LoseNothingByTheRepairAfterAKill)
{
    put(m_scratch / "file", "");
    Child others([&](Child::Side& side) { appendWithoutSemaphore(m_scratch / "file", GetParam(), side); });
    Random random;
    for (int round = 0; round < ROUNDS; ++round) {
        Child victim([&](Child::Side& side) {
            FileOutputStream stream(m_path, APPEND);
            const std::string entry = std::string(1'000'000, 'v') + '\n';
            side.tell('o');
            for (;;)
                stream.write(entry.data(), static_cast<std::int32_t>(entry.size()));
        });
        EXPECT_EQ(victim.hear(), 'o');
        const bool isBesideVictim = random() % 2 == 0; // or during the repair
        if (isBesideVictim)
            others.tell('g');
        spin(random() % 300);
        victim.kill();
        if (!isBesideVictim)
            others.tell('g');
        FileOutputStream stream(m_path, APPEND);
        stream.write("next\n", 5);
        victim.wait();
        EXPECT_EQ(others.hear(), 'w');
    }
    EXPECT_EQ(others.wait(), 0);
    const std::string found = contentOf(m_scratch / "file");
    std::size_t place = 0;
    for (int i = 0; i < ROUNDS * BATCH; ++i) {
        const std::size_t next = found.find(entryOfOthers(i, GetParam()), place);
        EXPECT_NE(next, found.npos) << "acknowledged, and lost: " << i;
        place = next != found.npos ? next : place;
    }
}

INSTANTIATE_TEST_SUITE_P(FileOutputStream, OtherPrograms, testing::Values(400, 400'000));

TEST_F(FileWriters, MayBeThreadsOfOneStream)
{
    for (const unsigned mode : {APPEND, APPEND | KEEPCLOSED}) {
        const std::string name = std::to_string(mode);
        FileOutputStream stream(String(m_scratch.full(name.c_str()).c_str()), mode);
        inThreads(WRITERS, [&stream](int writer) {
            for (int sequence = 0; sequence < 50; ++sequence) {
                const std::string record = recordOf(writer, sequence, 20);
                stream.write(record.data(), static_cast<std::int32_t>(record.size()));
                EXPECT_GT(stream.getSize(), 0);
            }
        });
        EXPECT_EQ(countRecords(m_scratch / name.c_str()), std::vector<int>(WRITERS, 50));
    }
}

} // namespace
