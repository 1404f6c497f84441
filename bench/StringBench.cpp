#include "vx/String.h"

#ifdef VX_BENCH_ICU
#include <unicode/unistr.h>
#endif
#ifdef VX_BENCH_QT
#include <QHash>
#include <QString>
#endif

#include <benchmark/benchmark.h>

#include <charconv>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

namespace {

/// What the text types call the operations that are measured, where most of them agree. Positions count 16-bit units.
template <class Type, class Unit = char16_t>
struct Common {
    using Text = Type;
    static void append(Text& text, char16_t unit) { text.append(Unit(unit)); }
    static void append(Text& text, const Text& piece) { text.append(piece); }
    static void insert(Text& text, int position, const Text& piece) { text.insert(position, piece); }
    static void remove(Text& text, int position, int count) { text.remove(position, count); }
    static Text sum(const Text& left, const Text& right) { return left + right; }
    static void assign(Text& text, const Text& other) { text = other; }
    static bool equals(const Text& left, const Text& right) { return left == right; }
    static int compare(const Text& left, const Text& right) { return left.compare(right); }
    static int find(const Text& text, char16_t unit) { return text.indexOf(Unit(unit)); }
    static int find(const Text& text, const Text& piece) { return text.indexOf(piece); }
    static int findLast(const Text& text, char16_t unit) { return text.lastIndexOf(Unit(unit)); }
    static int findLast(const Text& text, const Text& piece) { return text.lastIndexOf(piece); }
    static void upper(Text& text) { text.toUpper(); }
    static void trim(Text& text) { text.trim(); }
};

struct Vx : Common<vx::String> {
    static Text make(std::u16string_view text) { return Text(text); }
    static Text withRoom(int capacity) { return Text(capacity); }
    static int length(const Text& text) { return text.getLength(); }
    static Text part(const Text& text, int start, int end) { return text.substring(start, end); }
    static bool equalsFolded(const Text& left, const Text& right) { return left.equals(right, true); }
    static int findFolded(const Text& text, const Text& piece) { return text.indexOf(piece, 0, true); }
    static int findFirstOf(const Text& text, const char16_t* set) { return text.findFirstOf(set); }
    static std::size_t hash(const Text& text) { return text.hashCode(); }
    static std::string utf8(const Text& text) { return text.toUtf8(); }
    static Text fromUtf8(std::string_view bytes) { return Text(bytes); }
};

struct Std : Common<std::u16string> {
    static Text make(std::u16string_view text) { return Text(text); }
    static Text withRoom(int capacity)
    {
        Text text;
        text.reserve(static_cast<std::size_t>(capacity));
        return text;
    }
    static int length(const Text& text) { return static_cast<int>(text.size()); }
    static void append(Text& text, char16_t unit) { text += unit; }
    static void append(Text& text, const Text& piece) { text += piece; }
    static void insert(Text& text, int position, const Text& piece)
    {
        text.insert(static_cast<std::size_t>(position), piece);
    }
    static void remove(Text& text, int position, int count)
    {
        text.erase(static_cast<std::size_t>(position), static_cast<std::size_t>(count));
    }
    static Text part(const Text& text, int start, int end)
    {
        return text.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(end - start));
    }
    static int find(const Text& text, char16_t unit) { return static_cast<int>(text.find(unit)); }
    static int find(const Text& text, const Text& piece) { return static_cast<int>(text.find(piece)); }
    static int findLast(const Text& text, char16_t unit) { return static_cast<int>(text.rfind(unit)); }
    static int findLast(const Text& text, const Text& piece) { return static_cast<int>(text.rfind(piece)); }
    static int findFirstOf(const Text& text, const char16_t* set) { return static_cast<int>(text.find_first_of(set)); }
    static std::size_t hash(const Text& text) { return std::hash<Text>()(text); }
    static void trim(Text& text)
    {
        constexpr const char16_t* BLANKS = u" \t\r\n";
        text.erase(text.find_last_not_of(BLANKS) + 1);
        text.erase(0, text.find_first_not_of(BLANKS));
    }
};

#ifdef VX_BENCH_ICU
struct Icu : Common<icu::UnicodeString> {
    static Text make(std::u16string_view text) { return Text(text.data(), static_cast<std::int32_t>(text.size())); }
    static Text withRoom(int capacity) { return Text(capacity, u'\0', 0); }
    static int length(const Text& text) { return text.length(); }
    static Text part(const Text& text, int start, int end) { return Text(text, start, end - start); }
    static bool equalsFolded(const Text& left, const Text& right) { return left.caseCompare(right, 0) == 0; }
    static std::size_t hash(const Text& text) { return static_cast<std::size_t>(text.hashCode()); }
    static std::string utf8(const Text& text)
    {
        std::string bytes;
        text.toUTF8String(bytes);
        return bytes;
    }
    static Text fromUtf8(std::string_view bytes)
    {
        return Text::fromUTF8(icu::StringPiece(bytes.data(), static_cast<std::int32_t>(bytes.size())));
    }
};
#endif

#ifdef VX_BENCH_QT
struct Qt5 : Common<QString, QChar> {
    static Text make(std::u16string_view text)
    {
        return Text(reinterpret_cast<const QChar*>(text.data()), static_cast<int>(text.size()));
    }
    static Text withRoom(int capacity)
    {
        Text text;
        text.reserve(capacity);
        return text;
    }
    static int length(const Text& text) { return text.size(); }
    static Text part(const Text& text, int start, int end) { return text.mid(start, end - start); }
    static bool equalsFolded(const Text& left, const Text& right)
    {
        return left.compare(right, Qt::CaseInsensitive) == 0;
    }
    static int findFolded(const Text& text, const Text& piece) { return text.indexOf(piece, 0, Qt::CaseInsensitive); }
    static std::size_t hash(const Text& text) { return qHash(text); }
    static void upper(Text& text) { text = std::move(text).toUpper(); }
    static void trim(Text& text) { text = std::move(text).trimmed(); }
    static QByteArray utf8(const Text& text) { return text.toUtf8(); }
    static Text fromUtf8(const QByteArray& bytes) { return Text::fromUtf8(bytes); }
};
#endif

/// Words, so that a first letter is met often before the whole pattern is.
std::u16string words(std::int64_t length)
{
    constexpr std::u16string_view WORDS = u"the quick brown fox jumps over the lazy dog and then it sleeps ";
    std::u16string text;
    while (text.size() < static_cast<std::size_t>(length))
        text += WORDS;
    text.resize(static_cast<std::size_t>(length));
    return text;
}

void countUnits(benchmark::State& state)
{
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

/// Measures what gives a text.
template <class Make>
void makeEach(benchmark::State& state, Make make)
{
    for (auto _ : state) {
        auto text = make();
        benchmark::DoNotOptimize(text);
    }
    countUnits(state);
}

template <class Type>
void construct(benchmark::State& state)
{
    const std::u16string source = words(state.range(0));
    makeEach(state, [&] { return Type::make(source); });
}

template <class Type>
void copy(benchmark::State& state)
{
    const auto source = Type::make(words(state.range(0)));
    for (auto _ : state) {
        typename Type::Text text(source);
        benchmark::DoNotOptimize(text);
    }
}

template <class Type>
void copyAndWrite(benchmark::State& state)
{
    const auto source = Type::make(words(state.range(0)));
    makeEach(state, [&] {
        typename Type::Text text(source);
        Type::append(text, u'!');
        return text;
    });
}

template <class Type>
void assign(benchmark::State& state)
{
    const auto source = Type::make(words(state.range(0)));
    typename Type::Text text;
    for (auto _ : state) {
        Type::assign(text, source);
        benchmark::DoNotOptimize(text);
    }
    countUnits(state);
}

/// Measures appending to a text that `make` gives, by `step` units each time.
template <class Type, class Make, class Append>
void appendEach(benchmark::State& state, int step, Make make, Append append)
{
    for (auto _ : state) {
        auto text = make();
        for (std::int64_t i = 0; i < state.range(0); i += step)
            append(text, i);
        if (Type::length(text) != state.range(0))
            state.SkipWithError("wrong length");
    }
    countUnits(state);
}

template <class Type>
void appendLetter(typename Type::Text& text, std::int64_t number)
{
    Type::append(text, static_cast<char16_t>(u'a' + number % 26));
}

template <class Type>
void appendUnits(benchmark::State& state)
{
    appendEach<Type>(
        state, 1, [] { return typename Type::Text(); }, appendLetter<Type>);
}

template <class Type>
void appendUnitsIntoRoom(benchmark::State& state)
{
    const auto make = [&] { return Type::withRoom(static_cast<int>(state.range(0))); };
    appendEach<Type>(state, 1, make, appendLetter<Type>);
}

template <class Type>
void appendPieces(benchmark::State& state)
{
    const auto piece = Type::make(words(16));
    const auto append = [&](auto& text, std::int64_t) { Type::append(text, piece); };
    appendEach<Type>(
        state, 16, [] { return typename Type::Text(); }, append);
}

template <class Type>
void insertAndRemove(benchmark::State& state)
{
    auto text = Type::make(words(state.range(0)));
    const auto piece = Type::make(u"inserted");
    const int middle = Type::length(text) / 2;
    for (auto _ : state) {
        Type::insert(text, middle, piece);
        Type::remove(text, middle, 8);
        benchmark::DoNotOptimize(text);
    }
    if (Type::length(text) != state.range(0))
        state.SkipWithError("wrong length");
    countUnits(state);
}

template <class Type>
void concatenate(benchmark::State& state)
{
    const auto left = Type::make(words(state.range(0) / 2));
    const auto right = Type::make(words(state.range(0) / 2));
    makeEach(state, [&] { return Type::sum(left, right); });
}

template <class Type>
void substring(benchmark::State& state)
{
    const auto source = Type::make(words(state.range(0) + 2));
    makeEach(state, [&] { return Type::part(source, 1, static_cast<int>(state.range(0)) + 1); });
}

/// Measures what has to be true.
template <class Test>
void require(benchmark::State& state, Test&& test)
{
    for (auto _ : state) {
        if (!test())
            state.SkipWithError("another result");
    }
    countUnits(state);
}

template <class Type>
void equals(benchmark::State& state)
{
    const auto left = Type::make(words(state.range(0)));
    const auto right = Type::make(words(state.range(0)));
    require(state, [&] { return Type::equals(left, right); });
}

template <class Type>
void equalsFolded(benchmark::State& state)
{
    const auto left = Type::make(words(state.range(0)));
    auto right = Type::make(words(state.range(0)));
    Type::upper(right);
    require(state, [&] { return Type::equalsFolded(left, right); });
}

template <class Type>
void compare(benchmark::State& state)
{
    const auto left = Type::make(words(state.range(0) - 1) + u'a');
    const auto right = Type::make(words(state.range(0) - 1) + u'b');
    require(state, [&] { return Type::compare(left, right) < 0; });
}

template <class Type>
void findUnit(benchmark::State& state)
{
    const auto text = Type::make(words(state.range(0) - 1) + u'#');
    require(state, [&] { return Type::find(text, u'#') == state.range(0) - 1; });
}

template <class Type>
void findText(benchmark::State& state)
{
    const auto text = Type::make(words(state.range(0) - 6) + u"thence");
    const auto piece = Type::make(u"thence");
    require(state, [&] { return Type::find(text, piece) == state.range(0) - 6; });
}

/// Greek, Cyrillic and Latin in turn, without regard to case.
template <class Type>
void findFoldedInScripts(benchmark::State& state)
{
    constexpr std::u16string_view WORDS = u"η θάλασσα είναι ήρεμη, а ёжик нёс в туман узелок, die schöne Straße führt ";
    std::u16string source;
    while (source.size() < static_cast<std::size_t>(state.range(0)))
        source += WORDS;
    source.resize(static_cast<std::size_t>(state.range(0)) - 6);
    const auto text = Type::make(source + u"Λιμάνι");
    const auto piece = Type::make(u"λΙΜάνι");
    require(state, [&] { return Type::findFolded(text, piece) == state.range(0) - 6; });
}

template <class Type>
void findLastUnit(benchmark::State& state)
{
    const auto text = Type::make(u'#' + words(state.range(0) - 1));
    require(state, [&] { return Type::findLast(text, u'#') == 0; });
}

template <class Type>
void findLastText(benchmark::State& state)
{
    const auto text = Type::make(u"thence" + words(state.range(0) - 6));
    const auto piece = Type::make(u"thence");
    require(state, [&] { return Type::findLast(text, piece) == 0; });
}

template <class Type>
void findFirstOf(benchmark::State& state)
{
    const auto text = Type::make(words(state.range(0) - 1) + u';');
    require(state, [&] { return Type::findFirstOf(text, u",;:=") == state.range(0) - 1; });
}

template <class Type>
void hash(benchmark::State& state)
{
    const auto text = Type::make(words(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(Type::hash(text));
    countUnits(state);
}

template <class Type>
void upper(benchmark::State& state)
{
    const auto source = Type::make(words(state.range(0)));
    auto text = Type::make(words(state.range(0)));
    for (auto _ : state) {
        Type::assign(text, source);
        Type::upper(text);
        benchmark::DoNotOptimize(text);
    }
    countUnits(state);
}

template <class Type>
void trim(benchmark::State& state)
{
    const auto source = Type::make(u" \t" + words(state.range(0) - 5) + u"!\r\n");
    auto text = Type::make(words(state.range(0)));
    for (auto _ : state) {
        Type::assign(text, source);
        Type::trim(text);
        benchmark::DoNotOptimize(text);
    }
    if (Type::length(text) != state.range(0) - 4)
        state.SkipWithError("wrong length");
    countUnits(state);
}

template <class Type>
void throughUtf8(benchmark::State& state)
{
    const auto source = Type::make(words(state.range(0)));
    for (auto _ : state) {
        const auto bytes = Type::utf8(source);
        if (Type::length(Type::fromUtf8(bytes)) != state.range(0))
            state.SkipWithError("wrong length");
    }
    countUnits(state);
}

void valueOf(benchmark::State& state, auto value)
{
    for (auto _ : state) {
        benchmark::DoNotOptimize(value);
        const vx::String text = vx::String::valueOf(value);
        benchmark::DoNotOptimize(text.getData());
    }
}
BENCHMARK_CAPTURE(valueOf, int, 1234567)->Name("valueOf");
BENCHMARK_CAPTURE(valueOf, double, 1234.567)->Name("valueOfDouble");

/// The same two by the standard library, as the floor.
template <class... Form>
void printed(benchmark::State& state, auto value, Form... form)
{
    for (auto _ : state) {
        benchmark::DoNotOptimize(value);
        char digits[32];
        char* const end = std::to_chars(digits, digits + sizeof digits, value, form...).ptr;
        const std::u16string text(&digits[0], end);
        benchmark::DoNotOptimize(text.data());
    }
}
BENCHMARK_CAPTURE(printed, int, 1234567);
BENCHMARK_CAPTURE(printed, double, 1234.567, std::chars_format::general, 6);

void format(benchmark::State& state)
{
    vx::String text;
    for (auto _ : state) {
        text.format(u"{0}: {1} of {2} done ({1}/{2})", -1, u"copy", u"12", u"345");
        benchmark::DoNotOptimize(text.getData());
    }
}
BENCHMARK(format);

#ifdef VX_BENCH_ICU
#define VX_WITH_ICU(name) BENCHMARK_TEMPLATE(name, Icu) VX_SIZES;
#else
#define VX_WITH_ICU(name)
#endif
#ifdef VX_BENCH_QT
#define VX_WITH_QT(name) BENCHMARK_TEMPLATE(name, Qt5) VX_SIZES;
#else
#define VX_WITH_QT(name)
#endif
#define VX_SIZES ->Arg(16)->Arg(64)->Arg(4096)
#define VX_BESIDE_STD(name)                                                                                            \
    BENCHMARK_TEMPLATE(name, Vx) VX_SIZES;                                                                             \
    BENCHMARK_TEMPLATE(name, Std) VX_SIZES;
#define VX_BESIDE_QT(name)                                                                                             \
    BENCHMARK_TEMPLATE(name, Vx) VX_SIZES;                                                                             \
    VX_WITH_QT(name)
#define VX_BESIDE_LIBRARIES(name) VX_BESIDE_QT(name) VX_WITH_ICU(name)
#define VX_BESIDE_ALL(name) VX_BESIDE_STD(name) VX_WITH_ICU(name) VX_WITH_QT(name)

VX_BESIDE_ALL(construct)
VX_BESIDE_ALL(copy)
VX_BESIDE_ALL(copyAndWrite)
VX_BESIDE_ALL(assign)
VX_BESIDE_ALL(appendUnits)
VX_BESIDE_ALL(appendUnitsIntoRoom)
VX_BESIDE_ALL(appendPieces)
VX_BESIDE_ALL(insertAndRemove)
VX_BESIDE_ALL(concatenate)
VX_BESIDE_ALL(substring)
VX_BESIDE_ALL(equals)
VX_BESIDE_LIBRARIES(equalsFolded)
VX_BESIDE_ALL(compare)
VX_BESIDE_ALL(findUnit)
VX_BESIDE_ALL(findText)
VX_BESIDE_QT(findFoldedInScripts)
VX_BESIDE_ALL(findLastUnit)
VX_BESIDE_ALL(findLastText)
VX_BESIDE_STD(findFirstOf)
VX_BESIDE_ALL(hash)
VX_BESIDE_LIBRARIES(upper)
VX_BESIDE_ALL(trim)
VX_BESIDE_LIBRARIES(throughUtf8)

} // namespace
