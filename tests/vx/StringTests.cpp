#include "tests/AllocationProbe.h"
#include "tests/Random.h"
#include "tests/vx/Common.h"
#include "vx/IVXComparable.h"
#include "vx/Str1.h"
#include "vx/util/MTCharBuffer.h"

#include <sstream>
#include <unordered_set>

namespace vx {
namespace {

using util::RWCharBuffer;

constexpr int LARGEST = std::numeric_limits<int>::max(), LEAST = std::numeric_limits<int>::min();

static_assert(std::destructible<String> && std::is_nothrow_copy_constructible_v<String>);

template <class Text, class... Others>
constexpr bool takesNone = (!std::is_constructible_v<Text, Others> && ...);
template <class Text, class... Others>
constexpr bool convertsAll = (std::is_convertible_v<Others, Text> && ...);
static_assert(takesNone<String, std::nullptr_t, bool, char, wchar_t, char8_t, char32_t, const void*>);
static_assert(takesNone<Str1, std::nullptr_t, bool, char, wchar_t, char8_t, char16_t, char32_t, const void*>);
static_assert(!std::is_convertible_v<int, String> && !std::is_convertible_v<char16_t, String>);
static_assert(!std::is_constructible_v<String, const char16_t*, String::AcquireMode>);
static_assert(convertsAll<String, const char16_t*, const char*, const char8_t*, std::string, std::u8string>);
static_assert(convertsAll<Str1, const char16_t*, const char*, const char8_t*, std::string, std::u8string>);

// A truth value in the place of a length, a count or a position.
// clang-format off
#define RANGE 0, -1,
#define TAKES_FLAG(name, before) (requires(const T& t) { t.name(before u'x', true); } \
    || requires(const T& t) { t.name(before t, true); } || requires(const T& t) { t.name(before u"x", -1, true); })
template <class T>
concept TakesFlagsAsNumbers = TAKES_FLAG(indexOf, ) || TAKES_FLAG(lastIndexOf, ) || TAKES_FLAG(findFirstOf, )
    || TAKES_FLAG(findFirstOfCase, ) || TAKES_FLAG(findFirstNotOf, ) || TAKES_FLAG(findLastOf, )
    || TAKES_FLAG(findLastNotOf, ) || TAKES_FLAG(regionMatches, RANGE) || TAKES_FLAG(regionCompare, RANGE);
// clang-format on
static_assert(!TakesFlagsAsNumbers<String> && !TakesFlagsAsNumbers<Str1>);

TEST(String, SharesOneBufferAmongEmptyTexts)
{
    const char16_t* shared = String().getData();
    const String empties[] = {String(0), String(LEAST), String(u""), String(static_cast<const char16_t*>(nullptr)),
        String(u"abc", 0), String(u"abc", -2), String(String::AcquireWrap, u""), String(""),
        String(static_cast<util::ICharBuffer*>(nullptr)), String(u"abc").substring(2, 1), String(std::string_view()),
        String::CVXString(u""), String("abc", 0, u"nobody's")};
    AllocationProbe probe;
    for (const String& text : empties)
        EXPECT_TRUE(text.getData() == shared && text.isEmpty() && String(text).getData() == shared) << &text - empties;
    EXPECT_EQ(probe.count(), 0);
    EXPECT_EQ(*shared, 0);
}

TEST(String, TakesItsSourceAsTheModeSays)
{
    constexpr auto ANY_OTHER = static_cast<String::AcquireMode>(7);
    const char16_t* const text = u"abcde";
    String source(text);
    const Reference<RWCharBuffer> buffer(new RWCharBuffer(text, 6)); // only a sharer leaves out the terminator
    for (const auto mode :
        {String::AcquireCopy, String::AcquireShare, String::AcquireWrap, String::AcquireUpper, ANY_OTHER}) {
        SCOPED_TRACE(mode);
        const bool isUpper = mode == String::AcquireUpper;
        const char16_t* whole = isUpper ? u"ABCDE" : text;

        const String ofText(mode, text);
        EXPECT_EQ(ofText, whole);
        EXPECT_EQ(ofText.getData() == text, mode == String::AcquireWrap);
        String set(u"old");
        EXPECT_EQ(set.setTo(mode, text, 5), whole);
        EXPECT_EQ(set.getData() == text, mode == String::AcquireWrap);

        String range(mode, source, 1, 3);
        EXPECT_EQ(range, mode == String::AcquireShare ? text : isUpper ? u"BC" : u"bc");
        const auto at = range.getData() - source.getData();
        EXPECT_EQ(at == 0, mode == String::AcquireShare);
        EXPECT_EQ(at == 1, mode == String::AcquireWrap);
        EXPECT_EQ(String(u"old").setTo(mode, source, 1, 3), range);
        range += u'!';
        EXPECT_EQ(range.getData()[range.getLength()], 0);
        EXPECT_EQ(source, text);

        String ofBuffer(mode, buffer.get());
        const bool isShared = mode == String::AcquireShare;
        EXPECT_EQ(ofBuffer.getLength(), isShared ? 5 : 6);
        EXPECT_EQ(ofBuffer.getData() == buffer->getData(), isShared || mode == String::AcquireWrap);
        EXPECT_EQ(buffer->GetRefCount(), isShared ? 2U : 1U);
        ofBuffer = u"x";
        EXPECT_TRUE(buffer->getLength() == 6 && buffer->GetRefCount() == 1);
    }
}

TEST(String, ClipsRanges)
{
    const String source(u"abcde");
    const std::tuple<int, int, const char16_t*> cases[]
        = {{0, -1, u"abcde"}, {1, -1, u"bcde"}, {1, 99, u"bcde"}, {2, 1, u""}, {5, 5, u""}, {99, -1, u""}, {-1, 3, u""},
            {LARGEST, LARGEST, u""}, {-2, 2, u"ab"}, {LEAST, -1, u"abcde"}, {0, LEAST, u""}};
    for (const auto& [start, end, text] : cases) {
        EXPECT_EQ(source.substring(start, end), text) << start << ' ' << end;
        EXPECT_EQ(String(String::AcquireWrap, source, start, end), text) << start << ' ' << end;
        EXPECT_EQ(String(u"old").setTo(String::AcquireUpper, source, start, end).getLength(), String(text).getLength());
    }
}

TEST(String, CopiesEachPart)
{
    const std::u16string units = u"0123456789abcdefghijklmnopqrstuvwxyz";
    const String whole(String::AcquireWrap, units.c_str()); // AddressSanitizer sees who reads beyond it
    const int length = whole.getLength();
    for (int start = 0; start <= length; ++start) {
        for (int end = start; end <= length; ++end) {
            const String part = whole.substring(start, end);
            EXPECT_EQ(part, units.substr(std::size_t(start), std::size_t(end - start))) << start << ' ' << end;
            EXPECT_EQ(part.getData()[end - start], 0);
        }
    }
}

TEST(String, SharesUntilOneWrites)
{
    String a(u"abc"), b(a);
    EXPECT_EQ(a.getData(), b.getData());
    b.replace(1, 1, u"X");
    EXPECT_TRUE(a == u"abc" && b == u"aXc");

    String c;
    c = a;
    EXPECT_NE(c.getData(), a.getData()) << "assignment copies the text";
    const char16_t* data = c.getData();
    c.setCharAt(0, u'C');
    EXPECT_EQ(c.getData(), data);
    c.setAddRef(a).setAddRef(c);
    EXPECT_EQ(c.getData(), a.getData());
    EXPECT_EQ(c.toString().getData(), a.getData());

    const auto literalText = literal(u"literal");
    String text(literalText);
    EXPECT_EQ(text.getData(), literalText.text);
    EXPECT_TRUE(text.isWritable() && text.IsWritable() == 1);
    text.toUpper();
    EXPECT_TRUE(text == u"LITERAL" && std::u16string_view(literalText.text) == u"literal");

    data = text.getData();
    a = std::move(text);
    EXPECT_EQ(a.getData(), data);
    a = String(literalText);
    EXPECT_NE(a.getData(), literalText.text) << "an assignment must not refer to the memory of another owner";
    String roomy(u"x", -1, 200);
    b.setAddRef(roomy);
    AllocationProbe probe;
    roomy.freeExtra();
    EXPECT_EQ(probe.count(), 0) << "another reads the storage";
    b = String();
    b.setAddRef(a);
    roomy.freeExtra();
    EXPECT_EQ(probe.lastRawSize(), 32U);
}

TEST(String, IsABufferToOtherComponents)
{
    String text(u"abc");
    const String sharer(text);
    IVXCharBuffer& view = text;
    char16_t* data = nullptr;
    ASSERT_EQ(view.GetWriteLock(40, &data), RESULT_OK);
    EXPECT_NE(data, sharer.getData());
    std::fill_n(data, 40, u'x');
    ASSERT_EQ(view.EnsureCapacity(100, &data), RESULT_OK);
    data[40] = u'y';
    EXPECT_EQ(view.ReleaseWriteLock(41), RESULT_OK);
    EXPECT_EQ(text, std::u16string(40, u'x') + u'y');
    ASSERT_EQ(view.GetWriteLock(0, &data), RESULT_OK);
    EXPECT_EQ(view.ReleaseWriteLock(0), RESULT_OK);
    EXPECT_TRUE(view.GetLength() == 0 && view.GetData()[0] == 0);
    data = const_cast<char16_t*>(u"stale");
    EXPECT_EQ(view.GetWriteLock(LARGEST, &data), RESULT_OUT_OF_MEMORY);
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(view.FreeExtra(), RESULT_OK);

    String empty(String::AcquireShare, new RWCharBuffer);
    EXPECT_EQ(empty.getLength(), 0) << "the held length is 0, and the string's never below it";
    EXPECT_TRUE(empty == u"" && empty.indexOf(u'x') < 0 && empty.lastIndexOf(u"x") < 0 && empty.hashCode() == 0);
    auto* unused = new RWCharBuffer(4);
    std::copy_n(u"zzz", 4, unused->getWriteLock(4));
    unused->releaseWriteLock(0);
    String(String::AcquireShare, unused).swap(empty);
    empty.toUpper();
    EXPECT_EQ(unused->getData()[1], u'z') << "it is not part of the text";
    EXPECT_EQ((empty += u"abc"), u"abc");
    EXPECT_EQ(empty.getDataT(1), empty.getReadLockT(1));

    const Reference<String> held(new String(u"abc"));
    EXPECT_NE(Reference<IVXComparable>(held->GetUnknown()), nullptr);
    EXPECT_EQ(Reference<IVXCharBuffer>(held->GetUnknown()).get(), held.get());
    const Reference<Object> clone(held->clone());
    EXPECT_TRUE(clone->equals(*held) && clone.get() != held.get());
    struct Derived : String {
        using String::operator=;
        char16_t* getWriteLock(int minimumLength) override
        {
            ++writes;
            return String::getWriteLock(minimumLength);
        }
        int writes = 0;
    };
    EXPECT_THROW(Derived().clone(), CloneNotSupportedException);
    Derived writer;
    writer = String(u"moved");
    EXPECT_TRUE(writer == u"moved" && writer.writes == 1);
}

TEST(String, HashesASampleOfItsUnits)
{
    EXPECT_EQ(String(u"abc").hashCode(), 136518U);
    EXPECT_EQ(String(u"\uFFFF").hashCode(), 0xFFFFU);
    EXPECT_EQ(String(u"ABC\u00C9").hashCode(true), String(u"abc\u00E9").hashCode());
    const std::pair<int, int> cases[] = {{1, 1}, {7, 1}, {8, 1}, {9, 1}, {12, 1}, {22, 1}, {31, 1}, {32, 1}, {63, 1},
        {64, 2}, {95, 2}, {96, 3}, {127, 3}, {128, 4}, {10000, 312}};
    for (const auto& [length, step] : cases) {
        std::u16string units;
        std::uint32_t hash = 0;
        for (int index = 0; index < length; ++index) {
            units += static_cast<char16_t>(0xFFFF - index * 2731); // from all parts of the range
            if (index % step == 0)
                hash = hash * 37 + units.back();
        }
        EXPECT_EQ(String(units).hashCode(), hash) << length;
    }
}

TEST(String, ComparesByUnitAndThenByLength)
{
    const String abc(u"abc");
    const std::tuple<const char16_t*, int, int> cases[]
        = {{u"abc", 0, 0}, {u"abd", -1, -1}, {u"ab", 1, 1}, {u"abcde", -2, -2}, {u"", 3, 3}, {u"ABC", 1, 0},
            {u"ABD", 1, -1}, {u"Abcd", 1, -1}, {u"\u00E0", -1, -1}, {u"\xD83D\xDE00", -1, -1}};
    for (const auto& [text, exact, folded] : cases) {
        const String other(text);
        EXPECT_EQ(abc.compare(other), exact) << other;
        EXPECT_EQ(abc.compare(text, true), folded) << other;
        EXPECT_EQ(abc.compareTo(other), exact) << other;
        EXPECT_EQ(abc.equals(text, true), folded == 0) << other;
        EXPECT_EQ(abc.equals(static_cast<const Object&>(other)), exact == 0) << other;
    }
    EXPECT_EQ(String(u"\uFFFF").compare(u"\xD83D\xDE00"), 1) << "by unit, not by code point";
    EXPECT_TRUE(String(u"\u0451\u00C9\u01C4").equals(u"\u0401\u00E9\u01C6", true));
    EXPECT_FALSE(String(u"\u00DF").equals(u"ss", true));
    EXPECT_FALSE(String(u"a\0b", 3).equals(u"a\0c", 3, true)) << "a zero unit ends no comparison";
    EXPECT_FALSE(abc.equals(Exception()));
    EXPECT_TRUE(abc.equals(static_cast<const Object&>(abc)));
    EXPECT_EQ(saidBy<CastFailedException>([&] { abc.compareTo(Exception()); }), "");

    const std::tuple<int, int, const char16_t*, int, int, int> regions[]
        = {{1, 2, u"xbc", -1, 1, 0}, {1, -1, u"bc", -1, 0, 0}, {1, 99, u"bcd", 2, 0, 0}, {-1, -1, u"bc", -1, 2, 0},
            {99, 0, u"", -1, 5, 0}, {0, 2, u"abc", -1, 0, -1}, {0, 3, u"ab", -1, 0, 1}, {0, -1, u"abd", -1, 0, -1},
            {0, LARGEST, u"abc", LEAST, 0, 3}, {LEAST, LARGEST, u"abc", 3, LEAST, 0}, {0, -1, nullptr, 5, 0, 3}};
    for (const auto& row : regions) {
        SCOPED_TRACE(&row - regions);
        const auto& [start, count, text, length, from, order] = row;
        EXPECT_EQ(abc.regionCompare(start, count, text, length, from), order);
        EXPECT_EQ(abc.regionMatches(start, count, text, length, from), order == 0);
        EXPECT_EQ(abc.regionMatches(start, count, String(text, length), from, true), order == 0);
    }
    EXPECT_TRUE(abc.startsWith(u"") && abc.endsWith(u"") && !abc.contains(u"") && abc.startsWith(u"ABx", 2, true));
    EXPECT_TRUE(
        abc.endsWith(u"bc") && abc.endsWith(u"BC", true) && !abc.endsWith(u"xabc") && abc.contains(u"BC", true));
    EXPECT_TRUE(abc.indexOf(u"BC", -1, 0, true) == 1 && abc.indexOf(u'C', 0, true) == 2);
    EXPECT_TRUE(abc.startsWith(u"AB", true) && Str1(abc.view()).startsWith(u"AB", true) && !abc.startsWith(u"AB"));
    EXPECT_FALSE(abc.startsWith(u"abcd") || abc.startsWith(u"b") || abc.endsWith(u"ab") || abc.contains(u"ac"));
}

TEST(String, SearchesBeyondWhatTheStandardLibraryDoes)
{
    const String text(u"abab");
    EXPECT_EQ(text.indexOf(static_cast<const char16_t*>(nullptr), 3), -1);
    EXPECT_EQ(text.indexOf(u"ababa", LARGEST), -1) << "a length beyond the text's";
    EXPECT_EQ(text.lastIndexOf(u"ababa", LARGEST), -1);
    EXPECT_EQ(text.findFirstOfCase(u"AB"), -1);
    // Letters beyond ASCII whose other case is in ASCII: the Kelvin sign and the dotted capital I.
    EXPECT_EQ(String(u"----------------------------------\u212A\u0130").indexOf(u"ki", -1, 0, true), 34);
    EXPECT_EQ(String(u"\u0415\u0416").findFirstOf(u"\u0436", -1, 0, true), 1);
    EXPECT_EQ(String(u"\u0116").findFirstOf(u"\u0016", -1, 0, false), -1);
}

TEST(String, SearchesLikeTheStandardLibrary)
{
    Random random;
    constexpr char16_t LETTERS[] = u"aAbB\u00E9\u00C9\u0436\u0416";
    const auto textOf = [&](int longest, int letters) {
        std::u16string text;
        for (int i = static_cast<int>(random() % static_cast<unsigned>(longest + 1)); i > 0; --i)
            text += LETTERS[random() % static_cast<unsigned>(letters)];
        return text;
    };
    const auto found = [](std::size_t place) { return place != std::u16string::npos ? static_cast<int>(place) : -1; };
    for (int round = 0; round < 20000; ++round) {
        const int letters = round % 2 == 0 ? 2 : 8;
        std::u16string plain = textOf(round % 5 == 0 ? 150 : 20, letters);
        std::u16string part = textOf(round % 3 == 0 ? 8 : 4, letters);
        const bool ignoreCase = random() % 2 == 0;
        const int borders[] = {-1, LEAST, LARGEST}; // the end, the start, and beyond the end
        const int start = round % 4 == 0 ? borders[random() % 3] : static_cast<int>(random() % (plain.size() + 2));
        const auto from = start == LEAST ? 0 : static_cast<std::size_t>(start);
        const String text(plain), pattern(part);
        if (ignoreCase) {
            for (std::u16string* folded : {&plain, &part}) {
                for (char16_t& unit : *folded)
                    unit = LETTERS[std::u16string_view(LETTERS).find(unit) & ~std::size_t {1}];
            }
        }
        const bool isEmpty = part.empty();
        const auto clip = [&](std::size_t place) { return isEmpty || plain.empty() ? std::u16string::npos : place; };
        const std::size_t end = std::min(from, plain.empty() ? 0 : plain.size() - 1) + 1;
        const std::u16string head = plain.substr(0, start == LEAST ? 0 : end);
        ASSERT_EQ(text.indexOf(pattern, start, ignoreCase), found(clip(plain.find(part, from))))
            << text << ' ' << pattern;
        ASSERT_EQ(text.lastIndexOf(pattern, start, ignoreCase), found(clip(head.rfind(part))))
            << text << ' ' << pattern << start;
        ASSERT_EQ(text.findFirstOf(pattern, start, ignoreCase), found(clip(plain.find_first_of(part, from))));
        ASSERT_EQ(text.findFirstNotOf(pattern, start, ignoreCase), found(clip(plain.find_first_not_of(part, from))));
        ASSERT_EQ(text.findLastOf(pattern, start, ignoreCase), found(clip(head.find_last_of(part))));
        ASSERT_EQ(text.findLastNotOf(pattern, start, ignoreCase), found(clip(head.find_last_not_of(part))));
        if (!isEmpty) {
            ASSERT_EQ(text.indexOf(pattern[0], start, ignoreCase), found(clip(plain.find(part[0], from))));
            ASSERT_EQ(text.lastIndexOf(pattern[0], start, ignoreCase), found(clip(head.rfind(part[0]))));
        }
        ASSERT_EQ(text.compare(pattern) <=> 0, text.view() <=> pattern.view());
        ASSERT_EQ(text.startsWith(pattern, ignoreCase), plain.starts_with(part));
        ASSERT_EQ(text.endsWith(pattern, ignoreCase), plain.ends_with(part));
    }
}

TEST(String, SearchesTextsThatRepeatThemselves)
{
    Random random;
    for (int round = 0; round < 400; ++round) {
        const auto repeated = [&](int length) {
            std::u16string text;
            for (const int period = 1 + random.below(5); length > 0; --length)
                text += length % period == 0 ? u'\u0436' : u'a';
            return text;
        };
        std::u16string plain = repeated(2000 + random.below(2000)), part = repeated(40 + random.below(300));
        const auto placeIn = [&](const std::u16string& text) { return random() % text.size(); };
        for (int changes = random.below(3); changes > 0; --changes)
            part[placeIn(part)] = u'b';
        for (int changes = random.below(3); changes > 0; --changes)
            plain.insert(placeIn(plain), part.substr(placeIn(part) / 2));
        if (round % 3 == 0)
            plain.insert(placeIn(plain), part);
        const String text(plain), pattern(part);
        String capitals(part);
        capitals.toUpper();
        const auto first = static_cast<int>(plain.find(part)), last = static_cast<int>(plain.rfind(part));
        ASSERT_EQ(text.indexOf(pattern), first);
        ASSERT_EQ(text.lastIndexOf(pattern), last);
        ASSERT_EQ(text.indexOf(capitals, 0, true), first);
        ASSERT_EQ(text.lastIndexOf(capitals, -1, true), last);
    }
}

template <class Text>
class Texts : public testing::Test {
};
using TextKinds = testing::Types<String, Str1>;
TYPED_TEST_SUITE(Texts, TextKinds);

TYPED_TEST(Texts, WorkWithTheStandardLibraryAndEachOther)
{
    using Text = TypeParam;
    const Text text(u"b\u20AC");
    std::ostringstream stream;
    stream << text << Text();
    EXPECT_EQ(stream.str(), "b\xE2\x82\xAC");
    Text utf8 = u8"b\u20AC";
    EXPECT_TRUE(utf8 == text && Text(std::string("b\xE2\x82\xAC")) == text && Text(std::u8string(u8"y")) == u"y");
    EXPECT_TRUE(text == std::u16string(u"b\u20AC") && u"b\u20AC" == text && text != u"b" && text != Text());
    EXPECT_TRUE(text > u"b" && text < std::u16string_view(u"c") && text <= Text(u"b\u20AC") && text >= u"a");
    EXPECT_TRUE(text != static_cast<const char16_t*>(nullptr) && Text() == static_cast<const char16_t*>(nullptr));
    EXPECT_TRUE(Text(u"a\0b", 3) != u"a" && std::hash<Text>()(text) == String(text.view()).hashCode());
    EXPECT_TRUE(Str1(text.view()) == text && text == String(text.view()) && Str1(u"c") > text && text < String(u"c"));
    std::unordered_set<Text> set {text, u"x", u"b\u20AC"};
    EXPECT_EQ(set.size(), 2U);
    std::map<Text, int> map {{u"b", 1}, {u"a", 2}, {u"ab", 3}};
    EXPECT_EQ(map.begin()->first, u"a");
    Text sum;
    ((sum += text) += u"-") += std::u16string(u"x");
    EXPECT_EQ(sum += String(u"y"), u"b\u20AC-xy");
}

} // namespace
} // namespace vx
