#include "tests/AllocationProbe.h"
#include "tests/Random.h"
#include "tests/Threads.h"
#include "tests/vx/Common.h"
#include "tests/vx/UserBuffer.h"
#include "vx/util/MTCharBuffer.h"
#include "vx/vorb/Boundary.h"

namespace vx {
namespace {

constexpr int LARGEST = std::numeric_limits<int>::max(), LEAST = std::numeric_limits<int>::min();

using Edit = std::function<void(String&)>;

/// A text and the zero unit after it.
void expectText(const String& text, std::u16string_view expected, const std::string& what = {})
{
    EXPECT_EQ(text, expected) << what;
    EXPECT_EQ(text.getLength(), static_cast<int>(expected.size())) << what;
    EXPECT_EQ(text.getData()[expected.size()], 0) << what;
}

TEST(String, ReplacesARange)
{
    struct {
        int start, count;
        const char16_t* text;
        int length, textStart;
        std::u16string_view expected;
    } cases[] = {{1, 1, u"XY", -1, 0, u"aXYc"}, {-1, 7, u"XY", -1, 0, u"abcXY"}, {-1, LEAST, u"XY", -1, 0, u"abcXY"},
        {LARGEST, LARGEST, u"XY", -1, 0, u"abcXY"}, {1, -1, u"X", -1, 0, u"aX"}, {1, 99, u"X", -1, 0, u"aX"},
        {0, -1, u"XYZ", -1, 2, u"Z"}, {1, 0, u"XYZ", -1, 4, u"abc"}, {1, 1, u"XYZ", 2, -1, u"ac"},
        {1, 1, u"XYZ", 2, 1, u"aYc"}, {1, 0, u"X\0Y", 3, 1, {u"a\0Ybc", 5}}, {0, 3, nullptr, 0, 0, u""},
        {0, 1, nullptr, -1, 0, u"bc"}, {0, 1, nullptr, 5, 0, u"bc"}, {-2, 1, u"X", -1, 0, u"Xbc"},
        {1, -2, u"X", -1, 0, u"aXbc"}, {1, 1, u"X", -2, 0, u"ac"}, {1, 1, u"X", LEAST, LEAST, u"ac"},
        {1, 1, u"XYZ", -1, -2, u"aXYZc"}};
    for (const auto& row : cases) {
        const std::string what = std::to_string(&row - cases);
        String text(u"abc");
        EXPECT_EQ(&text.replace(row.start, row.count, row.text, row.length, row.textStart), &text);
        expectText(text, row.expected, what);
        String other(u"abc");
        other.replace(row.start, row.count, String(row.text, row.length), row.textStart);
        expectText(other, row.expected, what);
    }
    String text(u"abc");
    expectText(text.replace(1, 1, u'X', 3), u"aXXXc");
    expectText(text.replace(1, 3, u'X', -1), u"ac");
    expectText(text.replace(-1, 0, u'X', 0), u"ac");
}

TEST(String, EditsInAllForms)
{
    const String piece(u"XY");
    const std::tuple<const char*, Edit, std::u16string_view> cases[] = {
        {"append", [&](String& s) { (s.append(u"XYZ", 2).append(piece) += u"Z") += piece; }, u"  abc \tXYXYZXY"},
        {"append units", [](String& s) { s.append(u'x', 2).append(u'y') += u'z'; }, u"  abc \txxyz"},
        {"append views", [](String& s) { s.append(std::u16string(u"x\u20AC")) += std::u16string_view(u"y"); },
            u"  abc \tx\u20ACy"},
        {"append nothing", [](String& s) { s.append(u'x', -1).append(u"", 0).append(nullptr, 5).append(u"x", -2); },
            u"  abc \t"},
        {"prepend", [&](String& s) { s.prepend(u"XYZ", 2).prepend(piece).prepend(u'-', 2); }, u"--XYXY  abc \t"},
        {"insert", [&](String& s) { s.insert(2, u"XYZ", 1).insert(-1, piece).insert(99, u"!"); }, u"  Xabc \tXY!"},
        {"remove", [](String& s) { s.remove(2, -1); }, u"  "},
        {"remove beyond", [](String& s) { s.remove(99).remove(7, 1); }, u"  abc \t"},
        {"set text", [](String& s) { s.setTo(u"xyz", 2); }, u"xy"},
        {"set unit", [](String& s) { s = u'x'; }, u"x"},
        {"set units", [](String& s) { s.setTo(u'x', 3); }, u"xxx"},
        {"set nothing", [](String& s) { s = static_cast<const char16_t*>(nullptr); }, u""},
        {"set view", [](String& s) { s = std::u16string_view(u"xyz").substr(1); }, u"yz"},
        {"resize up", [](String& s) { s.resize(9, u'x'); }, u"  abc \txx"},
        {"resize down", [](String& s) { s.resize(3, u'x'); }, u"  a"},
        {"resize below", [](String& s) { s.resize(LEAST, u'x'); }, u""},
        {"clear", [](String& s) { s.clear(); }, u""},
        {"set unit at", [](String& s) { s.setCharAt(2, u'X'); }, u"  Xbc \t"},
        {"translate", [](String& s) { s.translate(u' ', u'-'); }, u"--abc-\t"},
        {"translate texts", [&](String& s) { s.translate(u"a", u"b"), s.translate(piece, piece); }, u"  abc \t"},
        {"upper", [](String& s) { s = u"a\u00E9\u0451\u00DF\u01C6", s.toUpper(); }, u"A\u00C9\u0401\u00DF\u01C4"},
        {"lower", [](String& s) { s = u"A\u00C9\u0401\u0130", s.toLower(); }, u"a\u00E9\u0451i"},
        {"trim", [](String& s) { s.trim(); }, u"abc"},
        {"trim leading", [](String& s) { s.trim(String::TrimLeading); }, u"abc \t"},
        {"trim trailing", [](String& s) { s.trim(String::TrimTrailing); }, u"  abc"},
        {"trim no side", [](String& s) { s.trim(static_cast<String::TrimType>(0)); }, u"  abc \t"},
        {"trim unit", [](String& s) { s.trim(u' '); }, u"abc \t"},
        {"trim set", [](String& s) { s.trim(u" ac\t", 0); }, u"b"},
        {"trim set at one side", [](String& s) { s.trim(u"\t c", String::TrimTrailing); }, u"  ab"},
        {"trim string", [](String& s) { s.trim(String(String::AcquireWrap, String(u"x \tx"), 1, 3)); }, u"abc"},
        {"trim exact", [](String& s) { s.trim(u"AC \t"); }, u"abc"},
        {"trim wide", [](String& s) { s = u"\u2003a\u2003\u3000", s.trim(u"\u3000\u2003"); }, u"a"},
        {"trim nothing", [](String& s) { s.trim(u""), s.trim(static_cast<const char16_t*>(nullptr)); }, u"  abc \t"},
        {"trim all", [](String& s) { s = u" \r\n\t ", s.trim(); }, u""},
        {"trim no zero units", [](String& s) { s.setTo(u" \0a\0 ", 5), s.trim(); }, {u"\0a\0", 3}},
    };
    for (const auto& [what, edit, expected] : cases) {
        const char16_t* literalText = u"  abc \t";
        String owned(literalText);
        edit(owned);
        expectText(owned, expected, what);
        String wrapped(String::AcquireWrap, literalText);
        const String sharer(wrapped);
        edit(wrapped);
        expectText(wrapped, expected, what);
        expectText(sharer, u"  abc \t", what);
    }
    String zeros(u"\0a\0", 3);
    zeros.trim(u"b");
    expectText(zeros, u"a", "the terminator of a set is in it");
}

TEST(String, TakesItsOwnTextAsASource)
{
    const std::tuple<const char*, Edit, std::u16string_view> cases[] = {
        {"a += a", [](String& a) { a += a; }, u"abcabc"},
        {"a = a", [](String& a) { a = *&a; }, u"abc"},
        {"a = data", [](String& a) { a = a.getData() + 1; }, u"bc"},
        {"append a tail", [](String& a) { a.append(a.getData() + 1, 2); }, u"abcbc"},
        {"append the terminator", [](String& a) { a.append(a.getData(), 4); }, {u"abcabc\0", 7}},
        {"replace by a part", [](String& a) { a.replace(0, 2, a.getData() + 1, 2); }, u"bcc"},
        {"wrap a part", [](String& a) { a.setTo(String::AcquireWrap, a, 1, 3); }, u"bc"},
        {"wrap data", [](String& a) { a.setTo(String::AcquireWrap, a.getData() + 1); }, u"bc"},
        {"upper of a part", [](String& a) { a.setTo(String::AcquireUpper, a, 1, 3); }, u"BC"},
        {"trim", [](String& a) { a.trim(a); }, u""},
        {"trim by a tail", [](String& a) { a.insert(0, u"fe"), a.trim(a.getData() + 4); }, u"feab"},
        {"format", [](String& a) { (a += u"{0}").format(a.getData(), -1, a.getData() + 1); }, u"abcbc{0}"},
    };
    for (const auto& [what, edit, expected] : cases) {
        const std::u16string base = u"abc";
        String roomy(base.c_str(), -1, 100), tight(base);
        tight.freeExtra();
        String shared(roomy);
        const String other(shared);
        String adopted(String::AcquireShare, new UserBuffer(base));
        const Reference<util::MTCharBuffer> locked(new util::MTCharBuffer(base.c_str(), 4));
        String lockedText(String::AcquireShare, locked.get());
        for (String* text : {&roomy, &tight, &shared, &adopted, &lockedText}) {
            edit(*text);
            expectText(*text, expected, what);
        }
        expectText(other, base, what);
        EXPECT_EQ(locked->getLength(), 4) << "held by two: the string took a buffer of its own";
    }

    const String c(u"shared by two strings");
    String b(c);
    b.setTo(String::AcquireWrap, c, 3, 6);
    EXPECT_EQ(b.getData(), c.getData() + 3);
    EXPECT_EQ(b.getLength(), 3);
}

TEST(String, TakesNoMoreRoomForAnEditOfASharerThanTheEditNeeds)
{
    const String text(u'x', 1000), other(u'y', 1000);
    const struct {
        const char* what;
        Edit edit;
        std::size_t units; ///< with the terminator, in steps of 16
    } rows[] = {
        {"same length", [&](String& s) { s = other; }, 1008},
        {"shorter", [&](String& s) { s.replace(0, 500, u"y"); }, 1008},
        {"longer", [&](String& s) { s.replace(0, 10, other); }, 2000},
        {"at the end", [](String& s) { s.append(u'y', 20); }, 1024},
        {"unit", [](String& s) { s.setCharAt(0, u'y'); }, 1008},
        {"resize", [](String& s) { s.resize(3000, u'y'); }, 3008},
    };
    for (const auto& row : rows) {
        String sharer(text);
        AllocationProbe probe;
        row.edit(sharer);
        EXPECT_EQ(probe.lastRawSize(), row.units * sizeof(char16_t)) << row.what;
        EXPECT_EQ(probe.count(), 2) << row.what << ": the buffer and its storage";
    }
}

TEST(String, RaisesTheCapacityOfItsBufferAsFarAsAnEditAsksAndKeepsIt)
{
    const String other(u"y");
    const auto appendUnits = [](String& text, int count) {
        while (count-- > 0)
            text += u'x';
    };
    const struct {
        const char* what;
        Edit edit;
        std::size_t units;
    } rows[] = {
        {"within the capacity", [&](String& s) { appendUnits(s, 12); }, 16},
        {"one unit more", [&](String& s) { appendUnits(s, 13); }, 32},
        {"units one by one", [&](String& s) { appendUnits(s, 47); }, 64},
        {"removed", [&](String& s) { appendUnits(s, 47), s.remove(1); }, 64},
        {"replaced", [&](String& s) { appendUnits(s, 47), s.replace(0, -1, u"y"); }, 64},
        {"assigned", [&](String& s) { appendUnits(s, 47), s = other; }, 64},
        {"set", [&](String& s) { appendUnits(s, 47), s = u"y"; }, 64},
        {"cleared", [&](String& s) { appendUnits(s, 47), s.clear(); }, 64},
        {"trimmed", [&](String& s) { appendUnits(s, 47), s.trim(u'x'); }, 64},
        {"written", [&](String& s) { appendUnits(s, 47), s.getWriteLock(0), s.releaseWriteLock(1); }, 64},
        {"pieces", [](String& s) { s.append(u"123456789012345").append(u"123456789012345"); }, 48},
        {"pieces and units", [&](String& s) { s.append(std::u16string(30, u'y')), appendUnits(s, 15), s.resize(2, 0); },
            64},
        {"longer text", [&](String& s) { appendUnits(s, 40), s = std::u16string_view(std::u16string(50, u'y')); }, 64},
        {"freed", [&](String& s) { appendUnits(s, 47), s.remove(20), s.freeExtra(); }, 32},
    };
    for (const auto& row : rows) {
        auto* buffer = new util::RWCharBuffer(u"abc", 4);
        String text(String::AcquireShare, buffer);
        row.edit(text);
        AllocationProbe probe;
        const util::RWCharBuffer copy(*buffer);
        EXPECT_EQ(probe.lastRawSize(), row.units * sizeof(char16_t)) << row.what << ": a copy has the same capacity";
    }
}

TEST(String, RefusesTextsThatCannotBeCounted)
{
    const std::function<void(String&, int)> edits[] = {
        [](String& s, int most) { s.append(u'x', most); },
        [](String& s, int most) { s.append(u"x", most - 1); },
        [](String& s, int most) { s.replace(0, 3, u"x", most); },
        [](String& s, int most) { s.replace(0, 3, u'x', most); },
        [](String& s, int most) { s.resize(most, u'x'); },
        [](String& s, int most) { s.getWriteLock(most); },
        [](String& s, int most) { s.copyOnWrite(most), throw std::bad_alloc(); },
        [](String& s, int most) { s.releaseWriteLock(most); },
        [](String& s, int most) { s = String(u'x', most); },
        [](String& s, int most) { s = String(most); },
        [](String& s, int) { s = String(u"x", LARGEST); },
        [](String& s, int) { s = String("x", LARGEST, u"UTF-8"); },
    };
    for (const auto& edit : edits) {
        for (const int most : {LARGEST, LARGEST - 1}) {
            String text(u"abc");
            EXPECT_EQ(vorb::atBoundary([&] { edit(text, most); }), RESULT_OUT_OF_MEMORY) << &edit - edits;
            expectText(text, u"abc", std::to_string(&edit - edits));
        }
    }
}

TEST(String, FollowsTheProtocolOfAForeignBufferAndKeepsTheOldTextWhereAnEditFails)
{
    struct {
        const char* what;
        Edit edit;
        const char* events;
    } cases[] = {
        {"replace", [](String& s) { s.replace(1, 1, u"XY"); }, "W1 E5 E5 w5 "},
        {"append", [](String& s) { s.append(u"d"); }, "W1 E5 E5 w5 "},
        {"remove", [](String& s) { s.remove(0, 1); }, "W1 E3 E3 w3 "},
        {"resize", [](String& s) { s.resize(7, u'x'); }, "W8 E8 w8 "},
        {"unit", [](String& s) { s.setCharAt(0, u'X'); }, "W1 E4 w4 "},
        {"upper", [](String& s) { s.toUpper(); }, "W1 E4 w4 "},
        {"trim", [](String& s) { s.trim(u'c'); }, "W1 E3 w3 "},
        {"lock", [](String& s) { s.getWriteLock(9)[1] = 0, s.releaseWriteLock(-1); }, "W10 E2 w2 "},
        {"compare", [](String& s) { EXPECT_TRUE(s.compare(u"abd") < 0 && s.indexOf(u'c') == 2); }, "R r R r "},
        {"with itself", [](String& s) { EXPECT_TRUE(s == String(s) && s.contains(s)); }, "R r R r R r R r "},
        {"own text", [](String& s) { s += s; }, "R r W1 E7 E7 w7 "},
        {"moved text", [](String& s) { s = String(u"hello"); }, "W1 E6 E6 w6 "},
        {"moved adopted text", [](String& s) { EXPECT_EQ(String() = std::move(s), u"abc"); }, "R r "},
        {"sum", [](String& s) { EXPECT_EQ(s + s, u"abcabc"); }, "R r R r "},
        {"substring", [](String& s) { EXPECT_EQ(s.substring(1), u"bc"); }, "R r "},
        {"hash", [](String& s) { EXPECT_EQ(s.hashCode(), 136518U); }, "R r "},
        {"bytes", [](String& s) { EXPECT_STREQ(s.getBytes(u"UTF-8"), "abc"); }, "R r "},
        {"free", [](String& s) { s.freeExtra(); }, "F "},
        {"copy", [](String& s) { String(s) += u'd'; }, "R r "},
    };
    for (const auto& row : cases) {
        auto* buffer = new UserBuffer(u"abc");
        String text(String::AcquireShare, buffer);
        row.edit(text);
        EXPECT_EQ(buffer->m_events, row.events) << row.what;
        EXPECT_LE(buffer->m_deepest, 1) << row.what << ": a writer may wait between two locks of one thread";
        EXPECT_TRUE(buffer->isUnlocked()) << row.what;
        EXPECT_EQ(text.getData()[text.getLength()], 0) << row.what;

        // Each call of the buffer fails in turn.
        for (int failing = 1; failing <= std::count(buffer->m_events.begin(), buffer->m_events.end(), ' '); ++failing) {
            auto* weak = new UserBuffer(u"abc");
            String old(String::AcquireShare, weak);
            weak->m_failing = failing;
            EXPECT_EQ(resultOf([&] { row.edit(old); }), UserBuffer::FAILURE) << row.what << failing;
            EXPECT_TRUE(weak->isUnlocked()) << row.what << failing;
            EXPECT_EQ(weak->GetLength(), 4) << row.what << failing;
            const bool isWritten = weak->m_events.find('w') != std::string::npos;
            EXPECT_TRUE(weak->GetData()[3] == 0 || (isWritten && !weak->m_events.ends_with("w4 ")))
                << row.what << failing;
        }

        // Each allocation fails in turn, for a string that must first copy its text.
        String wrapped(String::AcquireWrap, u"abc");
        const String sharer(wrapped);
        failEachAllocation([&] { row.edit(wrapped); },
            [&](int failing) { expectText(wrapped, u"abc", row.what + std::to_string(failing)); });
        expectText(sharer, u"abc", row.what);
    }

    auto* readOnly = new UserBuffer(u"abc");
    readOnly->m_isReadOnly = true;
    String text(String::AcquireShare, readOnly);
    const Reference<IVXCharBuffer> kept(readOnly);
    text += u'd';
    EXPECT_EQ(readOnly->m_events, "R r ");
    expectText(text, u"abcd");
    std::int32_t result = 0;
    failEachAllocation([&] { result = resultOf([&] { String(text).append(u'!', 100); }); },
        [&](int failing) { EXPECT_EQ(result, RESULT_OUT_OF_MEMORY) << failing; });
}

struct Pair {
    String text;
    std::u16string model;
};

String madeOf(const std::u16string& text, unsigned kind)
{
    const int length = static_cast<int>(text.size());
    if (kind % 4 == 0)
        return String(text.c_str(), length, static_cast<int>(kind % 64));
    if (kind % 4 == 1)
        return String(String::AcquireShare, new UserBuffer(text));
    if (kind % 4 == 2)
        return String(String::AcquireShare, new util::MTCharBuffer(text.c_str(), length + 1));
    return String(String::AcquireUpper, text.c_str(), length);
}

TEST(String, EditsLikeAModelWhateverItShares)
{
    Random random;
    const auto piece = [&] {
        std::u16string text;
        for (int i = random.below(20); i > 0; --i)
            text += static_cast<char16_t>(u'A' + random.below(26));
        return text;
    };

    std::vector<Pair> pool(5);
    for (int step = 0; step < 30000; ++step) {
        Pair& target = pool[static_cast<std::size_t>(random.below(5))];
        const Pair& source = pool[static_cast<std::size_t>(random.below(5))]; // may be the same
        String& one = target.text;
        std::u16string& model = target.model;
        const String& other = source.text;
        const int start = random.below(one.getLength() + 1), count = random.below(one.getLength() - start + 1);
        const int from = random.below(other.getLength() + 1);
        const std::size_t at = static_cast<std::size_t>(start), n = static_cast<std::size_t>(count);
        const std::u16string text = piece(), all = source.model, tail = all.substr(static_cast<std::size_t>(from));
        const std::function<void()> operations[] = {
            [&] { one.remove(start, count), model.erase(at, n); },
            [&] { one.setAddRef(other), model = all; },
            [&] {
                String made = madeOf(text, random());
                one.swap(made), model = text;
            },
            [&] { one = other, model = all; },
            [&] { one.replace(start, count, other, from), model.replace(at, n, tail); },
            [&] { one.replace(start, count, text.data(), static_cast<int>(text.size())), model.replace(at, n, text); },
            [&] { one.insert(start, other), model.insert(at, all); },
            [&] { one += other, model += all; },
            [&] { one.append(u'X', count), model.append(n, u'X'); },
            [&] { one.resize(count, u'R'), model.resize(n, u'R'); },
            [&] { one = other.substring(from) + one, model = tail + model; },
            [&] { one.setTo(String::AcquireCopy, other, from), model = tail; },
            [&] {
                one.trim(u'X', String::TrimLeading);
                model.erase(0, std::min(model.find_first_not_of(u'X'), model.size()));
            },
            [&] { one.prepend(one.getData() + start, count), model.insert(0, std::u16string(model.substr(at, n))); },
            [&] {
                one.replace(start, count, one, from % (one.getLength() + 1)),
                    model.replace(at, n, model.substr(static_cast<std::size_t>(from) % (model.size() + 1)));
            },
        };
        const int operation = random.below(one.getLength() > 300 ? 3 : 15);
        operations[operation]();
        for (const Pair& pair : pool) {
            ASSERT_EQ(pair.text, pair.model) << "step " << step << " operation " << operation;
            ASSERT_EQ(pair.text.getData()[pair.model.size()], 0) << "step " << step << " operation " << operation;
        }
    }
}

TEST(String, LetsThreadsEditWhatTheyShare)
{
    for (const bool isLocked : {false, true}) {
        const std::u16string base(100, u'-');
        const String common(isLocked ? String(String::AcquireShare, new util::MTCharBuffer(base.c_str(), 101))
                                     : String(std::u16string_view(base)));
        inThreads(3, [&](int thread) {
            String own(common);
            for (int round = 0; round < 300; ++round) {
                const String before(own); // shared again: the next write copies
                own.setCharAt(round % 100, static_cast<char16_t>(u'0' + thread));
                own.append(u'x').remove(100, 1);
                ASSERT_EQ(before.getLength(), 100);
                if (round % 7 == 0)
                    own.setAddRef(before);
                if (round % 50 == 0)
                    own.freeExtra();
            }
            ASSERT_EQ(own.findFirstNotOf(thread == 0 ? u"-0" : thread == 1 ? u"-1" : u"-2"), -1);
        });
        EXPECT_EQ(common, base);
    }
}

} // namespace
} // namespace vx
