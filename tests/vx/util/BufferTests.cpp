#include "tests/AllocationProbe.h"
#include "tests/Outcome.h"
#include "tests/Slots.h"
#include "vx/Class.h"
#include "vx/Exceptions.h"
#include "vx/IVXComparable.h"
#include "vx/Reference.h"
#include "vx/Result.h"
#include "vx/String.h"
#include "vx/util/BufferLocks.h"
#include "vx/util/CopyCharBuffer.h"
#include "vx/util/MTByteBuffer.h"
#include "vx/util/MTCharBuffer.h"
#include "vx/util/ROByteBuffer.h"
#include "vx/util/ROCharBuffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <limits>
#include <string>
#include <thread>
#include <vector>

namespace vx::util {
namespace {

constexpr int LARGEST = std::numeric_limits<int>::max();
constexpr int LEAST = std::numeric_limits<int>::min();

struct Chars {
    static constexpr const char16_t* MT_NAME = u"CVXMTCharBuffer";
    using Unit = char16_t;
    using View = IVXCharBuffer;
    using OtherView = IVXByteBuffer;
    using Abstract = AbstractCharBuffer;
    using RO = ROCharBuffer;
    using RW = RWCharBuffer;
    using MT = MTCharBuffer;
    using ReadLock = CharReadLock;
    using WriteLock = CharWriteLock;
};

struct Bytes {
    static constexpr const char16_t* MT_NAME = u"CVXMTByteBuffer";
    using Unit = signed char;
    using View = IVXByteBuffer;
    using OtherView = IVXCharBuffer;
    using Abstract = AbstractByteBuffer;
    using RO = ROByteBuffer;
    using RW = RWByteBuffer;
    using MT = MTByteBuffer;
    using ReadLock = ByteReadLock;
    using WriteLock = ByteWriteLock;
};

template <class Twin>
class Buffers : public testing::Test {
public:
    static constexpr typename Twin::Unit DATA[] = {'a', 'b', 'c', 'd', 'e', 0};

    /// Tells the capacity by what the storage was asked for last.
    static int capacityOf(const AllocationProbe& probe)
    {
        return static_cast<int>(probe.lastRawSize() / sizeof(typename Twin::Unit));
    }

    static bool holds(const typename Twin::Abstract& buffer, std::string_view text)
    {
        return buffer.getLength() == static_cast<int>(text.size())
            && std::equal(text.begin(), text.end(), buffer.getData());
    }
};

using Twins = testing::Types<Chars, Bytes>;
TYPED_TEST_SUITE(Buffers, Twins);

TYPED_TEST(Buffers, KeepTheOrderOfTheirOperations)
{
    using Abstract = typename TypeParam::Abstract;
    using View = typename TypeParam::View;
    expectSlots("class", slotOf(&Object::toString) + 1,
        {slotOf(&Abstract::getLength), slotOf(&Abstract::getData), slotOf(&Abstract::getReadLock),
            slotOf(&Abstract::releaseReadLock), slotOf(&Abstract::isWritable), slotOf(&Abstract::getWriteLock),
            slotOf(&Abstract::ensureCapacity), slotOf(&Abstract::releaseWriteLock), slotOf(&Abstract::freeExtra)});
    expectSlots("view", 0,
        {slotOf(&View::QueryInterface), slotOf(&View::AddRef), slotOf(&View::Release), slotOf(&View::GetLength),
            slotOf(&View::GetData), slotOf(&View::GetReadLock), slotOf(&View::ReleaseReadLock),
            slotOf(&View::IsWritable), slotOf(&View::GetWriteLock), slotOf(&View::EnsureCapacity),
            slotOf(&View::ReleaseWriteLock), slotOf(&View::FreeExtra)});

    // Places in derived classes are those of the base, whatever the second base's operations take behind them.
    typename TypeParam::RW buffer(this->DATA, 5, 0);
    EXPECT_EQ(callSlot<int>(&static_cast<Abstract&>(buffer), slotOf(&Abstract::getLength)), 5);
    typename TypeParam::RO wrap(this->DATA, 4, 0);
    EXPECT_EQ(callSlot<int>(&static_cast<View&>(wrap), slotOf(&View::GetLength)), 4);
    EXPECT_EQ(callSlot<std::int32_t>(&static_cast<View&>(wrap), slotOf(&View::FreeExtra)), RESULT_OK);
    EXPECT_EQ(
        callSlot<std::int32_t>(&static_cast<View&>(wrap), slotOf(&View::ReleaseWriteLock), 1), RESULT_NOT_IMPLEMENTED);
}

TYPED_TEST(Buffers, AnswerForTheirInterfaces)
{
    Reference<typename TypeParam::Abstract> buffer(new typename TypeParam::RW);
    using Other = typename TypeParam::OtherView;
    IVXUnknown* root = buffer->GetUnknown();
    EXPECT_EQ(Reference<typename TypeParam::View>(root).get(), buffer.get());
    EXPECT_NE(Reference<IVXComparable>(root), nullptr);
    EXPECT_EQ(Reference<Other>(root), nullptr);
    EXPECT_EQ(String(typename TypeParam::MT().getClass()->getName()), TypeParam::MT_NAME);
}

TYPED_TEST(Buffers, TakeStorageInStepsOfSixteenAndNoMore)
{
    using RW = typename TypeParam::RW;
    AllocationProbe probe;
    RW buffer(0);
    EXPECT_EQ(buffer.getData(), nullptr);
    EXPECT_EQ(buffer.getWriteLock(0), nullptr);
    EXPECT_EQ(buffer.ensureCapacity(LEAST), nullptr);
    EXPECT_EQ(probe.count(), 0);

    struct {
        const char* what;
        std::function<void(RW&)> work;
        int capacity; // -1: no allocation
        int length;
    } steps[] = {
        {"the first unit", [](RW& b) { b.getWriteLock(1); }, 16, 0},
        {"within", [](RW& b) { b.ensureCapacity(16); }, -1, 0},
        {"beyond", [](RW& b) { b.ensureCapacity(17); }, 32, 0},
        {"never less", [](RW& b) { b.ensureCapacity(1); }, -1, 0},
        {"a length", [](RW& b) { b.releaseWriteLock(5); }, -1, 5},
        {"no length", [](RW& b) { b.releaseWriteLock(-1); }, -1, 5},
        {"least length", [](RW& b) { b.releaseWriteLock(LEAST); }, -1, 5},
        {"extra goes", [](RW& b) { b.freeExtra(); }, 16, 5},
        {"nothing extra", [](RW& b) { b.freeExtra(); }, -1, 5},
        {"the largest", [](RW& b) { EXPECT_THROW(b.ensureCapacity(LARGEST), std::bad_alloc); }, -1, 5},
    };
    for (const auto& step : steps) {
        const int before = probe.count();
        step.work(buffer);
        EXPECT_EQ(probe.count() == before ? -1 : this->capacityOf(probe), step.capacity) << step.what;
        EXPECT_EQ(buffer.getLength(), step.length) << step.what;
    }
    buffer.releaseWriteLock(0);
    buffer.freeExtra();
    EXPECT_EQ(buffer.getData(), nullptr);
}

TYPED_TEST(Buffers, CopyWhatTheyAreMadeFrom)
{
    using RW = typename TypeParam::RW;
    AllocationProbe probe;
    const RW source(this->DATA, 5, 40);
    EXPECT_EQ(this->capacityOf(probe), 48);
    const RW copy(source);
    EXPECT_EQ(this->capacityOf(probe), 48);
    EXPECT_TRUE(this->holds(copy, "abcde"));
    EXPECT_NE(copy.getData(), source.getData());
    RW assigned(this->DATA, 2, 0);
    const RW* itself = &assigned;
    assigned = *itself;
    EXPECT_TRUE(this->holds(assigned, "ab"));
    assigned = source;
    EXPECT_EQ(this->capacityOf(probe), 48);
    EXPECT_TRUE(this->holds(assigned, "abcde"));
    const int before = probe.count();
    assigned = RW(nullptr, 5, 0);
    EXPECT_EQ(probe.count() - before, 1) << "never shrinks";
    EXPECT_EQ(assigned.getLength(), 0);

    struct {
        const char* what;
        int length, capacity, expected;
    } cases[] = {{"negative length", -1, 3, 16}, {"length wins", 5, 3, 16}, {"nothing", 0, 0, 0},
        {"all negative", LEAST, LEAST, 0}};
    for (const auto& row : cases) {
        AllocationProbe own;
        const RW buffer(this->DATA, row.length, row.capacity);
        EXPECT_EQ(this->capacityOf(own), row.expected) << row.what;
        EXPECT_EQ(buffer.getLength(), std::max(row.length, 0)) << row.what;
    }
    EXPECT_THROW(RW {LARGEST}, std::bad_alloc);
    EXPECT_GT(failEachAllocation([&] { const RW again(source); }, [](int) {}), 0);
}

TYPED_TEST(Buffers, CopyNoMoreThanThereIs)
{
    struct Cut : TypeParam::RW {
        using TypeParam::RW::adjustCapacity;
        using TypeParam::RW::freeBuffer;
        using TypeParam::RW::reallocBuffer;
        using TypeParam::RW::RW;
    };
    Cut buffer(40);
    std::fill_n(buffer.getWriteLock(40), 40, typename TypeParam::Unit('x'));
    buffer.releaseWriteLock(40);
    buffer.reallocBuffer(16);
    EXPECT_EQ(buffer.getLength(), 40);
    typename TypeParam::RW assigned;
    assigned = buffer;
    EXPECT_TRUE(this->holds(assigned, std::string(16, 'x')));
    EXPECT_TRUE(this->holds(typename TypeParam::RW(buffer), std::string(16, 'x')));
    buffer.freeBuffer();
    EXPECT_TRUE(buffer.getLength() == 0 && buffer.getData() == nullptr);
    EXPECT_TRUE(Cut::adjustCapacity(16) == 16 && Cut::adjustCapacity(17) == 32 && Cut::adjustCapacity(LARGEST) > 0);
}

TYPED_TEST(Buffers, KeepAllWhenNoStorageIsLeft)
{
    typename TypeParam::RW buffer(this->DATA, 5, 0);
    typename TypeParam::View& view = buffer;
    const auto* data = buffer.getData();
    const int failures = failEachAllocation([&] { buffer.ensureCapacity(100); },
        [&](int) {
            EXPECT_TRUE(this->holds(buffer, "abcde"));
            EXPECT_EQ(buffer.getData(), data);
        });
    EXPECT_EQ(failures, 1);
    auto* out = const_cast<typename TypeParam::Unit*>(data);
    EXPECT_EQ(view.GetWriteLock(LARGEST, &out), RESULT_OUT_OF_MEMORY);
    EXPECT_EQ(out, nullptr);
    try {
        buffer.ensureCapacity(LARGEST - 14);
        FAIL();
    } catch (const std::bad_alloc& failure) {
        EXPECT_STREQ(failure.what(), "bad allocation");
        EXPECT_EQ(dynamic_cast<const Exception*>(&failure), nullptr) << "no new handler was asked";
    }
}

TYPED_TEST(Buffers, WrapReadOnlyMemoryWithoutACopy)
{
    using RO = typename TypeParam::RO;
    RO wrap(this->DATA, 5, 1000);
    const RO copy(wrap);
    EXPECT_EQ(copy.getData(), this->DATA);
    RO other;
    EXPECT_EQ(other.getData(), nullptr);
    EXPECT_TRUE(other.isEmpty());
    other = wrap;
    EXPECT_TRUE(this->holds(other, "abcde"));
    EXPECT_FALSE(wrap.isWritable());
    wrap.freeExtra();
    wrap.releaseReadLock();
    EXPECT_EQ(wrap.getReadLock(), this->DATA);
    for (const auto& write : {std::function<void()>([&] { wrap.getWriteLock(0); }), {[&] { wrap.ensureCapacity(1); }},
             {[&] { wrap.releaseWriteLock(0); }}}) {
        try {
            write();
            ADD_FAILURE();
        } catch (const ReadOnlyException& failure) {
            EXPECT_TRUE(failure.getDescription().isEmpty());
        }
    }

    typename TypeParam::View& view = wrap;
    auto* out = const_cast<typename TypeParam::Unit*>(this->DATA);
    EXPECT_EQ(view.GetWriteLock(1, &out), RESULT_NOT_IMPLEMENTED);
    EXPECT_EQ(out, nullptr);
    out = const_cast<typename TypeParam::Unit*>(this->DATA);
    EXPECT_EQ(view.EnsureCapacity(1, &out), RESULT_NOT_IMPLEMENTED);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(view.ReleaseWriteLock(0), RESULT_NOT_IMPLEMENTED);
    EXPECT_EQ(view.GetWriteLock(1, nullptr), RESULT_POINTER);
    EXPECT_EQ(view.GetReadLock(nullptr), RESULT_POINTER);
    EXPECT_EQ(view.FreeExtra() | view.ReleaseReadLock() | view.IsWritable(), 0);
    EXPECT_THROW(const typename TypeParam::WriteLock lock(wrap, 1), ResultException);
}

TYPED_TEST(Buffers, LetManyReadOrOneWrite)
{
    using Unit = typename TypeParam::Unit;
    typename TypeParam::MT buffer(this->DATA, 5, 0);
    const Unit* first = nullptr;
    ASSERT_EQ(static_cast<typename TypeParam::View&>(buffer).GetReadLock(&first), RESULT_OK);
    std::thread([&] { // comes to an end while the other reader is inside
        const typename TypeParam::ReadLock second(buffer);
        EXPECT_EQ(second.data(), first);
    })
        .join();

    std::atomic<bool> isStarted = false;
    std::atomic<bool> isReleased = false;
    std::thread writer([&] {
        isStarted = true;
        typename TypeParam::WriteLock lock(buffer, 100);
        EXPECT_TRUE(isReleased);
        lock.data()[5] = 'f';
        lock.setLength(6);
    });
    while (!isStarted)
        std::this_thread::yield();
    EXPECT_TRUE(this->holds(buffer, "abcde"));
    isReleased = true;
    buffer.releaseReadLock();
    writer.join();
    EXPECT_TRUE(this->holds(buffer, "abcdef"));
}

TYPED_TEST(Buffers, FreeTheWriteLockWhereItWasNotGot)
{
    typename TypeParam::MT buffer;
    EXPECT_THROW(buffer.getWriteLock(LARGEST), std::bad_alloc);
    auto* out = const_cast<typename TypeParam::Unit*>(this->DATA);
    EXPECT_EQ(static_cast<typename TypeParam::View&>(buffer).GetWriteLock(1, nullptr), RESULT_POINTER);
    EXPECT_EQ(static_cast<typename TypeParam::View&>(buffer).GetWriteLock(LARGEST, &out), RESULT_OUT_OF_MEMORY);
    buffer.freeExtra(); // takes the lock, and would wait for ever
    const typename TypeParam::RW source(this->DATA, 5, 0);
    static_cast<typename TypeParam::RW&>(buffer) = source;
    typename TypeParam::MT copy(buffer);
    copy = copy = buffer;
    std::thread([&] { copy.freeExtra(); }).join();
    EXPECT_TRUE(this->holds(copy, "abcde"));
}

TYPED_TEST(Buffers, StayWholeUnderManyThreads)
{
    constexpr int ROUNDS = 300;
    Reference<typename TypeParam::MT> buffer(new typename TypeParam::MT);
    std::vector<std::thread> threads;
    for (int writer = 0; writer < 2; ++writer) {
        threads.emplace_back([buffer] {
            for (int round = 0; round < ROUNDS; ++round) {
                typename TypeParam::WriteLock lock(*buffer, 0);
                const int length = lock.length();
                lock.ensureCapacity(length + 1);
                lock.data()[length] = static_cast<typename TypeParam::Unit>(length % 100);
                lock.setLength(length + 1);
            }
        });
    }
    threads.emplace_back([buffer] {
        for (int round = 0; round < ROUNDS; ++round)
            buffer->freeExtra();
    });
    threads.emplace_back([buffer] {
        for (int length = 0; length < 2 * ROUNDS;) {
            const typename TypeParam::ReadLock lock(*buffer);
            length = lock.length();
            for (int index = 0; index < length; ++index)
                ASSERT_EQ(lock.data()[index], index % 100);
        }
    });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(buffer->getLength(), 2 * ROUNDS);
}

TEST(CopyCharBuffer, CarriesTheTextOfAnyBufferToAnyOther)
{
    String target(u"old text of some length");
    String source(u"new");
    VXCopyCharBuffer(&target, &source);
    EXPECT_EQ(target, u"new");
    EXPECT_EQ(target.getData()[3], 0);

    RWCharBuffer plain;
    VXCopyCharBuffer(&plain, &source);
    EXPECT_EQ(plain.getLength(), 3) << "a buffer knows nothing of terminators";
    String sharer(target);
    VXCopyCharBuffer(&sharer, &target);
    VXCopyCharBuffer(&target, &target);
    EXPECT_TRUE(sharer == u"new" && target == u"new");
    const Reference<MTCharBuffer> locked(new MTCharBuffer(u"text", 5));
    String one(String::AcquireShare, locked.get());
    VXCopyCharBuffer(&one, locked.get());
    EXPECT_EQ(one.getLength(), 5) << "the terminator of the convention is a unit of the buffer";
    const Reference<String> empty(new String);
    VXCopyCharBuffer(&target, empty.get());
    EXPECT_TRUE(target.isEmpty());

    ROCharBuffer readOnly(u"text", 4);
    struct {
        IVXCharBuffer *target, *source;
        std::int32_t result;
    } failures[] = {{&readOnly, &source, RESULT_NOT_IMPLEMENTED}, {nullptr, &source, RESULT_POINTER},
        {&plain, nullptr, RESULT_POINTER}};
    for (const auto& row : failures)
        EXPECT_EQ(resultOf([&] { VXCopyCharBuffer(row.target, row.source); }), row.result);
    EXPECT_EQ(plain.getLength(), 3);
}

} // namespace
} // namespace vx::util
