#include "vxsys/Named.h"

#include "Scratch.h"
#include "tests/Random.h"
#include "tests/Threads.h"
#include "tests/Told.h"
#include "vxsys/Result.h"
#include "vxsys/detail/ObjectName.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <sched.h>
#include <set>
#include <string>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

namespace {

/// Called once, before the library next maps the file of a named object.
std::function<void()> g_beforeMapping;

} // namespace

extern "C" [[gnu::visibility("default")]] void* mmap(
    void* address, std::size_t length, int protection, int flags, int file, off_t start) noexcept
{
    if (file >= 0 && (flags & MAP_SHARED) != 0 && g_beforeMapping != nullptr)
        std::exchange(g_beforeMapping, nullptr)();
    return reinterpret_cast<void*>(::syscall(SYS_mmap, address, length, protection, flags, file, start));
}

namespace {

using namespace std::literals;
using namespace vxsys::results;
using Clock = std::chrono::steady_clock;

/// A name that no other test uses, in this run or another at the same time.
std::string ownName(const char* purpose)
{
    return "test-"s + purpose + '-' + std::to_string(::getpid());
}

std::string folderOf(uid_t user)
{
    struct stat status { };
    EXPECT_EQ(::stat("/proc/self/ns/pid", &status), 0);
    return "/dev/shm/vxsys4-" + std::to_string(user) + '-' + std::to_string(status.st_ino);
}

bool hasFile(const std::string& name)
{
    return std::filesystem::exists(folderOf(::geteuid()) + "/s-" + name)
        || std::filesystem::exists(folderOf(::geteuid()) + "/m-" + name);
}

class Named : NotCopied {
public:
    Named(const std::string& name, std::uint32_t value)
    {
        EXPECT_EQ(VXNamedSemOpen(name.c_str(), value, &m_handle), 0);
    }
    ~Named() { EXPECT_EQ(VXNamedSemClose(m_handle), 0); }

    void wait() const { EXPECT_EQ(VXSemaphoreWait(m_handle), 0); }
    bool tryWait() const { return VXSemaphoreTryWait(m_handle) == 0; }
    void post() const { EXPECT_EQ(VXSemaphorePost(m_handle), 0); }
    std::int32_t value() const
    {
        std::int32_t value = -1;
        EXPECT_EQ(VXSemaphoreGetValue(m_handle, &value), 0);
        return value;
    }
    /// Reads the value until it is `wanted`, for at most a second.
    std::int32_t valueSoon(std::int32_t wanted) const
    {
        const auto end = Clock::now() + 1s;
        while (value() != wanted && Clock::now() < end)
            std::this_thread::yield();
        return value();
    }

    VXHandle m_handle = nullptr;
};

class Memory : NotCopied {
public:
    Memory(const std::string& name, std::uint32_t size, std::uint32_t flags = VX_SHARED_MEMORY_CREATE)
    {
        EXPECT_EQ(VXSharedMemOpen(name.c_str(), VX_FILE_READ | VX_FILE_WRITE, flags, size, &m_handle), 0);
        EXPECT_EQ(VXSharedMemAttach(m_handle, VX_FILE_READ | VX_FILE_WRITE, &m_address), 0);
    }
    ~Memory()
    {
        EXPECT_EQ(VXSharedMemDetach(m_address), 0);
        EXPECT_EQ(VXSharedMemClose(m_handle), 0);
    }

    template <class T>
    T* as() const
    {
        return static_cast<T*>(m_address);
    }

    std::uint32_t m_handle = 0;
    void* m_address = nullptr;
};

TEST(NamedSemaphore, ComesBackFromAProcessThatDies)
{
    struct {
        const char* name;
        std::uint32_t value;
        int taken, posted, left; // after its end
        bool isWaitedFor;
    } cases[] = {{"a lock", 1, 1, 0, 1, true}, {"a zombie", 1, 1, 0, 1, false}, {"one of three", 3, 1, 0, 3, false},
        {"all of three", 3, 3, 1, 3, true}, {"signals belong to no process", 0, 0, 2, 2, true},
        {"a signal after a lock", 2, 1, 4, 5, true}};
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        const Named here(ownName("death"), row.value);
        HoldingChild holder([&] {
            for (int i = 0; i < row.taken; ++i)
                here.wait();
            for (int i = 0; i < row.posted; ++i)
                here.post();
        });
        std::optional<Doing> waiter;
        if (here.value() == 0) {
            waiter.emplace([&] { here.wait(); }).awaitWaiting();
            {
                const Named other(ownName("death"), 1);
            }
            EXPECT_EQ(VXNamedSemClose(here.m_handle), code(0x800700AA)) << "a thread waits";
        }
        const auto killed = Clock::now();
        holder.kill();
        if (row.isWaitedFor) {
            EXPECT_EQ(holder.wait(), -SIGKILL);
        }
        if (waiter) {
            waiter.reset();
            EXPECT_LT(Clock::now() - killed, 1s);
            here.post();
        }
        EXPECT_EQ(here.valueSoon(row.left), row.left);
        for (int i = 0; i < row.left; ++i)
            EXPECT_TRUE(here.tryWait()) << row.name;
        EXPECT_EQ(VXSemaphoreTryWait(here.m_handle), RESULT_TIMED_OUT) << row.name;
    }
}

TEST(NamedObjects, StartAfreshWhenAllHaveGone)
{
    const std::string name = ownName("fresh");
    for (const std::string_view way : {"closed", "left open", "killed", "another program"}) {
        SCOPED_TRACE(way);
        Child only([&](Child::Side& side) {
            {
                const Named semaphore(name, 5U);
                const Memory memory(name, 100);
                semaphore.wait();
                std::memset(memory.m_address, 'x', 100);
                if (way == "left open")
                    ::_exit(0);
                if (way == "another program")
                    ::execl("/bin/sleep", "sleep", "1000", nullptr);
                if (way == "killed")
                    ::raise(SIGKILL);
            }
            side.tell('c');
            side.hear();
        });
        EXPECT_EQ(only.hear(), way == "closed" ? 'c' : '\0') << "all is closed";
        if (way != "closed" && way != "another program")
            only.wait();
        {
            const Named next(name, 7);
            const Memory memory(name, 200);
            EXPECT_EQ((Told {next.value(), std::count(memory.as<char>(), memory.as<char>() + 200, '\0')}), "7 200");
        }
        EXPECT_FALSE(hasFile(name));
    }
}

TEST(NamedSemaphore, IsAnotherOneInAnotherNamespaceOfProcesses)
{
    const std::string name = ownName("elsewhere");
    const Named here(name, 1);
    Child other([&](Child::Side& side) {
        here.wait();
        const bool mayLeave = ::unshare(CLONE_NEWPID) == 0;
        if (mayLeave) {
            Child elsewhere([&](Child::Side&) {
                EXPECT_EQ(here.value(), 1);
                std::this_thread::sleep_for(200ms); // then it looks for processes that have ended
                EXPECT_TRUE(here.tryWait());
                EXPECT_EQ(VXNamedSemClose(here.m_handle), 0);
                EXPECT_TRUE(std::filesystem::remove(folderOf(::geteuid())));
            });
            EXPECT_EQ(elsewhere.wait(), 0);
        }
        side.tell(mayLeave ? 'y' : 'n');
        side.hear();
    });
    if (other.hear() == 'n')
        GTEST_SKIP() << "needs the right to make a namespace";
    EXPECT_EQ(here.value(), 0);
    other.kill();
    EXPECT_EQ(here.valueSoon(1), 1);
}

TEST(ObjectName, GivesEachNameAFileNameOfItsOwnThatStaysInItsFolder)
{
    // Each with its file name; an empty one is only checked for what holds for all
    const std::pair<std::string, std::string> cases[] = {{"", "k-"}, {"..", "k-.."}, {"a/../../b", "k-a%2F..%2F..%2Fb"},
        {"\\", "k-%5C"}, {"X x%20", "k-X%20x%2520"}, {"x x ", "k-x%20x%20"}, {"\n\x7F\xC3\xA4~", "k-%0A%7F%C3%A4%7E"},
        {std::string(248, 'a'), "k-" + std::string(248, 'a')}, {std::string(249, 'a'), ""},
        {std::string(5000, 'a'), ""}, {std::string(4999, 'a') + 'b', ""}};
    std::set<std::string> files;
    for (const auto& [name, wanted] : cases) {
        const std::string file = vxsys::detail::ObjectName('k', name).get();
        EXPECT_TRUE(wanted.empty() || file == wanted) << file;
        EXPECT_LT(file.size(), 256U);
        EXPECT_EQ(file.find('/'), file.npos);
        EXPECT_TRUE(files.insert(file).second) << file;
    }
    for (const std::size_t length : {119U, 120U, 127U, 128U, 183U, 184U}) { // around the block sizes of SHA-256
        const std::string command
            = "head -c " + std::to_string(length) + " /dev/zero | tr '\\0' '\\1' | sha256sum | tr a-f A-F";
        std::FILE* const oracle = ::popen(command.c_str(), "r");
        char digest[65] = "";
        ASSERT_EQ(std::fscanf(oracle, "%64s", digest), 1);
        ASSERT_EQ(::pclose(oracle), 0);
        const std::string file = vxsys::detail::ObjectName('k', std::string(length, '\x01')).get();
        EXPECT_TRUE(file.ends_with("~"s + digest)) << length;
    }
}

TEST(NamedSemaphore, ServesMoreProcessesThanItsFirstPageHasRoomFor)
{
    constexpr int COUNT = 125;
    const Named here(ownName("many"), 2 * COUNT);
    std::list<HoldingChild> children;
    for (int i = 0; i < COUNT; ++i)
        children.emplace_back([&] { here.wait(); });
    EXPECT_EQ(here.value(), COUNT);
    children.clear();
    EXPECT_EQ(here.valueSoon(2 * COUNT), 2 * COUNT);
}

TEST(NamedSemaphore, IsOpenedWhileChildrenOfAnotherProcessMakeItsFileLarger)
{
    constexpr int COUNT = 125;
    const std::string name = ownName("growing");
    Child other([&](Child::Side& side) {
        const Named there(name, 1);
        side.tell('o');
        side.hear();
        for (int i = 0; i < COUNT; ++i) {
            if (::fork() == 0) {
                side.hear();
                ::_exit(0);
            }
        }
        side.tell('f');
        side.hear();
    });
    EXPECT_EQ(other.hear(), 'o');
    g_beforeMapping = [&] {
        other.tell('g');
        EXPECT_EQ(other.hear(), 'f');
    };
    const Named here(name, 1);
    EXPECT_EQ(g_beforeMapping, nullptr);
    EXPECT_EQ(here.value(), 1);
}

TEST(NamedObjects, MeetInAnotherFolderWhereTheFirstNameIsTaken)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "needs the right to become another user";
    constexpr int COUNT = 6;
    const uid_t user = 1'000'000'000 + static_cast<uid_t>(::getpid()); // that no process has
    const std::string folder = folderOf(user);
    const auto removeAll = [&] {
        for (const auto& entry : std::filesystem::directory_iterator("/dev/shm")) {
            if (entry.path().string().starts_with(folder))
                std::filesystem::remove_all(entry.path());
        }
    };
    for (const std::string_view trap : {"none", "another user's", "open to others", "a link"}) {
        SCOPED_TRACE(trap);
        if (trap == "a link") {
            EXPECT_EQ(::symlink("/tmp", folder.c_str()), 0);
        } else if (trap != "none") {
            EXPECT_EQ(::mkdir(folder.c_str(), 0700), 0);
        }
        if (trap == "open to others") {
            EXPECT_TRUE(::chown(folder.c_str(), user, user) == 0 && ::chmod(folder.c_str(), 0770) == 0);
        }
        std::list<Child> openers; // all open an object at the same moment that none has opened before
        for (int i = 0; i < COUNT; ++i) {
            openers.emplace_back([&](Child::Side& side) {
                ScopedVariable("XDG_RUNTIME_DIR", i % 2 == 0 ? "/nowhere" : nullptr);
                ASSERT_EQ(::setuid(user), 0);
                side.tell('r');
                side.hear();
                const Named shared("x", COUNT);
                shared.wait();
                side.tell('t');
                side.hear();
            });
        }
        for (const Child& opener : openers)
            EXPECT_EQ(opener.hear(), 'r');
        for (const Child& opener : openers)
            opener.tell('g');
        for (const Child& opener : openers)
            EXPECT_EQ(opener.hear(), 't');
        if (trap != "none")
            std::filesystem::remove_all(folder); // now the first name is free, but the others use another folder
        Child last([&](Child::Side&) {
            ASSERT_EQ(::setuid(user), 0);
            EXPECT_EQ(Named("x", COUNT).value(), 0);
        });
        EXPECT_EQ(last.wait(), 0);
        openers.clear();
        removeAll();
    }
}

TEST(NamedObjects, AreClearedByTheNextOpenOfAnyNameWhenTheirUsersWereKilled)
{
    const Named first(ownName("first"), 1); // this process has opened one before
    const std::string names[] = {ownName("killed-1"), ownName("killed-2"), ownName("killed-3")};
    std::list<HoldingChild> holders;
    for (const std::string& name : names) {
        holders.emplace_back([&] {
            new Named(name, 1); // never closed
            new Memory(name, 100);
        });
    }
    holders.clear();
    for (const std::string& name : names)
        EXPECT_TRUE(hasFile(name)) << name;
    const Named next(ownName("next"), 1);
    for (const std::string& name : names)
        EXPECT_FALSE(hasFile(name)) << name;
}

TEST(NamedSemaphore, LeavesNothingBehindWhenThereIsNoRoom)
{
    const auto before = openDescriptors();
    const std::string name = ownName("full");
    VXHandle handle = nullptr;
    for (const rlim_t room : {0, 1000}) {
        const SizeLimit limit(room);
        std::signal(SIGXFSZ, SIG_DFL); // this would end the process
        EXPECT_EQ(VXNamedSemOpen(name.c_str(), 1, &handle), code(0x800700DF));
    }
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_FALSE(hasFile(name));
}

TEST(NamedSemaphore, KeepsProcessesApartThatAreKilledAtAnyMoment)
{
    constexpr int WORKERS = 3, KILLS = 25;
    constexpr int ROUNDS = 200; // for each worker that is not killed
    Random random;
    const std::string name = ownName("storm");
    const Memory memory(ownName("storm state"), sizeof(pid_t));
    auto& inside = *memory.as<std::atomic<pid_t>>();
    const auto work = [&](Child::Side&) {
        for (int round = 0; round < ROUNDS; ++round) {
            const Named lock(name, 1); // opened each time, so that most rounds are the last or the first of a process
            lock.wait();
            const pid_t other = inside.exchange(::getpid());
            const char state = stateOfProcess(other);
            EXPECT_TRUE(other == 0 || other == ::getpid() || state == '\0' || state == 'Z') << "two inside";
            inside = 0;
            if (round % 2 == 0)
                lock.post();
        }
    };
    std::vector<std::unique_ptr<Child>> workers;
    for (int i = 0; i < WORKERS; ++i)
        workers.push_back(std::make_unique<Child>(work));
    for (int i = 0; i < KILLS; ++i) {
        auto& victim = workers[random() % WORKERS];
        spin(random() % 5000);
        victim->kill();
        const int ended = victim->wait();
        EXPECT_TRUE(ended == -SIGKILL || ended == 0) << ended;
        victim = std::make_unique<Child>(work);
    }
    for (auto& worker : workers)
        EXPECT_EQ(worker->wait(), 0);
    const Named last(name, 1);
    EXPECT_EQ(last.value(), 1);
}

TEST(SharedMemory, OpensWhatTheFlagsSay)
{
    constexpr std::uint32_t BOTH = VX_FILE_READ | VX_FILE_WRITE, CREATE = VX_SHARED_MEMORY_CREATE;
    constexpr std::uint32_t EXCLUSIVE = CREATE | VX_SHARED_MEMORY_EXCLUSIVE;
    // Whether it exists, with 100 bytes; the requested access, flags and size; the result
    const std::tuple<bool, std::uint32_t, std::uint32_t, std::uint32_t, std::int32_t> cases[]
        = {{false, BOTH, CREATE, 10, 0}, {false, BOTH, 0, 10, RESULT_NOT_FOUND},
            {false, BOTH, CREATE, 0, RESULT_INVALID_ARGUMENT}, {false, BOTH, EXCLUSIVE, 10, 0}, {true, BOTH, 0, 0, 0},
            {true, VX_FILE_READ, CREATE, 100, 0}, {true, BOTH, CREATE, 101, RESULT_INVALID_ARGUMENT},
            {true, BOTH, EXCLUSIVE, 100, RESULT_ALREADY_EXISTS}, {true, 0, CREATE, 100, RESULT_INVALID_ARGUMENT}};
    const std::string name = ownName("memory");
    const auto descriptors = openDescriptors();
    for (const auto& [isThere, access, flags, size, result] : cases) {
        std::optional<Memory> there;
        if (isThere)
            there.emplace(name, 100);
        std::uint32_t handle = 0;
        EXPECT_EQ(VXSharedMemOpen(name.c_str(), access, flags, size, &handle), result)
            << isThere << flags << ' ' << size;
        EXPECT_EQ(handle == VX_FILE_INVALID_HANDLE, failed(result));
        EXPECT_EQ(VXSharedMemClose(handle), failed(result) ? RESULT_INVALID_HANDLE : 0);
    }
    EXPECT_FALSE(hasFile(name));
    EXPECT_EQ(openDescriptors(), descriptors);
}

} // namespace
