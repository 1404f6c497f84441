#include "tests/Slots.h"
#include "tests/Threads.h"
#include "tests/vx/Common.h"
#include "tests/vxsys/Scratch.h"
#include "vx/ipc/SemaphoreR.h"
#include "vx/ipc/SharedMemory.h"
#include "vxsys/File.h"

#include <fstream>
#include <sched.h>
#include <sys/mount.h>

namespace {

using namespace vx;
using ipc::Semaphore;
using ipc::SemaphoreR;
using ipc::SharedMemory;

constexpr unsigned ALL_ACCESS = VX_FILE_READ | VX_FILE_WRITE;

std::string ownName(const char* purpose)
{
    return std::string("ipc test ") + purpose + std::to_string(::getpid());
}

bool inAnotherThread(const std::function<bool()>& work)
{
    bool result = false;
    Doing([&] { result = work(); }).join();
    return result;
}

TEST(IpcSemaphore, IsCalledInTheToldOrderAndTellsFailuresByTheirCode)
{
    const std::size_t first = slotOf(&sync::Object::wait);
    expectSlots("Semaphore", first, {&Semaphore::wait, &Semaphore::tryWait, &Semaphore::signal, &Semaphore::getValue});
    expectSlots(
        "SemaphoreR", first, {&SemaphoreR::wait, &SemaphoreR::tryWait, &SemaphoreR::signal, &SemaphoreR::getValue});
    EXPECT_EQ(resultOf([] { SemaphoreR(nullptr, 1, nullptr); }), RESULT_INVALID_ARGUMENT);
    Semaphore semaphore(ownName("codes").c_str(), 0x7FFFFFFF);
    EXPECT_EQ(resultOf([&] { semaphore.signal(); }), code(0x80070216));
    EXPECT_EQ(resultOf([&] { semaphore.getNote(); }), RESULT_ACCESS_DENIED);
    semaphore.wait();
}

class SemaphoreRWithMutex : public testing::TestWithParam<bool> {
public:
    ~SemaphoreRWithMutex() noexcept override { }

protected:
    const std::string m_name = ownName("re-entrant");
    const Reference<sync::Mutex> m_mutex {GetParam() ? new sync::Mutex : nullptr};
    SemaphoreR m_semaphore {m_name.c_str(), 1, m_mutex.get()};
    Semaphore m_others {m_name.c_str(), 1};
};

INSTANTIATE_TEST_SUITE_P(
    SemaphoreR, SemaphoreRWithMutex, testing::Bool(), [](const auto& row) { return row.param ? "Given" : "Own"; });

TEST_P(SemaphoreRWithMutex, IsOneLockHoweverOftenItsOwnerTakesIt)
{
    m_semaphore.wait();
    m_semaphore.wait();
    EXPECT_TRUE(m_semaphore.tryWait());
    EXPECT_FALSE(inAnotherThread([&] {
        m_semaphore.signal();
        return m_semaphore.tryWait();
    }));
    for (const int value : {0, 0, 1}) {
        m_semaphore.signal();
        EXPECT_EQ(m_others.getValue(), value);
    }
}

TEST_P(SemaphoreRWithMutex, LetsItsOwnerSignalWhileAnotherWaits)
{
    m_semaphore.wait();
    Doing waiter([&] {
        for (int i = 0; m_mutex && i < 2; ++i)
            m_mutex->wait();
        m_semaphore.wait();
        if (m_mutex) {
            EXPECT_FALSE(inAnotherThread([&] { return m_mutex->tryWait(); })) << "held again";
            m_mutex->signal();
            m_mutex->signal();
            EXPECT_THROW(m_mutex->signal(), ResultException) << "held as often as before";
        }
        m_semaphore.signal();
    });
    waiter.awaitWaiting();
    m_semaphore.signal();
    waiter.join();
    EXPECT_EQ(m_others.getValue(), 1);
}

TEST(SemaphoreR, BelongsToNoLaterThreadWithTheIdOfItsOwner)
{
    SemaphoreR semaphore(ownName("ended").c_str(), 1, nullptr);
    std::uint32_t id = 0;
    inThreads(1, [&](int) {
        id = VXThreadGetCurrentId();
        semaphore.wait();
    });
    bool isAgain = false;
    for (int thread = 0; thread < 1000 && !isAgain; ++thread) {
        std::ofstream("/proc/sys/kernel/ns_last_pid") << id - 1; // other processes may get it in between
        inThreads(1, [&](int) {
            isAgain = VXThreadGetCurrentId() == id;
            EXPECT_FALSE(isAgain && semaphore.tryWait());
        });
    }
    if (!isAgain)
        GTEST_SKIP() << "the system chooses the identifiers of threads itself";
}

TEST(SemaphoreR, ComesBackFromADeadOwner)
{
    const std::string name = ownName("owner");
    SemaphoreR here(name.c_str(), 1, nullptr);
    HoldingChild owner([&] { here.wait(); });
    EXPECT_FALSE(here.tryWait());
    owner.kill();
    here.wait();
    here.signal();
}

TEST(IpcSemaphore, WaitsForALimitedTime)
{
    const std::string name = ownName("limited");
    Semaphore semaphore(name.c_str(), 0);
    for (const std::uint32_t milliseconds : {20U, 0U})
        EXPECT_FALSE(semaphore.waitFor(milliseconds));
    Child other([&](Child::Side& side) {
        side.hear();
        Semaphore(name.c_str(), 0).signal();
    });
    other.tell('g');
    EXPECT_TRUE(semaphore.waitFor(VX_WAIT_FOREVER));
    EXPECT_FALSE(semaphore.tryWait());
}

TEST(IpcSemaphore, TellsNoFailureOfItsDestructorBesideAnotherException)
{
    struct Open : Semaphore {
        using Semaphore::m_handle;
        using Semaphore::Semaphore;
    };
    VXHandle handle = nullptr;
    std::unique_ptr<Doing> waiter;
    const auto fails = [&](bool throws) {
        Open semaphore(ownName("in use").c_str(), 0);
        handle = semaphore.m_handle;
        waiter = std::make_unique<Doing>([handle] { VXSemaphoreWait(handle); });
        waiter->awaitWaiting();
        if (throws)
            throw RangeErrorException();
    };
    const auto end = [&] {
        VXSemaphorePost(handle);
        waiter->join();
        EXPECT_EQ(VXNamedSemClose(handle), RESULT_OK);
    };
    EXPECT_EQ(resultOf([&] { fails(false); }), code(0x800700AA));
    end();
    EXPECT_THROW(fails(true), RangeErrorException);
    end();
}

TEST(SemaphoreR, IsOwnedAfterATimedWaitThroughItsBase)
{
    SemaphoreR owned(ownName("timed").c_str(), 1, nullptr);
    sync::AnySemaphore& semaphore = owned;
    EXPECT_TRUE(semaphore.waitFor(1000));
    EXPECT_TRUE(semaphore.waitFor(1000)) << "again, by its owner";
    bool isTakenByAnother = true;
    Doing([&] { isTakenByAnother = semaphore.waitFor(5); }).join();
    EXPECT_FALSE(isTakenByAnother);
    semaphore.signal();
    EXPECT_EQ(semaphore.getValue(), 0);
    semaphore.signal();
    EXPECT_EQ(semaphore.getValue(), 1);
}

TEST(SemaphoreR, StaysItsOwnersWhenAChildProcessDropsItsCopy)
{
    const std::string name = ownName("fork");
    auto held = std::make_unique<SemaphoreR>(name.c_str(), 1, nullptr);
    held->wait();
    Child child([&](Child::Side& side) {
        EXPECT_FALSE(held->tryWait());
        held->signal();
        side.tell('t');
        side.hear();
        SemaphoreR own(name.c_str(), 1, nullptr);
        own.wait();
        held.reset(); // returns nothing that this process took
        EXPECT_EQ(own.getValue(), 0);
    });
    EXPECT_EQ(child.hear(), 't');
    EXPECT_EQ(held->getValue(), 0);
    Child dropper([&](Child::Side&) { held.reset(); });
    EXPECT_EQ(dropper.wait(), 0);
    EXPECT_EQ(held->getValue(), 0);
    held->signal();
    child.tell('g');
    EXPECT_EQ(child.wait(), 0);
    EXPECT_EQ(held->getValue(), 1);
}

TEST(IpcSemaphore, SaysWhatToDoWhereTheMemoryFileSystemTakesNoFiles)
{
    const std::tuple<unsigned long, const char*, std::int32_t, const char*> cases[]
        = {{0, "size=4k", RESULT_DISK_FULL, "full"}, {MS_RDONLY, "", code(0x80070013), "read-only"}};
    for (const auto& [flags, options, result, said] : cases) {
        Child child([flags = flags, options = options, result = result, said = said](Child::Side& side) {
            if (::unshare(CLONE_NEWNS) != 0 || ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0
                || ::mount("none", "/dev/shm", "tmpfs", flags, options) != 0) {
                side.tell('s');
                return;
            }
            try {
                const Semaphore first("first", 1), second("second", 1);
                ADD_FAILURE() << "room for both";
            } catch (const ResultException& failure) {
                EXPECT_EQ(failure.getResult(), result);
                const std::string text = failure.getDescription().toUtf8();
                EXPECT_NE(text.find("/dev/shm"), text.npos) << text;
                EXPECT_NE(text.find(said), text.npos) << text;
            }
        });
        if (child.hear() == 's')
            GTEST_SKIP() << "needs the right to mount a file system";
        EXPECT_EQ(child.wait(), 0);
    }
}

TEST(IpcSharedMemory, LeavesNothingOpenWhenItFails)
{
    const auto before = openDescriptors();
    const std::string name = ownName("failure");
    EXPECT_EQ(
        resultOf([&] { SharedMemory(name.c_str(), 64, VX_FILE_READ, VX_SHARED_MEMORY_CREATE); }), RESULT_ACCESS_DENIED);
    EXPECT_EQ(resultOf([&] { SharedMemory(name.c_str(), 64, ALL_ACCESS, 0); }), RESULT_NOT_FOUND);
    EXPECT_EQ(openDescriptors(), before);
}

} // namespace
