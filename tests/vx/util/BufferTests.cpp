#include "tests/AllocationProbe.h"
#include "tests/Threads.h"
#include "tests/vx/Common.h"
#include "vx/util/BufferLocks.h"
#include "vx/util/CopyCharBuffer.h"
#include "vx/util/MTByteBuffer.h"
#include "vx/util/MTCharBuffer.h"
#include "vx/util/ROByteBuffer.h"
#include "vx/util/ROCharBuffer.h"

#include <thread>

namespace vx::util {
namespace {

constexpr int LARGEST = std::numeric_limits<int>::max(), LEAST = std::numeric_limits<int>::min();

struct Chars {
    using Unit = char16_t;
    using View = IVXCharBuffer;
    using Abstract = AbstractCharBuffer;
    using RO = ROCharBuffer;
    using RW = RWCharBuffer;
    using MT = MTCharBuffer;
    using ReadLock = CharReadLock;
    using WriteLock = CharWriteLock;
};

struct Bytes {
    using Unit = signed char;
    using View = IVXByteBuffer;
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

    /// Finds out the capacity by the size of the last allocation.
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

TYPED_TEST(Buffers, TakeStorageInStepsOfSixteenAndNoMore)
{
    using RW = typename TypeParam::RW;
    AllocationProbe probe;
    RW buffer(0);
    EXPECT_EQ(buffer.getWriteLock(0), nullptr);
    EXPECT_EQ(buffer.ensureCapacity(LEAST), nullptr);
    EXPECT_EQ(probe.count(), 0);
    struct {
        std::function<void(RW&)> work;
        int capacity, length; // -1: no allocation
    } steps[] = {{[](RW& b) { b.getWriteLock(1); }, 16, 0}, {[](RW& b) { b.ensureCapacity(16); }, -1, 0},
        {[](RW& b) { b.ensureCapacity(17); }, 32, 0}, {[](RW& b) { b.ensureCapacity(1); }, -1, 0},
        {[](RW& b) { b.releaseWriteLock(5); }, -1, 5}, {[](RW& b) { b.releaseWriteLock(LEAST); }, -1, 5},
        {[](RW& b) { b.freeExtra(); }, 16, 5}, {[](RW& b) { b.freeExtra(); }, -1, 5},
        {[](RW& b) { EXPECT_THROW(b.ensureCapacity(LARGEST), std::bad_alloc); }, -1, 5}};
    for (const auto& step : steps) {
        const int before = probe.count();
        step.work(buffer);
        EXPECT_EQ(probe.count() == before ? -1 : this->capacityOf(probe), step.capacity) << &step - steps;
        EXPECT_EQ(buffer.getLength(), step.length) << &step - steps;
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
    typename TypeParam::Unit writable[] = {'a', 'b'};
    EXPECT_TRUE(this->holds(RW(source), "abcde") && this->holds(RW(writable, 2), "ab"));
    RW assigned(this->DATA, 2, 0);
    const RW* itself = &assigned;
    assigned = *itself;
    EXPECT_TRUE(this->holds(assigned, "ab"));
    assigned = source;
    EXPECT_TRUE(this->holds(assigned, "abcde") && this->capacityOf(probe) == 48);
    const int before = probe.count();
    assigned = RW(nullptr, 5, 0);
    EXPECT_EQ(probe.count() - before, 1) << "never shrinks";
    EXPECT_EQ(RW(this->DATA, -1, 3).getLength(), 0);
    EXPECT_EQ(this->capacityOf(probe), 16);
    EXPECT_EQ(RW(this->DATA, LEAST, LEAST).getData(), nullptr);
}

TYPED_TEST(Buffers, KeepAllWhenNoStorageIsLeft)
{
    typename TypeParam::RW buffer(this->DATA, 5, 0);
    const auto* data = buffer.getData();
    const auto check = [&](int) { EXPECT_TRUE(this->holds(buffer, "abcde") && buffer.getData() == data); };
    EXPECT_EQ(failEachAllocation([&] { buffer.ensureCapacity(100); }, check), 1);
    auto* out = const_cast<typename TypeParam::Unit*>(data);
    EXPECT_EQ(static_cast<typename TypeParam::View&>(buffer).GetWriteLock(LARGEST, &out), RESULT_OUT_OF_MEMORY);
    EXPECT_EQ(out, nullptr);
}

TYPED_TEST(Buffers, WrapReadOnlyMemoryWithoutACopy)
{
    typename TypeParam::RO wrap(this->DATA, 5, 1000), other;
    EXPECT_TRUE(other.isEmpty());
    other = wrap;
    EXPECT_TRUE(this->holds(other, "abcde"));
    EXPECT_EQ(other.getReadLock(), this->DATA);
    EXPECT_THROW(wrap.getWriteLock(0), ReadOnlyException);
    typename TypeParam::View& view = wrap;
    auto* out = const_cast<typename TypeParam::Unit*>(this->DATA);
    EXPECT_EQ(view.EnsureCapacity(1, &out), RESULT_NOT_IMPLEMENTED);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(view.ReleaseWriteLock(0), RESULT_NOT_IMPLEMENTED);
    EXPECT_EQ(view.FreeExtra() | view.ReleaseReadLock() | view.IsWritable(), 0);
    EXPECT_THROW(const typename TypeParam::WriteLock lock(wrap, 1), ResultException);
}

TYPED_TEST(Buffers, LetManyRead)
{
    typename TypeParam::MT buffer(this->DATA, 5, 0);
    const typename TypeParam::ReadLock first(buffer);
    inThreads(1, [&](int) { // returns while the other reader still reads
        EXPECT_EQ(typename TypeParam::ReadLock(buffer).data(), first.data());
    });
}

TYPED_TEST(Buffers, FreeTheWriteLockWhereItWasNotGot)
{
    typename TypeParam::MT buffer;
    EXPECT_THROW(buffer.getWriteLock(LARGEST), std::bad_alloc);
    EXPECT_EQ(static_cast<typename TypeParam::View&>(buffer).GetWriteLock(1, nullptr), RESULT_POINTER);
    buffer.freeExtra(); // would wait for ever if it took the lock
    static_cast<typename TypeParam::RW&>(buffer) = typename TypeParam::RW(this->DATA, 5, 0);
    typename TypeParam::MT copy(buffer);
    copy = copy = buffer;
    std::thread([&] { copy.freeExtra(); }).join();
    EXPECT_TRUE(this->holds(copy, "abcde"));
}

TYPED_TEST(Buffers, StayWholeUnderManyThreads)
{
    constexpr int ROUNDS = 300;
    Reference<typename TypeParam::MT> buffer(new typename TypeParam::MT);
    inThreads(4, [&](int thread) {
        for (int round = 0; round < ROUNDS && thread < 2; ++round) { // two write
            typename TypeParam::WriteLock lock(*buffer, 0);
            const int length = lock.length();
            lock.ensureCapacity(length + 1);
            lock.data()[length] = static_cast<typename TypeParam::Unit>(length % 100);
            lock.setLength(length + 1);
        }
        for (int round = 0; round < ROUNDS && thread == 2; ++round)
            buffer->freeExtra();
        for (int length = 0; length < 2 * ROUNDS && thread == 3;) { // one reads
            const typename TypeParam::ReadLock lock(*buffer);
            length = lock.length();
            for (int index = 0; index < length; ++index)
                ASSERT_EQ(lock.data()[index], index % 100);
        }
    });
    EXPECT_EQ(buffer->getLength(), 2 * ROUNDS);
}

TEST(CopyCharBuffer, CarriesTheTextOfAnyBufferToAnyOther)
{
    String target(u"old text of some length"), source(u"new"), sharer(target);
    VXCopyCharBuffer(&target, &source);
    EXPECT_EQ(target, u"new");
    EXPECT_EQ(target.getData()[3], 0);
    RWCharBuffer plain;
    VXCopyCharBuffer(&plain, &source);
    EXPECT_EQ(plain.getLength(), 3) << "a buffer knows nothing of terminators";
    VXCopyCharBuffer(&target, &target);
    EXPECT_TRUE(sharer == u"old text of some length" && target == u"new");
    const Reference<MTCharBuffer> locked(new MTCharBuffer(u"text", 5));
    String one(String::AcquireShare, locked.get());
    VXCopyCharBuffer(&one, locked.get());
    EXPECT_EQ(one.getLength(), 5) << "the terminator of the convention is a unit of the buffer";
    EXPECT_EQ(resultOf([&] { VXCopyCharBuffer(&plain, nullptr); }), RESULT_POINTER);
}

} // namespace
} // namespace vx::util
