#include "tests/Slots.h"
#include "tests/vxsys/Child.h"
#include "tests/vxsys/Scratch.h"
#include "vx/Exception.h"
#include "vx/Result.h"
#include "vx/ipc/SemaphoreR.h"
#include "vx/ipc/SharedMemory.h"
#include "vxsys/File.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>

namespace {

using namespace vx;
using ipc::Semaphore;
using ipc::SemaphoreR;
using ipc::SharedMemory;

constexpr unsigned ALL_ACCESS = VX_FILE_READ | VX_FILE_WRITE;

/// A name that no other test has.
std::string ownName(const char* purpose)
{
    return std::string("ipc test ") + purpose + std::to_string(::getpid());
}

/// Code and text of the ResultException that `work` throws.
std::pair<std::int32_t, std::u16string> failureOf(const std::function<void()>& work)
{
    try {
        work();
    } catch (const ResultException& failure) {
        return {failure.getResult(), std::u16string(failure.getDescription().view())};
    }
    return {0, u"nothing"};
}

bool inAnotherThread(const std::function<bool()>& work)
{
    bool result = false;
    std::thread([&] { result = work(); }).join();
    return result;
}

TEST(IpcSemaphore, IsCalledInTheToldOrder)
{
    const std::size_t first = slotOf(&sync::Object::wait);
    for (const auto& slots : {std::initializer_list<std::size_t> {slotOf(&Semaphore::wait), slotOf(&Semaphore::tryWait),
                                  slotOf(&Semaphore::signal), slotOf(&Semaphore::getValue)},
             {slotOf(&SemaphoreR::wait), slotOf(&SemaphoreR::tryWait), slotOf(&SemaphoreR::signal),
                 slotOf(&SemaphoreR::getValue)}})
        expectSlots("semaphore", first, slots);
}

TEST(IpcSemaphore, TellsFailuresByTheirCode)
{
    EXPECT_EQ(failureOf([] { Semaphore(nullptr, 1); }).first, RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(failureOf([] { Semaphore("x", 0x80000000U); }).first, RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(failureOf([] { SemaphoreR(nullptr, 1, nullptr); }).first, RESULT_INVALID_ARGUMENT);

    Semaphore semaphore(ownName("codes").c_str(), 0x7FFFFFFF);
    EXPECT_EQ(failureOf([&] { semaphore.signal(); }).first, code(0x80070216));
    EXPECT_EQ(failureOf([&] { semaphore.getNote(); }).first, RESULT_ACCESS_DENIED);
    semaphore.wait();
    EXPECT_EQ(semaphore.getNote().length, 0);
    EXPECT_EQ(semaphore.getValue(), 0x7FFFFFFE);

    Semaphore empty(ownName("empty").c_str(), 0);
    EXPECT_FALSE(empty.tryWait());
    empty.signal();
    EXPECT_TRUE(empty.tryWait());
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
    m_semaphore.signal();
    EXPECT_EQ(m_others.getValue(), 1) << "signalled by nobody's owner";
    m_semaphore.wait();
    m_semaphore.wait();
    EXPECT_TRUE(m_semaphore.tryWait());
    EXPECT_EQ(m_others.getValue(), 0);
    EXPECT_FALSE(inAnotherThread([&] {
        m_semaphore.signal();
        return m_semaphore.tryWait();
    }));
    for (const int value : {0, 0, 1}) {
        m_semaphore.signal();
        EXPECT_EQ(m_others.getValue(), value);
    }
    EXPECT_TRUE(inAnotherThread([&] {
        const bool isTaken = m_semaphore.tryWait() && m_semaphore.tryWait();
        m_semaphore.signal();
        m_semaphore.signal();
        return isTaken;
    }));
    EXPECT_EQ(m_others.getValue(), 1);
}

TEST_P(SemaphoreRWithMutex, LetsItsOwnerSignalWhileAnotherWaits)
{
    m_semaphore.wait();
    std::atomic<pid_t> thread = 0;
    std::thread waiter([&] {
        for (int i = 0; m_mutex && i < 2; ++i)
            m_mutex->wait();
        thread = ::gettid();
        m_semaphore.wait();
        if (m_mutex) {
            EXPECT_FALSE(inAnotherThread([&] { return m_mutex->tryWait(); })) << "held again";
            m_mutex->signal();
            m_mutex->signal();
            EXPECT_THROW(m_mutex->signal(), ResultException) << "held as often as before";
        }
        m_semaphore.signal();
    });
    while (thread == 0 || stateOfThread(thread) != 'S')
        std::this_thread::yield();
    m_semaphore.signal();
    waiter.join();
    EXPECT_EQ(m_others.getValue(), 1);
}

TEST(SemaphoreR, ComesBackFromADeadOwnerAndFromAnEndedObject)
{
    const std::string name = ownName("owner");
    SemaphoreR here(name.c_str(), 1, nullptr);
    Child owner([&](Child::Side& side) {
        here.wait();
        here.wait();
        side.tell('o');
        side.hear();
    });
    EXPECT_EQ(owner.hear(), 'o');
    EXPECT_FALSE(here.tryWait());
    owner.kill();
    here.wait();
    Child child([&](Child::Side&) {
        here.signal(); // its parent's
        EXPECT_FALSE(here.tryWait());
    });
    EXPECT_EQ(child.wait(), 0);
    here.signal();
    {
        SemaphoreR second(name.c_str(), 1, nullptr);
        second.wait();
        EXPECT_FALSE(here.tryWait());
    }
    EXPECT_TRUE(here.tryWait());
}

TEST(IpcSharedMemory, IsOneForAllWhoHaveTheName)
{
    const std::string name = ownName("memory");
    SharedMemory here(name.c_str(), 64, ALL_ACCESS, VX_SHARED_MEMORY_CREATE);
    Child other([&](Child::Side&) {
        SharedMemory there(name.c_str(), 0, ALL_ACCESS, 0);
        static_cast<char*>(there.get())[63] = 'x';
    });
    EXPECT_EQ(other.wait(), 0);
    EXPECT_EQ(static_cast<char*>(static_cast<void*>(here))[63], 'x');
}

TEST(IpcSharedMemory, LeavesNothingOpenWhenItFails)
{
    const auto before = openDescriptors();
    const std::string name = ownName("failure");
    EXPECT_EQ(failureOf([&] { SharedMemory(name.c_str(), 64, ALL_ACCESS, 0); }),
        std::make_pair(RESULT_NOT_FOUND, std::u16string(u"Failed to open shared memory.")));
    EXPECT_EQ(failureOf([&] { SharedMemory(name.c_str(), 64, VX_FILE_READ, VX_SHARED_MEMORY_CREATE); }),
        std::make_pair(RESULT_ACCESS_DENIED, std::u16string(u"Failed to attach shared memory")));
    EXPECT_EQ(failureOf([&] { SharedMemory(name.c_str(), 64, ALL_ACCESS, 0); }).first, RESULT_NOT_FOUND)
        << "the one that was not attached is gone";
    EXPECT_EQ(openDescriptors(), before);
}

} // namespace
