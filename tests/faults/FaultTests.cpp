// Runs each family of operations again and again, each time with a later allocation or system call that fails.
#include "tests/AllocationProbe.h"
#include "tests/faults/Families.h"
#include "tests/faults/SystemCalls.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <numeric>
#include <set>
#include <thread>
#include <typeinfo>
#include <utility>

namespace {

struct Fault {
    const char* name;
    SystemCall call; ///< CALL_NONE: an allocation
    int error;
    enum Kind { ONCE, FROM_THEN_ON, SIGNAL, SHORT, SHORT_THEN_FAILING } kind = ONCE;

    bool isHarmless() const { return kind == SHORT || kind == SIGNAL; }
};

const Fault FAULTS[] = {{"no memory", CALL_NONE, ENOMEM}, {"open: denied", CALL_OPEN, EACCES},
    {"open: not supported", CALL_OPEN, EOPNOTSUPP}, {"open: no descriptor", CALL_OPEN, EMFILE, Fault::FROM_THEN_ON},
    {"open: signal", CALL_OPEN, EINTR, Fault::SIGNAL}, {"make: no descriptor", CALL_MAKE, EMFILE},
    {"read: error", CALL_READ, EIO}, {"read: error, stays", CALL_READ, EIO, Fault::FROM_THEN_ON},
    {"read: signal", CALL_READ, EINTR, Fault::SIGNAL}, {"read: short", CALL_READ, 0, Fault::SHORT},
    {"write: error", CALL_WRITE, EIO}, {"write: full", CALL_WRITE, ENOSPC, Fault::FROM_THEN_ON},
    {"write: signal", CALL_WRITE, EINTR, Fault::SIGNAL}, {"write: short", CALL_WRITE, 0, Fault::SHORT},
    {"write: short, then full", CALL_WRITE, ENOSPC, Fault::SHORT_THEN_FAILING}, {"flush: error", CALL_FLUSH, EIO},
    {"flush: signal", CALL_FLUSH, EINTR, Fault::SIGNAL}, {"name: denied", CALL_NAME, EACCES},
    {"name: taken", CALL_NAME, EEXIST}, {"size: full", CALL_SIZE, ENOSPC},
    {"size: signal", CALL_SIZE, EINTR, Fault::SIGNAL}, {"status: error", CALL_STATUS, EIO},
    {"lock: none left", CALL_LOCK, ENOLCK}, {"lock: signal", CALL_LOCK, EINTR, Fault::SIGNAL},
    {"map: no memory", CALL_MAP, ENOMEM}, {"close: error", CALL_CLOSE, EIO},
    {"close: signal", CALL_CLOSE, EINTR, Fault::SIGNAL}, {"start: none left", CALL_START, EAGAIN},
    {"socket: none left", CALL_SOCKET, ENOBUFS}, {"socket set-up: none left", CALL_SOCKET_SETUP, ENOBUFS},
    {"socket: signal", CALL_SOCKET, EINTR, Fault::SIGNAL}, {"load: not found", CALL_LOAD, ENOENT}};

/// Lets the `first` call of a kind fail, counted from the beginning of the block.
class Armed : NotCopied {
public:
    Armed(const Fault& fault, int first)
        : m_isOfMemory(fault.call == CALL_NONE)
    {
        if (m_isOfMemory)
            AllocationProbe::failOnAnyThread(first);
        else
            setFault(fault.call, first, fault.error, fault.kind >= Fault::SHORT,
                fault.kind == Fault::FROM_THEN_ON || fault.kind == Fault::SHORT_THEN_FAILING);
    }
    ~Armed()
    {
        AllocationProbe::failOnAnyThread(0);
        setFault(CALL_NONE, 1, 0, 0, 0);
    }

    bool hasStruck() const { return m_isOfMemory ? AllocationProbe::hasFailedOnAnyThread() : hasFailed() != 0; }

private:
    const bool m_isOfMemory;
};

/// The names and contents of all files in the folder, in order. A registry counts its changes, failed ones too.
std::string listing(const std::filesystem::path& folder, bool withHidden)
{
    namespace fs = std::filesystem;
    std::set<std::string> entries;
    for (fs::recursive_directory_iterator entry(folder), end; entry != end; ++entry) {
        const std::string name = entry->path().lexically_relative(folder).string();
        if (name.front() == '.' && !withHidden)
            entry.disable_recursion_pending();
        else if (entry->path().filename() != "changes")
            entries.insert(name + (entry->is_regular_file() ? '=' + contentOf(entry->path()) : "/") + '\n');
    }
    return std::accumulate(entries.begin(), entries.end(), std::string());
}

/// An operation in a folder made for it.
class Attempt {
public:
    explicit Attempt(const Family& family)
        : m_operation(family.prepare(m_place))
    {
    }

    std::string state() const { return m_operation.look() + '\n' + listing(m_place.getPath(), false); }
    std::string files() const { return listing(m_place.getPath(), true); }
    /// The text of the failure, empty for success.
    std::string run() const
    {
        try {
            m_operation.run();
            return "";
        } catch (const vx::Exception& failure) {
            return std::string(typeid(failure).name()) + ' ' + failure.getDescription().toUtf8() + ' '
                + std::to_string(failure.getResult());
        } catch (const std::bad_alloc&) {
            return "no memory";
        }
    }

private:
    const Scratch m_place;
    const Operation m_operation;
};

std::ptrdiff_t threads()
{
    const std::filesystem::directory_iterator entries("/proc/self/task");
    return std::distance(begin(entries), end(entries));
}

/// What the process uses after its other threads have ended: allocations and descriptors.
std::pair<long, std::ptrdiff_t> held()
{
    static std::ptrdiff_t s_own = (std::thread([] {}).join(), threads()); // of a sanitizer
    s_own = std::min(s_own, threads()); // the system may still show the one that has just ended
    while (threads() > s_own)
        std::this_thread::yield();
    return {AllocationProbe::live(), openDescriptors()};
}

bool isAllowed(After after, const std::string& seen, const std::string& before, const std::string& expected)
{
    const auto withoutEnd = std::string_view(seen).substr(0, seen.find_last_not_of('\n') + 1);
    return after == After::ANYTHING || seen == before || seen == expected
        || (after == After::PART && expected.starts_with(withoutEnd));
}

class Faults : public testing::TestWithParam<Family> {
protected:
    void SetUp() override
    {
        held();
        for (int warm = 0; warm < 2; ++warm) { // caches are filled
            const Attempt attempt(m_family);
            ASSERT_EQ(attempt.run(), "");
            m_expected = attempt.state();
            m_expectedFiles = attempt.files();
        }
    }

    /// False if the operation makes fewer calls.
    bool strike(const Fault& fault, int first)
    {
        const Attempt attempt(m_family);
        const std::string before = attempt.state();
        std::string failure;
        {
            const Armed armed(fault, first);
            failure = attempt.run();
            if (!armed.hasStruck())
                return false;
        }
        const std::string seen = attempt.state();
        if (failure.empty()) {
            EXPECT_EQ(seen, m_expected) << "told as a success";
            return true;
        }
        EXPECT_FALSE(fault.isHarmless()) << failure;
        EXPECT_PRED4(isAllowed, m_family.after, seen, before, m_expected) << failure;
        if (seen != m_expected) {
            EXPECT_EQ(attempt.run(), "") << "again, after " << failure;
        }
        if (m_family.after == After::OLD_STATE && seen == before) {
            EXPECT_EQ(attempt.state(), m_expected) << "again, after " << failure;
            EXPECT_EQ(attempt.files(), m_expectedFiles) << "again, after " << failure;
        }
        return true;
    }

    const Family& m_family = GetParam();
    std::string m_expected;
    std::string m_expectedFiles;
};

TEST_P(Faults, AreFailuresThatHarmNothing)
{
    for (const Fault& fault : FAULTS) {
        bool strikes = true;
        for (int first = 1; strikes && first < 2000 && !HasFailure(); ++first) {
            SCOPED_TRACE(std::string(fault.name) + ", call " + std::to_string(first));
            const auto before = held();
            strikes = strike(fault, first);
            // A leak grows with each strike. A cache grows once, or its size goes up and down.
            const auto again = held();
            bool grows = again != before && strikes;
            for (int more = 0; grows && more < 4 && !HasFailure(); ++more) {
                strike(fault, first);
                const auto now = held();
                grows = now.first > again.first || now.second > again.second;
            }
            EXPECT_FALSE(grows) << "memory or descriptors leak";
        }
    }
}

std::vector<Family> allFamilies()
{
    std::vector<Family> all;
    for (auto part : {memoryFamilies(), fileFamilies(), systemFamilies()})
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

INSTANTIATE_TEST_SUITE_P(Of, Faults, testing::ValuesIn(allFamilies()), [](const auto& row) { return row.param.name; });

} // namespace
