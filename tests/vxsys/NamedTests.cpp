#include "vxsys/Named.h"

#include "Child.h"
#include "Scratch.h"
#include "vxsys/Result.h"
#include "vxsys/detail/ObjectName.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>
#include <vector>

namespace {

using namespace std::literals;
using namespace vxsys::results;
using Clock = std::chrono::steady_clock;

/// A name that no other test has, in this run or another at the same time.
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

bool hasFile(const std::string& name, uid_t user = ::geteuid())
{
    return std::filesystem::exists(folderOf(user) + "/s-" + name)
        || std::filesystem::exists(folderOf(user) + "/m-" + name);
}

/// A user that nobody else is.
uid_t ownUser()
{
    return 1'000'000'000 + static_cast<uid_t>(::getpid());
}

/// A handle that closes itself.
class Named {
public:
    Named(const std::string& name, std::uint32_t value)
    {
        EXPECT_EQ(VXNamedSemOpen(name.c_str(), value, &m_handle), 0);
    }
    ~Named() { close(); }
    Named(const Named&) = delete;
    Named& operator=(const Named&) = delete;

    void close()
    {
        if (m_handle != nullptr) {
            EXPECT_EQ(VXNamedSemClose(std::exchange(m_handle, nullptr)), 0);
        }
    }
    void wait() const { EXPECT_EQ(VXSemaphoreWait(m_handle), 0); }
    bool tryWait() const { return VXSemaphoreTryWait(m_handle) == 0; }
    void post() const { EXPECT_EQ(VXSemaphorePost(m_handle), 0); }
    std::int32_t value() const
    {
        std::int32_t value = -1;
        EXPECT_EQ(VXSemaphoreGetValue(m_handle, &value), 0);
        return value;
    }
    /// Looks until the value is as wanted, or a second has passed.
    std::int32_t valueSoon(std::int32_t wanted) const
    {
        const auto end = Clock::now() + 1s;
        while (value() != wanted && Clock::now() < end)
            std::this_thread::yield();
        return value();
    }

    VXHandle m_handle = nullptr;
};

TEST(NamedSemaphore, RefusesWhatItCannotServe)
{
    VXHandle handle = nullptr;
    EXPECT_EQ(VXNamedSemOpen(nullptr, 1, &handle), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(VXNamedSemOpen("x", 0x80000000U, &handle), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(VXNamedSemOpen("x", 1, nullptr), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(VXNamedSemClose(nullptr), RESULT_INVALID_ARGUMENT);

    VXHandle unnamed = nullptr;
    ASSERT_EQ(VXSemaphoreCreate(1, nullptr, 0, &unnamed), 0);
    VXNamedSemNote note {};
    EXPECT_EQ(VXNamedSemClose(unnamed), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(VXNamedSemGetNote(unnamed, &note), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(VXSemaphoreDestroy(unnamed), 0);

    const Named full(ownName("full"), 0x7FFFFFFF);
    EXPECT_EQ(VXSemaphoreDestroy(full.m_handle), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(VXSemaphorePost(full.m_handle), code(0x80070216));
    full.wait();
    full.post();
    EXPECT_EQ(full.value(), 0x7FFFFFFF);
}

TEST(NamedSemaphore, ComesBackFromAProcessThatDies)
{
    struct {
        const char* name;
        std::uint32_t value;
        int taken;
        int posted;
        std::int32_t left; // when it has died
        bool isWaitedFor;
    } cases[] = {
        {"a lock", 1, 1, 0, 1, true},
        {"a zombie", 1, 1, 0, 1, false},
        {"one of three", 3, 1, 0, 3, false},
        {"all of three", 3, 3, 1, 3, true},
        {"a signal is nobody's", 0, 0, 2, 2, true},
        {"a signal behind a lock", 2, 1, 4, 5, true},
    };
    for (const auto& row : cases) {
        const std::string name = ownName("death");
        const Named here(name, row.value);
        Child holder([&](Child::Side& side) {
            for (int i = 0; i < row.taken; ++i)
                here.wait();
            for (int i = 0; i < row.posted; ++i)
                here.post();
            side.tell('h');
            side.hear();
        });
        EXPECT_EQ(holder.hear(), 'h') << row.name;
        holder.kill();
        if (row.isWaitedFor) {
            EXPECT_EQ(holder.wait(), -SIGKILL) << row.name;
        }
        EXPECT_EQ(here.valueSoon(row.left), row.left) << row.name;
        for (int i = 0; i < row.left; ++i)
            EXPECT_TRUE(here.tryWait()) << row.name;
        EXPECT_EQ(VXSemaphoreTryWait(here.m_handle), RESULT_TIMED_OUT) << row.name;
    }
}

TEST(NamedSemaphore, LetsABlockedWaiterInWithinASecondOfAKill)
{
    const Named here(ownName("blocked"), 1);
    Child holder([&](Child::Side& side) {
        here.wait();
        side.tell('h');
        side.hear();
    });
    EXPECT_EQ(holder.hear(), 'h');
    Child waiter([&](Child::Side& side) {
        side.tell('w');
        here.wait();
        side.tell('i');
    });
    EXPECT_EQ(waiter.hear(), 'w');
    holder.kill();
    const auto killed = Clock::now();
    EXPECT_EQ(waiter.hear(), 'i');
    EXPECT_LT(Clock::now() - killed, 1s);
    EXPECT_EQ(waiter.wait(), 0);
    EXPECT_EQ(here.valueSoon(1), 1);
}

TEST(NamedSemaphore, StartsAfreshWhenAllHaveGone)
{
    const char* const ways[] = {"closed", "left open", "killed", "another program"};
    for (const std::string_view way : ways) {
        const std::string name = ownName("fresh");
        Child only([&](Child::Side& side) {
            Named semaphore(name, 5);
            semaphore.wait();
            if (way == "closed")
                semaphore.close();
            side.tell('o');
            if (way == "left open")
                ::_exit(0);
            if (way == "another program")
                ::execl("/bin/sleep", "sleep", "1000", nullptr);
            side.hear();
        });
        EXPECT_EQ(only.hear(), 'o') << way;
        if (way == "killed")
            only.kill();
        if (way == "another program") {
            EXPECT_EQ(only.hear(), '\0') << "closed on exec";
        } else if (way != "closed") {
            only.wait();
        }
        {
            const Named next(name, 7);
            EXPECT_EQ(next.value(), 7) << way;
        }
        EXPECT_FALSE(hasFile(name)) << way;
    }
}

TEST(NamedSemaphore, StaysWithTheChildWhenItsParentLeaves)
{
    const std::string name = ownName("heir");
    Child parent([&](Child::Side& side) {
        Named semaphore(name, 3);
        semaphore.wait();
        Child heir([&](Child::Side& own) {
            own.hear();
            semaphore.wait();
            own.tell('t');
            own.hear();
        });
        semaphore.close();
        heir.tell('g');
        side.tell(heir.hear());
        side.hear();
    });
    EXPECT_EQ(parent.hear(), 't');
    const Named here(name, 9);
    EXPECT_EQ(here.value(), 2);
    parent.tell('g');
    EXPECT_EQ(parent.wait(), 0);
    EXPECT_EQ(here.valueSoon(3), 3);
}

TEST(NamedSemaphore, IsOneForAllHandlesOfAProcess)
{
    const std::string name = ownName("handles");
    Child other([&](Child::Side& side) {
        Named first(name, 1);
        Named second(name, 1);
        first.wait();
        second.post(); // what the other took
        second.wait();
        first.close();
        side.tell('f');
        side.hear();
        second.close();
        side.tell('s');
        side.hear();
    });
    EXPECT_EQ(other.hear(), 'f');
    const Named here(name, 1);
    EXPECT_FALSE(here.tryWait());
    other.tell('g');
    EXPECT_EQ(other.hear(), 's');
    EXPECT_TRUE(here.tryWait());
    other.tell('g');
    EXPECT_EQ(other.wait(), 0);
}

TEST(ObjectName, GivesEachNameAFileNameOfItsOwnThatStaysInItsFolder)
{
    struct {
        std::string name;
        std::string file; // empty: only what holds for all
    } cases[] = {
        {"", "k-"},
        {"..", "k-.."},
        {"a/../../b", "k-a%2F..%2F..%2Fb"},
        {"\\", "k-%5C"},
        {"X x%20", "k-X%20x%2520"},
        {"x x ", "k-x%20x%20"},
        {"\n\x7F\xC3\xA4~", "k-%0A%7F%C3%A4%7E"},
        {std::string(248, 'a'), "k-" + std::string(248, 'a')},
        {std::string(249, 'a'), ""},
        {std::string(5000, 'a'), ""},
        {std::string(4999, 'a') + 'b', ""},
    };
    std::set<std::string> files;
    for (const auto& row : cases) {
        const std::string file = vxsys::detail::ObjectName('k', row.name).get();
        if (!row.file.empty()) {
            EXPECT_EQ(file, row.file);
        }
        EXPECT_LT(file.size(), 256U);
        EXPECT_EQ(file.find('/'), file.npos);
        EXPECT_TRUE(files.insert(file).second) << file;
    }
    for (const std::size_t length : {119U, 120U, 127U, 128U, 183U, 184U}) { // around the blocks of SHA-256
        const std::string command = "head -c " + std::to_string(length) + " /dev/zero | tr '\\0' '\\1' | sha256sum";
        std::FILE* const oracle = ::popen(command.c_str(), "r");
        char digest[65] = "";
        ASSERT_EQ(std::fscanf(oracle, "%64s", digest), 1);
        ASSERT_EQ(::pclose(oracle), 0);
        std::transform(digest, digest + 64, digest, [](char digit) { return static_cast<char>(std::toupper(digit)); });
        const std::string file = vxsys::detail::ObjectName('k', std::string(length, '\x01')).get();
        EXPECT_TRUE(file.ends_with("~"s + digest)) << length;
    }
}

TEST(NamedSemaphore, HasItsFileInTheFolderWhateverItsName)
{
    const std::string own = ownName("names");
    const std::string names[] = {"../" + own, "/tmp/" + own, "\x01" + own, own + std::string(5000, 'y')};
    const auto countFiles = [&] {
        const std::filesystem::directory_iterator files(folderOf(::geteuid()));
        return std::count_if(begin(files), end(files),
            [&](const auto& file) { return file.path().string().find(own) != std::string::npos; });
    };
    std::vector<std::unique_ptr<Named>> open;
    for (const std::string& name : names)
        open.push_back(std::make_unique<Named>(name, static_cast<std::uint32_t>(open.size())));
    for (std::size_t i = 0; i < open.size(); ++i)
        EXPECT_EQ(open[i]->value(), static_cast<std::int32_t>(i)) << "shared by two names";
    EXPECT_EQ(countFiles(), 4);
    open.clear();
    EXPECT_EQ(countFiles(), 0);
}

TEST(NamedSemaphore, KeepsNoDescriptorAndNeedsNone)
{
    const auto before = openDescriptors();
    const Named here(ownName("descriptors"), 1);
    EXPECT_EQ(openDescriptors(), before);
    Child daemon([&](Child::Side& side) {
        here.wait();
        side.tell('h');
        side.hear();
        for (int descriptor = 0; descriptor < 1000; ++descriptor)
            ::close(descriptor);
        here.post();
        here.wait();
        ::pause();
    });
    EXPECT_EQ(daemon.hear(), 'h');
    daemon.tell('g');
    EXPECT_EQ(daemon.hear(), '\0');
    EXPECT_FALSE(here.tryWait());
}

TEST(NamedSemaphore, ServesMoreProcessesThanItsFirstPageHasRoomFor)
{
    constexpr int COUNT = 125;
    const Named here(ownName("many"), 2 * COUNT);
    std::vector<std::unique_ptr<Child>> children;
    for (int i = 0; i < COUNT; ++i) {
        children.push_back(std::make_unique<Child>([&](Child::Side& side) {
            here.wait();
            side.tell('h');
            side.hear();
        }));
        ASSERT_EQ(children.back()->hear(), 'h') << i;
    }
    EXPECT_EQ(here.value(), COUNT);
    children.clear();
    EXPECT_EQ(here.valueSoon(2 * COUNT), 2 * COUNT);
}

TEST(NamedSemaphore, BelongsToOneUser)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "needs the right to become another user";
    const uid_t user = ownUser();
    const std::string name = ownName("user");
    const Named here(name, 1);
    Child other([&](Child::Side& side) {
        ASSERT_EQ(::setuid(user), 0);
        here.wait(); // it has it open, whoever it is now
        const Named own(name, 4);
        EXPECT_EQ(own.value(), 4);
        side.tell('h');
        side.hear();
    });
    EXPECT_EQ(other.hear(), 'h');
    EXPECT_FALSE(here.tryWait());
    other.kill();
    EXPECT_EQ(here.valueSoon(1), 1);
    EXPECT_TRUE(hasFile(name, user)) << "left by a process that was killed";
    Child tidier([&](Child::Side&) {
        ASSERT_EQ(::setuid(user), 0);
        const Named another(ownName("tidy"), 1);
    });
    EXPECT_EQ(tidier.wait(), 0);
    EXPECT_FALSE(hasFile(name, user));
    std::filesystem::remove(folderOf(user));
}

TEST(NamedSemaphore, RefusesAFolderThatIsNotTheUsersAlone)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "needs the right to become another user";
    const uid_t user = ownUser();
    const std::string folder = folderOf(user);
    const std::function<void()> traps[] = {
        [&] { EXPECT_EQ(::mkdir(folder.c_str(), 0700), 0); },
        [&] {
            EXPECT_EQ(::mkdir(folder.c_str(), 0700), 0);
            EXPECT_EQ(::chown(folder.c_str(), user, user), 0);
            EXPECT_EQ(::chmod(folder.c_str(), 0770), 0);
        },
        [&] { EXPECT_EQ(::symlink("/tmp", folder.c_str()), 0); },
    };
    for (const auto& trap : traps) {
        std::filesystem::remove_all(folder);
        trap();
        Child victim([&](Child::Side&) {
            ASSERT_EQ(::setuid(user), 0);
            VXHandle handle = nullptr;
            EXPECT_EQ(VXNamedSemOpen("x", 1, &handle), RESULT_ACCESS_DENIED);
        });
        EXPECT_EQ(victim.wait(), 0);
    }
    std::filesystem::remove_all(folder);
}

TEST(NamedSemaphore, LeavesNothingBehindWhenThereIsNoRoom)
{
    Child child([&](Child::Side&) {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit none {0, 0};
        ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &none), 0);
        const auto before = openDescriptors();
        const std::string name = ownName("full");
        VXHandle handle = nullptr;
        EXPECT_EQ(VXNamedSemOpen(name.c_str(), 1, &handle), code(0x800700DF));
        EXPECT_EQ(handle, nullptr);
        EXPECT_EQ(openDescriptors(), before);
        EXPECT_FALSE(hasFile(name));
    });
    EXPECT_EQ(child.wait(), 0);
}

TEST(NamedSemaphore, KeepsANoteForWhoComesAfterADeath)
{
    const std::string name = ownName("note");
    VXNamedSemNote note {{1, 2, 3}, 40, 50};
    VXNamedSemNote found {{}, 0, 7};
    Child writer([&](Child::Side& side) {
        const Named semaphore(name, 1);
        EXPECT_EQ(VXNamedSemSetNote(semaphore.m_handle, &note), RESULT_ACCESS_DENIED) << "not held";
        semaphore.wait();
        EXPECT_EQ(VXNamedSemGetNote(semaphore.m_handle, &found), 0);
        EXPECT_EQ(found.length, 0);
        EXPECT_EQ(VXNamedSemSetNote(semaphore.m_handle, &note), 0);
        side.tell('n');
        side.hear();
    });
    EXPECT_EQ(writer.hear(), 'n');
    writer.kill();
    writer.wait();
    Child witness([&](Child::Side&) { const Named untouched(name, 1); });
    EXPECT_EQ(witness.wait(), 0);

    const Named here(name, 1);
    EXPECT_EQ(VXNamedSemGetNote(here.m_handle, &found), RESULT_ACCESS_DENIED);
    here.wait();
    EXPECT_EQ(VXNamedSemGetNote(here.m_handle, &found), 0);
    EXPECT_TRUE(found.file == note.file && found.start == 40 && found.length == 50);
    note.length = 0;
    EXPECT_EQ(VXNamedSemSetNote(here.m_handle, &note), 0);
}

TEST(NamedSemaphore, IsNotClosedUnderAThreadThatWaits)
{
    const std::string name = ownName("busy");
    Named here(name, 0);
    Named other(name, 0);
    std::atomic<pid_t> thread = 0;
    std::thread waiter([&] {
        thread = ::gettid();
        here.wait();
    });
    while (thread == 0 || stateOfThread(thread) != 'S')
        std::this_thread::yield();
    other.close();
    EXPECT_EQ(VXNamedSemClose(here.m_handle), code(0x800700AA));
    here.post();
    waiter.join();
}

/// A handle on shared memory with an address, both given back at the end.
class Memory {
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
    Memory(const Memory&) = delete;
    Memory& operator=(const Memory&) = delete;

    template <class T>
    T* as() const
    {
        return static_cast<T*>(m_address);
    }

    std::uint32_t m_handle = 0;
    void* m_address = nullptr;
};

TEST(NamedSemaphore, KeepsProcessesApartThatAreKilledAtAnyMoment)
{
    constexpr int WORKERS = 3;
    constexpr int KILLS = 25;
    constexpr int ROUNDS = 200; // of each worker that is left at the end

    const unsigned seed = std::random_device()();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const std::string name = ownName("storm");
    const Memory memory(ownName("storm state"), sizeof(pid_t));
    auto& inside = *memory.as<std::atomic<pid_t>>();
    const auto work = [&](Child::Side&) {
        for (int round = 0; round < ROUNDS; ++round) {
            const Named lock(name, 1); // opened each time: most rounds are somebody's last or first one
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
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 5000)); // any moment: nothing rests on it
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
    constexpr std::uint32_t BOTH = VX_FILE_READ | VX_FILE_WRITE;
    constexpr std::uint32_t CREATE = VX_SHARED_MEMORY_CREATE;
    constexpr std::uint32_t EXCLUSIVE = CREATE | VX_SHARED_MEMORY_EXCLUSIVE;
    struct {
        const char* name;
        bool isThere; // with 100 bytes
        std::uint32_t access;
        std::uint32_t flags;
        std::uint32_t size;
        std::int32_t result;
    } cases[] = {
        {"made", false, BOTH, CREATE, 10, 0},
        {"not made", false, BOTH, 0, 10, RESULT_NOT_FOUND},
        {"made of nothing", false, BOTH, CREATE, 0, RESULT_INVALID_ARGUMENT},
        {"made alone", false, BOTH, EXCLUSIVE, 10, 0},
        {"found", true, BOTH, 0, 0, 0},
        {"found or made", true, VX_FILE_READ, CREATE, 100, 0},
        {"found too small", true, BOTH, CREATE, 101, RESULT_INVALID_ARGUMENT},
        {"found, not made", true, BOTH, EXCLUSIVE, 100, RESULT_ALREADY_EXISTS},
        {"no access", true, 0, CREATE, 100, RESULT_INVALID_ARGUMENT},
        {"unknown access", true, BOTH | 1, CREATE, 100, RESULT_INVALID_ARGUMENT},
        {"unknown flag", true, BOTH, 4, 100, RESULT_INVALID_ARGUMENT},
    };
    const std::string name = ownName("memory");
    const auto descriptors = openDescriptors();
    for (const auto& row : cases) {
        std::unique_ptr<Memory> there;
        if (row.isThere)
            there = std::make_unique<Memory>(name, 100);
        std::uint32_t handle = 0;
        EXPECT_EQ(VXSharedMemOpen(name.c_str(), row.access, row.flags, row.size, &handle), row.result) << row.name;
        EXPECT_EQ(handle == VX_FILE_INVALID_HANDLE, failed(row.result)) << row.name;
        if (!failed(row.result)) {
            EXPECT_EQ(VXSharedMemClose(handle), 0) << row.name;
        }
    }
    EXPECT_FALSE(hasFile(name));
    EXPECT_EQ(openDescriptors(), descriptors);
    std::uint32_t handle = 0;
    EXPECT_EQ(VXSharedMemOpen(nullptr, BOTH, CREATE, 1, &handle), RESULT_INVALID_ARGUMENT);
}

TEST(SharedMemory, IsSeenByAllAndHeldByItsAddresses)
{
    const std::string name = ownName("seen");
    std::uint32_t handle = 0;
    ASSERT_EQ(VXSharedMemOpen(name.c_str(), VX_FILE_READ, VX_SHARED_MEMORY_CREATE, 70000, &handle), 0);
    void* address = nullptr;
    EXPECT_EQ(VXSharedMemAttach(handle, VX_FILE_READ | VX_FILE_WRITE, &address), RESULT_ACCESS_DENIED);
    EXPECT_EQ(VXSharedMemAttach(handle, 0, &address), RESULT_INVALID_ARGUMENT);
    ASSERT_EQ(VXSharedMemAttach(handle, VX_FILE_READ, &address), 0);
    const auto* bytes = static_cast<const char*>(address);
    EXPECT_EQ(bytes[69999], 0);
    EXPECT_EQ(VXSharedMemClose(handle), 0);
    EXPECT_EQ(VXSharedMemClose(handle), RESULT_INVALID_HANDLE);
    void* none = address;
    EXPECT_EQ(VXSharedMemAttach(handle, VX_FILE_READ, &none), RESULT_INVALID_HANDLE);
    EXPECT_EQ(none, nullptr);

    Child other([&](Child::Side&) {
        const Memory memory(name, 0, 0);
        memory.as<char>()[69999] = 'x';
    });
    EXPECT_EQ(other.wait(), 0);
    EXPECT_EQ(bytes[69999], 'x');
    const int zeros = ::open("/dev/zero", O_RDONLY | O_CLOEXEC);
    EXPECT_EQ(::read(zeros, address, 1), -1) << "read-only";
    EXPECT_EQ(errno, EFAULT);
    ::close(zeros);

    EXPECT_EQ(VXSharedMemDetach(address), 0);
    EXPECT_EQ(VXSharedMemDetach(address), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(VXSharedMemDetach(nullptr), RESULT_INVALID_ARGUMENT);
    EXPECT_FALSE(hasFile(name));
}

TEST(SharedMemory, StartsAsZeroWhenAllHaveGone)
{
    const std::string name = ownName("zero");
    Child only([&](Child::Side& side) {
        const Memory memory(name, 100);
        std::memset(memory.m_address, 'x', 100);
        side.tell('x');
        side.hear();
    });
    EXPECT_EQ(only.hear(), 'x');
    only.kill();
    only.wait();
    const Memory memory(name, 200);
    EXPECT_EQ(std::count(memory.as<char>(), memory.as<char>() + 200, '\0'), 200);
}

} // namespace
