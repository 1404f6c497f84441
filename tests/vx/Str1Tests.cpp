#include "tests/vx/Common.h"
#include "vx/Str1.h"
#include "vx/Str1HashMap.h"

namespace vx {
namespace {

TEST(StrBuf1, AllowsWritesInPlaceByItsCountAndItsFlags)
{
    enum Kind { Plain, StaticInstance, AlwaysPrivate };
    const std::tuple<Kind, int, std::uint32_t, std::uint32_t> cases[]
        = {{Plain, 0, 100, 100}, {Plain, 1, 100, 100}, {Plain, 2, 0, 0}, {StaticInstance, 0, 100, 100},
            {StaticInstance, 1, 100, 0}, {StaticInstance, 2, 0, 0}, {AlwaysPrivate, 5, 100, 100}};
    for (const auto& [kind, holders, usual, withoutSelf] : cases) {
        char16_t units[100];
        StrBuf1Wrap buffer(units, 100);
        buffer.AddRef(); // prevents the deletion of a plain one
        if (kind != Plain) {
            buffer.initStaticInstance(kind == AlwaysPrivate ? 1 : 0);
            buffer.Release();
        }
        for (int holder = kind == Plain ? 1 : 0; holder < holders; ++holder)
            buffer.AddRef();
        EXPECT_EQ(buffer.isPrivatelyHeld(0), usual) << kind << ' ' << holders;
        EXPECT_EQ(buffer.isPrivatelyHeld(1), withoutSelf) << kind << ' ' << holders;
    }
}

TEST(Str1, SharesSubstringsUntilOneIsWritten)
{
    Str1 source(u"hello");
    const std::tuple<std::int32_t, std::int32_t, const char16_t*> cases[]
        = {{0, -1, u"hello"}, {1, 3, u"el"}, {4, 99, u"o"}, {0, 0, u""}, {5, -1, u""}, {3, 2, u""}, {-1, 3, u""},
            {1, -2, u""}, {std::numeric_limits<std::int32_t>::max(), -1, u""},
            {std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::min(), u""}};
    for (const auto& [start, end, text] : cases) {
        const Str1 part = source.substring(start, end);
        EXPECT_EQ(part, text) << start;
        EXPECT_EQ(part.getData1(), part.isEmpty() ? nullptr : source.getData0() + start) << start;
    }
    const char16_t* data = source.getData0();
    source += u'!'; // no longer shared
    EXPECT_EQ(source.getData0(), data);
}

TEST(Str1, RefusesWhatTwentyFourBitsCannotCount)
{
    constexpr std::uint32_t MOST = StrBuf1::MAX_CAPACITY;
    Str1 text(u"abc");
    EXPECT_EQ(text.ensureCapacity1(MOST - 3, 0, 0), MOST) << "the last step is one unit short";
    text = u"abc";
    text.append(u'x', MOST - 3);
    EXPECT_EQ(text.getLength(), static_cast<std::int32_t>(MOST));
    Str1::Appendor appendor(text, 0, 0);
    EXPECT_THROW(text += u'x', OutOfMemoryException);
    EXPECT_THROW(text.append(u'x', std::numeric_limits<int>::max()), OutOfMemoryException);
    EXPECT_THROW(text.append(text.getData0(), MOST), OutOfMemoryException);
    EXPECT_THROW(appendor.fastAppend(u'x'), OutOfMemoryException);
    EXPECT_EQ(text.getLength(), static_cast<std::int32_t>(MOST));
    for (const std::uint32_t capacity : {MOST + 1, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        EXPECT_THROW(Str1 {capacity}, OutOfMemoryException) << capacity;
        EXPECT_THROW(Str1::newStrBuf1Cap(capacity), OutOfMemoryException) << capacity;
        EXPECT_THROW(Str1Wrap(u"", 0, capacity), OutOfMemoryException) << capacity;
        EXPECT_THROW(Str1Local(u"", 0, capacity), OutOfMemoryException) << capacity;
        EXPECT_THROW(text.ensureCapacity1(capacity, 0, 0), OutOfMemoryException) << capacity;
    }
    EXPECT_EQ(Str1::normalizeCapacity(0x7FFFFFF0), 0x7FFFFFF0);
    EXPECT_THROW(Str1::normalizeCapacity(0x7FFFFFF1), OutOfMemoryException);
    EXPECT_EQ(Str1(-5).getData1(), nullptr);
    Str1 part = Str1(u"abcdef").substring(3);
    EXPECT_THROW(part.copy(std::u16string(MOST + 1, u'x').data(), MOST + 1), OutOfMemoryException);
    EXPECT_EQ(part, u"def");
    EXPECT_THROW(Str1(std::uint64_t {1} << 32), OutOfMemoryException);
}

TEST(Str1, LeavesForeignTextAloneUnlessToldThatItMayWrite)
{
    const char16_t literal[] = u"abc";
    Str1Static fixed(literal);
    EXPECT_EQ(fixed.getData0(), literal);
    fixed += u'd';
    EXPECT_EQ(fixed, u"abcd");

    Str1Wrap readOnly(literal);
    readOnly.toUpper();
    EXPECT_EQ(readOnly, u"ABC");
    EXPECT_EQ(std::u16string_view(literal), u"abc");

    char16_t array[16] = u"abcdefgh";
    Str1Wrap partly(array, -1, 4); // longer than it may write
    partly.toUpper();
    EXPECT_EQ(partly, u"ABCDEFGH");
    EXPECT_EQ(array[0], u'a');
    partly = Str1Wrap(array, -1, 4);
    partly = u"wxyz";
    EXPECT_EQ(partly.getData0(), array);
    EXPECT_EQ(std::u16string_view(array), u"wxyzefgh");

    Str1Local local(array, 2, 4);
    local += u"!?";
    EXPECT_EQ(local.getData0(), array);
    local += u'!';
    EXPECT_NE(local.getData0(), array);
    EXPECT_EQ(local, u"wx!?!");
    EXPECT_EQ(Str1Local(array, 100, 4).getLength(), 4);
    EXPECT_EQ(Str1Local(array, -1, 3).getLength(), 3);
    EXPECT_TRUE(
        Str1Static(nullptr).isEmpty() && Str1Wrap(nullptr, 5, 5).isEmpty() && Str1Local(nullptr, 5, 5).isEmpty());
    EXPECT_TRUE(Str1Static(u"abc", -2).isEmpty() && Str1Copy(nullptr, 5).isEmpty());
}

bool liesWithin(const char16_t* data, const Str1Fixed<128>& text)
{
    const auto* begin = reinterpret_cast<const std::byte*>(&text);
    const auto* place = reinterpret_cast<const std::byte*>(data);
    return place >= begin && place < begin + sizeof text;
}

TEST(Str1Fixed, ComesBackToItsOwnStorageWheneverThatIsFree)
{
    Str1Fixed<128> text;
    text.append(u'x', 128);
    EXPECT_TRUE(liesWithin(text.getData0(), text));
    text += u'y';
    EXPECT_FALSE(liesWithin(text.getData0(), text));
    EXPECT_EQ(text, std::u16string(128, u'x') + u'y');
    EXPECT_EQ(text.ensureCapacity1(0, 0, -1), 192U) << "144 and a quarter is 180, in steps of 16";
    const Str1 other(u"other");
    text = other;
    EXPECT_EQ(text.getData0(), other.getData0());
    text += u'!';
    EXPECT_TRUE(liesWithin(text.getData0(), text));
    {
        Str1 sharer(text);
        EXPECT_EQ(sharer.getData0(), text.getData0());
        text += u'!';
        EXPECT_FALSE(liesWithin(text.getData0(), text)) << "its storage is the sharer's";
        EXPECT_EQ(sharer, u"other!");
        text = other;
        EXPECT_EQ(text.fastAllocBuffer(0), nullptr);
    }
    EXPECT_NE(text.fastAllocBuffer(128), nullptr);
    EXPECT_EQ(text.fastAllocBuffer(129), nullptr);
}

TEST(Str1Fixed, LeavesNothingOfItsStorageBehind)
{
    Str1 kept[6];
    std::vector<Str1> results;
    {
        Str1Fixed<128> fixed;
        fixed = u"fixed";
        char16_t array[8] = u"local";
        Str1Local local(array, 5, 8);
        const Str1Static constant(array, 5);
        kept[0] = std::move(fixed);
        kept[1] += local;
        kept[2].append(Str1Static(array), 2, 1);
        kept[3] = constant.detached();
        kept[4] = Str1Static(array).substring(1, 3);
        kept[5].setTo(Str1Static(array));
        results.emplace_back(std::move(local));
        Str1Fixed<128> copy;
        copy = fixed;
        EXPECT_TRUE(liesWithin(copy.getData0(), copy));
        std::fill(std::begin(array), std::end(array), u'#');
    }
    const char16_t* expected[] = {u"fixed", u"local", u"oc", u"local", u"oc", u"local"};
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(kept[i], expected[i]) << i;
    EXPECT_EQ(results[0], u"local");
    EXPECT_DEATH(
        {
            Str1 sharer;
            Str1Fixed<128> owner;
            sharer = static_cast<const Str1&>(owner);
        },
        "shares");
}

TEST(Str1, KeepsItsLengthWithinTheBuffer)
{
    Str1 text(u"abc");
    text.getData0()[3] = u'd';
    text.adjustLength(1);
    EXPECT_EQ(text, u"abcd");
    text.adjustLength(std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(text.getLength(), 16);
    text.adjustLength(std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(text.getLength(), 0);
    Str1 none;
    none.adjustLength(5);
    EXPECT_TRUE(none.isEmpty() && none[0] == 0 && none.getData0() == nullptr);
    Str1Wrap wrap(u"abc");
    wrap.adjustLength(5);
    EXPECT_EQ(wrap, u"abc");
}

} // namespace
} // namespace vx
