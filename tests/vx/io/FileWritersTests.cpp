#include "tests/Random.h"
#include "tests/Threads.h"
#include "tests/vxsys/Child.h"
#include "tests/vxsys/Scratch.h"
#include "vx/io/EntryStream.h"
#include "vx/io/FileOutputStream.h"
#include "vx/io/RotatingFileStream.h"

#include <gtest/gtest.h>

#include <atomic>
#include <fcntl.h>
#include <fstream>
#include <functional>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <sys/mman.h>
#include <vector>

namespace {

using namespace vx;
using io::FileOutputStream;

constexpr unsigned ATEND = FileOutputStream::ATEND, APPEND = FileOutputStream::APPEND,
                   KEEPCLOSED = FileOutputStream::KEEPCLOSED, LOCK = FileOutputStream::LOCK;

constexpr int WRITERS = 8, KILLS = 30, RECORDS = RECORDS_OF_A_WRITER;

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

void write(io::OutputStream& stream, const std::string& text)
{
    stream.write(text.data(), static_cast<std::int32_t>(text.size()));
}

/// Expects complete records of each writer in their order. Returns how many there are of each writer.
std::vector<int> countRecords(const std::string& content)
{
    std::vector<int> counts(WRITERS + KILLS, 0);
    for (std::size_t place = 0; place < content.size();) {
        std::size_t writer = counts.size(), sequence = 0, length = 0;
        std::istringstream(content.substr(place, 40)) >> writer >> sequence >> length;
        std::string record;
        if (writer < counts.size() && length < content.size())
            record = recordOf(static_cast<int>(writer), counts[writer]++, length);
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

class FileWriters : public testing::Test {
protected:
    // A file in memory is flushed at once: this tests the order, not the disk.
    const ScopedVariable m_folder {"TMPDIR", "/dev/shm"};
    const Scratch m_scratch;
    const String m_path {m_scratch.full("file").c_str()};
};

/// How the writers of one file differ. Their semaphores are different ones then.
enum class Apart { IN_NOTHING, BY_SPELLING, BY_USER };

struct Case {
    unsigned mode; ///< of the stream, or ROTATING, or ENTRIES
    Apart apart;
    bool isKilled; ///< some writers are, and others take their places
    std::size_t longest; ///< filling of a record
};
constexpr unsigned ROTATING = ~0U, ENTRIES = ~1U, LIMIT = 100'000;

/// Each write is one entry.
class Entries : public io::EntryStream {
public:
    explicit Entries(const String& path)
        : EntryStream(new FileOutputStream(path, APPEND), false)
    {
    }

    // OutputStream
    using OutputStream::write;
    void write(const signed char* bytes, std::int32_t length) override
    {
        EntryStream::write(bytes, length);
        flush();
    }
};

/// What processes tell each other.
struct Shared {
    std::atomic<bool> isEnd;
    std::atomic<int> acknowledged[WRITERS + KILLS]; ///< records of each writer
};

class ManyWriters : public FileWriters, public testing::WithParamInterface<Case> {
protected:
    ~ManyWriters() override { ::munmap(m_memory, sizeof(Shared)); }

    static Reference<io::OutputStream> open(const String& path)
    {
        if (GetParam().mode == ROTATING)
            return new io::RotatingFileStream(path, {.mostBytes = LIMIT});
        if (GetParam().mode == ENTRIES)
            return new Entries(path);
        return new FileOutputStream(path, GetParam().mode);
    }

    std::unique_ptr<Child> start(int writer)
    {
        return std::make_unique<Child>([this, writer](Child::Side&) {
            const auto [mode, apart, isKilled, longest] = GetParam();
            const bool isOdd = writer % 2 != 0;
            if (isOdd && apart == Apart::BY_USER)
                m_other.become();
            const char* const spelled = isOdd && apart == Apart::BY_SPELLING ? ".\\file" : "file";
            const Reference<io::OutputStream> stream = open(String(m_scratch.full(spelled).c_str()));
            Random random;
            for (int sequence = 0; isKilled ? !m_shared.isEnd : sequence < RECORDS; ++sequence) {
                // Mostly short, sometimes of many pages, which the system writes in several steps.
                write(*stream, recordOf(writer, sequence, random() % (random() % 20 == 0 ? longest : 300)));
                m_shared.acknowledged[writer] = sequence + 1;
            }
        });
    }

    OtherUser m_other;
    void* const m_memory = ::mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    Shared& m_shared = *new (m_memory) Shared {};
};

TEST_P(ManyWriters, KeepEachRecordWholeAndLoseNone)
{
    if (GetParam().apart == Apart::BY_USER && !m_other.isPossible())
        GTEST_SKIP() << "needs the right to become another user";
    std::filesystem::permissions(m_scratch.getPath(), std::filesystem::perms(0755));
    put(m_scratch / "file", "");
    std::filesystem::permissions(m_scratch / "file", std::filesystem::perms(0666));
    std::vector<std::unique_ptr<Child>> writers;
    for (int writer = 0; writer < WRITERS; ++writer)
        writers.push_back(start(writer));
    Random random;
    for (int kill = 0; GetParam().isKilled && kill < KILLS; ++kill) {
        spin(random() % 20'000);
        auto& victim = writers[random() % WRITERS];
        victim->kill();
        EXPECT_EQ(victim->wait(), -SIGKILL);
        victim = start(WRITERS + kill);
    }
    m_shared.isEnd = true;
    for (const auto& writer : writers)
        EXPECT_EQ(writer->wait(), 0);
    open(m_path)->write("", 0); // the last to write may have been killed

    std::string content;
    const std::filesystem::directory_iterator folder(m_scratch.getPath());
    std::set<std::filesystem::path> files(begin(folder), end(folder));
    EXPECT_EQ(files.size() > 2, GetParam().mode == ROTATING);
    files.insert(m_scratch / "file.z"); // the newest file comes last
    files.erase(m_scratch / "file");
    std::filesystem::rename(m_scratch / "file", m_scratch / "file.z");
    for (const auto& file : files) {
        const std::string part = contentOf(file);
        EXPECT_TRUE(part.ends_with('\n') && (part.size() <= LIMIT || GetParam().mode != ROTATING)) << file;
        content += part;
    }
    const std::vector<int> found = countRecords(content);
    for (std::size_t writer = 0; writer < found.size(); ++writer) {
        const int least = m_shared.acknowledged[writer];
        EXPECT_TRUE(found[writer] == least || (GetParam().isKilled && found[writer] == least + 1)) << writer;
    }
}

INSTANTIATE_TEST_SUITE_P(FileOutputStream, ManyWriters,
    testing::Values(Case {APPEND, Apart::IN_NOTHING, false, 20'000},
        Case {APPEND | LOCK, Apart::BY_SPELLING, false, 20'000}, Case {APPEND, Apart::BY_USER, false, 20'000},
        Case {APPEND | KEEPCLOSED, Apart::BY_SPELLING, false, 20'000}, Case {APPEND, Apart::IN_NOTHING, true, 500'000},
        Case {LOCK | KEEPCLOSED | ATEND, Apart::IN_NOTHING, true, 500'000},
        Case {ROTATING, Apart::IN_NOTHING, true, 30'000}, Case {ENTRIES, Apart::BY_SPELLING, false, 500'000},
        Case {ENTRIES, Apart::IN_NOTHING, true, 500'000}));

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
                write(stream, entry);
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

TEST_F(FileWriters, BeginALineAfterWhatOtherProgramsLeft)
{
    using namespace std::string_literals;
    const struct {
        std::string found, entry, both;
    } rows[] = {
        {"torn", "entry\n", "torn\nentry\n"},
        {"whole\n", "entry\n", "whole\nentry\n"},
        {"whole\n\n", "\n", "whole\n\n\n"},
        {"no line", "entry", "no lineentry"},
        {"\0t"s, "\0e\0\n"s, "\0t\0e\0\n"s}, // UTF-16 in both orders
        {"t\0"s, "e\0\n\0"s, "t\0e\0\n\0"s},
    };
    const std::function<Reference<io::OutputStream>()> kinds[] = {
        [&] { return new io::RotatingFileStream(m_path, {}); },
        [&] { return new io::EntryStream(new FileOutputStream(m_path, APPEND), false); },
        [&] { return new io::EntryStream(new FileOutputStream(m_path, APPEND | KEEPCLOSED), false); },
        [&] { return new FileOutputStream(m_path, APPEND); },
    };
    for (const auto& row : rows) {
        // Clang 14 does not let lambdas capture structured bindings.
        const std::string &found = row.found, &entry = row.entry, &both = row.both;
        for (const auto& open : kinds) {
            const bool isPlain = &open == &kinds[3];
            put(m_scratch / "file", found);
            const Reference<io::OutputStream> stream = open();
            const auto append = [&] {
                write(*stream, entry);
                stream->flush();
                return contentOf(m_scratch / "file");
            };
            const std::string first = append();
            EXPECT_EQ(first, isPlain ? found + entry : both);
            EXPECT_EQ(append(), first + entry);
            std::ofstream(m_scratch / "file", std::ios::app) << found;
            EXPECT_EQ(append(), first + entry + (isPlain ? found + entry : both));
            put(m_scratch / "file", found);
            EXPECT_EQ(append(), isPlain ? found + entry : both) << "of a file that was made empty";
            std::filesystem::remove(m_scratch / "file");
        }
    }
}

TEST_F(FileWriters, MayBeThreadsOfOneStream)
{
    for (const unsigned mode : {APPEND, APPEND | KEEPCLOSED}) {
        const std::string name = std::to_string(mode);
        FileOutputStream stream(String(m_scratch.full(name.c_str()).c_str()), mode);
        inThreads(WRITERS, [&stream](int writer) {
            for (int sequence = 0; sequence < 50; ++sequence) {
                write(stream, recordOf(writer, sequence, 20));
                EXPECT_GT(stream.getSize(), 0);
            }
        });
        std::vector<int> counts = countRecords(contentOf(m_scratch / name.c_str()));
        counts.resize(WRITERS);
        EXPECT_EQ(counts, std::vector<int>(WRITERS, 50));
    }
}

} // namespace
