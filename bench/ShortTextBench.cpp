// What services do with texts all day: narrow texts of 10 to 60 bytes to UTF-16 and back, numbers as texts, a line built of
// words and numbers, the tokens of a log, and its words counted.
#include "vx/Str1.h"
#include "vx/Str1HashMap.h"
#include "vx/String.h"
#include "vx/util/StringTokenizer.h"

#ifdef VX_BENCH_ICU
#include <unicode/ucnv.h>
#include <unicode/unistr.h>
#endif
#ifdef VX_BENCH_QT
#include <QByteArray>
#include <QString>
#include <QTextCodec>
#endif
#ifdef VX_BENCH_ABSL
#include <absl/container/flat_hash_map.h>
#endif

#include <benchmark/benchmark.h>

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <vector>

namespace {

constexpr std::string_view ASCII_WORDS[] = {"the", "quick", "reader", "of", "a", "service", "log", "finds", "12.5",
    "failures", "connection", "id=4711", "in", "established"};
constexpr std::string_view LATIN_WORDS[] = {"die", "schöne", "Straße", "führt", "über", "den", "Fluss", "und", "weiter",
    "zum", "großen", "Wald", "Abendrot", "où"};
constexpr std::string_view GREEK_WORDS[] = {"η", "θάλασσα", "είναι", "ήρεμη", "το", "πρωί", "και", "οι", "ψαράδες",
    "γυρίζουν", "στο", "λιμάνι", "με", "δίχτυα"};

constexpr std::size_t MOST_BYTES = 256; ///< that a short text becomes

/// Each library takes UTF-8 for its default encoding.
const bool g_prepared = [] {
    ::setenv("LC_ALL", "C.UTF-8", 1);
#ifdef VX_BENCH_ICU
    ucnv_setDefaultName("UTF-8");
#endif
#ifdef VX_BENCH_QT
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
#endif
    return true;
}();

/// Many texts of different lengths, so that the processor cannot learn one by heart.
std::vector<std::string> shortTexts(std::int64_t language)
{
    const auto& words = language == 0 ? ASCII_WORDS : language == 1 ? LATIN_WORDS : GREEK_WORDS;
    std::mt19937 random(7);
    std::vector<std::string> texts(512);
    for (std::string& text : texts) {
        for (const std::size_t length = 10 + random() % 45; text.size() < length; text += ' ')
            text += words[random() % std::size(words)];
        text.pop_back();
    }
    return texts;
}

/// Gives the next of `items` in each pass. The last item is followed by the first.
template <class Item, class Work>
void forEach(benchmark::State& state, const std::vector<Item>& items, Work work)
{
    std::size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(work(items[next]));
        next = (next + 1) % items.size();
    }
    state.SetItemsProcessed(state.iterations());
}

std::int32_t lengthOf(const auto& text)
{
    return static_cast<std::int32_t>(text.size());
}

struct Vx {
    using Text = vx::String;
    static Text fromUtf8(const std::string& bytes) { return Text(bytes); }
    static std::string toUtf8(const Text& text) { return text.toUtf8(); }
    static Text byName(const std::string& bytes) { return Text(bytes.data(), lengthOf(bytes), u"UTF-8"); }
    static Text latin1(const std::string& bytes) { return Text(bytes.data(), lengthOf(bytes), u"ISO8859_1"); }
    static Text byDefault(const std::string& bytes) { return Text(bytes.data(), lengthOf(bytes)); }
    static std::int32_t toDefault(const Text& text)
    {
        char bytes[MOST_BYTES];
        return text.getBytes(bytes, sizeof bytes);
    }
};

struct Str1 {
    using Text = vx::Str1;
    static Text fromUtf8(const std::string& bytes) { return Text(bytes); }
    static std::string toUtf8(const Text& text) { return text.toUtf8(); }
    static Text byName(const std::string& bytes) { return Text(bytes.data(), lengthOf(bytes), u"UTF-8"); }
    static Text latin1(const std::string& bytes) { return Text(bytes.data(), lengthOf(bytes), u"ISO8859_1"); }
    static Text byDefault(const std::string& bytes) { return Text(bytes.data(), lengthOf(bytes)); }
    static std::int32_t toDefault(const Text& text)
    {
        char bytes[MOST_BYTES];
        return text.convertToAZ(bytes, sizeof bytes);
    }
};

#ifdef VX_BENCH_ICU
struct Icu {
    using Text = icu::UnicodeString;
    static Text fromUtf8(const std::string& bytes) { return Text::fromUTF8(bytes); }
    static std::string toUtf8(const Text& text)
    {
        std::string bytes;
        text.toUTF8String(bytes);
        return bytes;
    }
    static Text byName(const std::string& bytes) { return Text(bytes.data(), lengthOf(bytes), "UTF-8"); }
    static Text latin1(const std::string& bytes) { return Text(bytes.data(), lengthOf(bytes), "ISO-8859-1"); }
    static Text byDefault(const std::string& bytes) { return Text(bytes.data(), lengthOf(bytes)); }
    static std::int32_t toDefault(const Text& text)
    {
        char bytes[MOST_BYTES];
        return text.extract(0, text.length(), bytes, std::uint32_t {sizeof bytes});
    }
};
#endif

#ifdef VX_BENCH_QT
struct Qt5 {
    using Text = QString;
    static Text fromUtf8(const std::string& bytes) { return Text::fromUtf8(bytes.data(), lengthOf(bytes)); }
    static QByteArray toUtf8(const Text& text) { return text.toUtf8(); }
    static Text byName(const std::string& bytes)
    {
        return QTextCodec::codecForName("UTF-8")->toUnicode(bytes.data(), lengthOf(bytes));
    }
    static Text latin1(const std::string& bytes)
    {
        return QTextCodec::codecForName("ISO-8859-1")->toUnicode(bytes.data(), lengthOf(bytes));
    }
    static Text byDefault(const std::string& bytes) { return Text::fromLocal8Bit(bytes.data(), lengthOf(bytes)); }
    static QByteArray toDefault(const Text& text) { return text.toLocal8Bit(); }
};
#endif

template <class Type>
std::vector<typename Type::Text> wideTexts(std::int64_t language)
{
    std::vector<typename Type::Text> texts;
    for (const std::string& bytes : shortTexts(language))
        texts.push_back(Type::fromUtf8(bytes));
    return texts;
}

template <class Type>
void fromUtf8(benchmark::State& state)
{
    forEach(state, shortTexts(state.range(0)), [](const std::string& bytes) { return Type::fromUtf8(bytes); });
}

template <class Type>
void toUtf8(benchmark::State& state)
{
    forEach(state, wideTexts<Type>(state.range(0)), [](const auto& text) { return Type::toUtf8(text); });
}

template <class Type>
void byName(benchmark::State& state)
{
    forEach(state, shortTexts(state.range(0)), [](const std::string& bytes) { return Type::byName(bytes); });
}

template <class Type>
void latin1(benchmark::State& state)
{
    forEach(state, shortTexts(state.range(0)), [](const std::string& bytes) { return Type::latin1(bytes); });
}

template <class Type>
void byDefault(benchmark::State& state)
{
    forEach(state, shortTexts(state.range(0)), [](const std::string& bytes) { return Type::byDefault(bytes); });
}

template <class Type>
void toDefault(benchmark::State& state)
{
    forEach(state, wideTexts<Type>(state.range(0)), [](const auto& text) { return Type::toDefault(text); });
}

/// A large text in and out again.
template <class Type>
void mebibyte(benchmark::State& state)
{
    std::string bytes;
    const std::vector<std::string> texts = shortTexts(state.range(0));
    for (std::size_t next = 0; bytes.size() < 1 << 20; next = (next + 1) % texts.size())
        bytes += texts[next] + '\n';
    for (auto _ : state) {
        const auto text = Type::fromUtf8(bytes);
        const auto again = Type::toUtf8(text);
        if (static_cast<std::size_t>(again.size()) != bytes.size())
            state.SkipWithError("wrong length");
    }
    state.SetBytesProcessed(state.iterations() * lengthOf(bytes));
}

#ifdef VX_BENCH_ICU
#define VX_WITH_ICU(name) BENCHMARK_TEMPLATE(name, Icu) VX_LANGUAGES;
#else
#define VX_WITH_ICU(name)
#endif
#ifdef VX_BENCH_QT
#define VX_WITH_QT(name) BENCHMARK_TEMPLATE(name, Qt5) VX_LANGUAGES;
#else
#define VX_WITH_QT(name)
#endif
#define VX_LANGUAGES ->DenseRange(0, 2)
#define VX_BESIDE_LIBRARIES(name)                                                                                      \
    BENCHMARK_TEMPLATE(name, Vx) VX_LANGUAGES;                                                                         \
    BENCHMARK_TEMPLATE(name, Str1) VX_LANGUAGES;                                                                       \
    VX_WITH_ICU(name) VX_WITH_QT(name)

VX_BESIDE_LIBRARIES(fromUtf8)
VX_BESIDE_LIBRARIES(toUtf8)
VX_BESIDE_LIBRARIES(byName)
VX_BESIDE_LIBRARIES(latin1)
VX_BESIDE_LIBRARIES(byDefault)
VX_BESIDE_LIBRARIES(toDefault)
VX_BESIDE_LIBRARIES(mebibyte)

/// Numbers of one to ten digits, and decimal fractions, as new texts of each library.
std::vector<int> wholeNumbers()
{
    std::mt19937 random(5);
    std::vector<int> numbers(512);
    for (int& number : numbers)
        number = static_cast<int>(random() >> (1 + random() % 30));
    return numbers;
}

std::vector<double> fractions()
{
    std::mt19937 random(5);
    std::vector<double> numbers(512);
    for (double& number : numbers)
        number = (random() >> random() % 24) / 1000.0;
    return numbers;
}

struct VxNumber {
    static vx::String text(auto number) { return vx::String::valueOf(number); }
};

/// The C library, and a copy in UTF-16.
struct Printed {
    static std::u16string text(auto number)
    {
        const std::string digits = print(number);
        return std::u16string(digits.begin(), digits.end());
    }
    static std::string print(auto number)
    {
        char digits[32];
        const int length
            = std::snprintf(digits, sizeof digits, std::is_integral_v<decltype(number)> ? "%d" : "%g", number);
        return std::string(digits, static_cast<std::size_t>(length));
    }
};

/// The floor: the fastest way to print, into a short text that needs no memory.
struct ToChars {
    static std::u16string text(int number)
    {
        char digits[32];
        return std::u16string(&digits[0], std::to_chars(digits, std::end(digits), number).ptr);
    }
    static std::u16string text(double number)
    {
        char digits[32];
        return std::u16string(
            &digits[0], std::to_chars(digits, std::end(digits), number, std::chars_format::general, 6).ptr);
    }
};

template <class Type>
void wholeNumber(benchmark::State& state)
{
    forEach(state, wholeNumbers(), [](int number) { return Type::text(number); });
}

template <class Type>
void fraction(benchmark::State& state)
{
    forEach(state, fractions(), [](double number) { return Type::text(number); });
}
#define VX_NUMBERS(type)                                                                                               \
    BENCHMARK_TEMPLATE(wholeNumber, type);                                                                             \
    BENCHMARK_TEMPLATE(fraction, type);
VX_NUMBERS(VxNumber)
VX_NUMBERS(Printed)
VX_NUMBERS(ToChars)
#ifdef VX_BENCH_QT
struct QtNumber {
    static QString text(auto number) { return QString::number(number); }
};
VX_NUMBERS(QtNumber)
#endif
#ifdef VX_BENCH_ICU
/// Its common part prints no numbers: a program takes the C library for one that needs no locale.
struct IcuNumber {
    static icu::UnicodeString text(auto number)
    {
        const std::string digits = Printed::print(number);
        return icu::UnicodeString(digits.data(), lengthOf(digits), US_INV);
    }
};
VX_NUMBERS(IcuNumber)
#endif

/// "request 4711 took 12 ms, 8192 bytes from 10.0.0.7", with other numbers each time.
struct Request {
    int id;
    int milliseconds;
    int bytes;
};

std::vector<Request> requests()
{
    std::mt19937 random(3);
    std::vector<Request> list(512);
    for (Request& request : list) {
        request = {static_cast<int>(random() % 1'000'000), static_cast<int>(random() % 5'000),
            static_cast<int>(random() >> (random() % 24))};
    }
    return list;
}

void lineVxFormat(benchmark::State& state)
{
    vx::String line;
    forEach(state, requests(), [&](const Request& request) {
        const vx::String id = vx::String::valueOf(request.id);
        const vx::String milliseconds = vx::String::valueOf(request.milliseconds);
        const vx::String bytes = vx::String::valueOf(request.bytes);
        line.format(u"request {0} took {1} ms, {2} bytes from {3}", -1, id.getData(), milliseconds.getData(),
            bytes.getData(), u"10.0.0.7");
        return line.getData();
    });
}

void lineVxAppend(benchmark::State& state)
{
    vx::String line;
    forEach(state, requests(), [&](const Request& request) {
        line.clear();
        line += u"request ";
        line += vx::String::valueOf(request.id);
        line += u" took ";
        line += vx::String::valueOf(request.milliseconds);
        line += u" ms, ";
        line += vx::String::valueOf(request.bytes);
        line += u" bytes from ";
        line += u"10.0.0.7";
        return line.getData();
    });
}

void linePrinted(benchmark::State& state)
{
    char line[256];
    forEach(state, requests(), [&](const Request& request) {
        return std::snprintf(line, sizeof line, "request %d took %d ms, %d bytes from %s", request.id,
            request.milliseconds, request.bytes, "10.0.0.7");
    });
}

void lineStdAppend(benchmark::State& state)
{
    std::u16string line;
    const auto add = [&](int number) {
        char digits[16];
        char* const end = std::to_chars(digits, digits + sizeof digits, number).ptr;
        line.append(&digits[0], end);
    };
    forEach(state, requests(), [&](const Request& request) {
        line.clear();
        line += u"request ";
        add(request.id);
        line += u" took ";
        add(request.milliseconds);
        line += u" ms, ";
        add(request.bytes);
        line += u" bytes from ";
        line += u"10.0.0.7";
        return line.data();
    });
}
BENCHMARK(lineVxFormat);
BENCHMARK(lineVxAppend);
BENCHMARK(linePrinted);
BENCHMARK(lineStdAppend);

constexpr std::u16string_view BLANKS = u" \t\r\n";

/// A log of 10 MB with words of a long-tailed vocabulary.
const std::u16string& logText()
{
    static const std::u16string log = [] {
        std::mt19937 random(11);
        std::vector<std::u16string> words(4000);
        for (std::u16string& word : words) {
            for (std::size_t length = 1 + random() % 11; word.size() < length;)
                word += static_cast<char16_t>(u'a' + random() % 26);
        }
        std::u16string text;
        while (text.size() < 10'000'000) {
            text += words[static_cast<std::size_t>(random() % (1 + random() % words.size()))];
            text += random() % 12 == 0 ? u'\n' : u' ';
        }
        return text;
    }();
    return log;
}

/// Calls `work` with each token as a view.
template <class Work>
std::int64_t tokenViews(std::u16string_view text, Work work)
{
    std::int64_t count = 0;
    for (std::size_t end = 0;; ++count) {
        const std::size_t start = text.find_first_not_of(BLANKS, end);
        if (start == text.npos)
            return count;
        end = std::min(text.find_first_of(BLANKS, start), text.size());
        work(text.substr(start, end - start));
    }
}

std::int64_t tokenCount()
{
    static const std::int64_t count = tokenViews(logText(), [](std::u16string_view) {});
    return count;
}

/// Splits the log with `split(each)`, which calls `each` with every token and returns how many there were.
template <class Split>
void tokens(benchmark::State& state, Split split)
{
    for (auto _ : state) {
        if (split([](const auto& token) { benchmark::DoNotOptimize(&token); }) != tokenCount())
            state.SkipWithError("wrong number of tokens");
    }
    state.SetItemsProcessed(state.iterations() * tokenCount());
}

void tokensTokenizer(benchmark::State& state)
{
    const vx::String log(logText().c_str());
    tokens(state, [&](auto each) {
        vx::util::StringTokenizer tokenizer(log, BLANKS.data());
        std::int64_t count = 0;
        for (; tokenizer.hasMoreTokens(); ++count)
            each(tokenizer.nextToken());
        return count;
    });
}

void tokensString(benchmark::State& state)
{
    const vx::String log(logText().c_str());
    tokens(state, [&](auto each) {
        std::int64_t count = 0;
        for (int end = 0;; ++count) {
            const int start = log.findFirstNotOf(BLANKS.data(), lengthOf(BLANKS), end);
            if (start < 0)
                return count;
            end = log.findFirstOf(BLANKS.data(), lengthOf(BLANKS), start);
            each(log.substring(start, end));
            if (end < 0)
                return count + 1;
        }
    });
}

void tokensStr1(benchmark::State& state)
{
    const vx::Str1Copy log(logText().data(), lengthOf(logText()));
    tokens(state, [&](auto each) {
        return tokenViews(log, [&](std::u16string_view token) {
            const auto start = static_cast<std::int32_t>(token.data() - log.getData0());
            each(log.substring(start, start + lengthOf(token)));
        });
    });
}

void tokensViews(benchmark::State& state)
{
    tokens(state, [](auto each) { return tokenViews(logText(), each); });
}

void tokensStd(benchmark::State& state)
{
    tokens(state, [](auto each) {
        return tokenViews(logText(), [&](std::u16string_view token) { each(std::u16string(token)); });
    });
}
BENCHMARK(tokensTokenizer)->Unit(benchmark::kMillisecond);
BENCHMARK(tokensString)->Unit(benchmark::kMillisecond);
BENCHMARK(tokensStr1)->Unit(benchmark::kMillisecond);
BENCHMARK(tokensViews)->Unit(benchmark::kMillisecond);
BENCHMARK(tokensStd)->Unit(benchmark::kMillisecond);

/// Counts the words of the log with `count(map, word)`, which returns the new count of the word.
template <class Count>
void words(benchmark::State& state, Count count)
{
    const vx::Str1Copy log(logText().data(), lengthOf(logText()));
    for (auto _ : state) {
        vx::Str1HashMap<std::int64_t> counts;
        std::int64_t sum = 0;
        tokenViews(log,
            [&](std::u16string_view token) { sum += count(counts, vx::Str1Static(token.data(), lengthOf(token))); });
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * tokenCount());
}

void wordsGetAndPut(benchmark::State& state)
{
    words(state, [](auto& counts, const vx::Str1& word) {
        std::int64_t count = 0;
        counts.get(word, count);
        counts.put(word, ++count);
        return count;
    });
}

void wordsFind(benchmark::State& state)
{
    words(state, [](auto& counts, const vx::Str1& word) {
        if (std::int64_t* const count = counts.find(word))
            return ++*count;
        counts.put(word, 1);
        return std::int64_t {1};
    });
}
BENCHMARK(wordsGetAndPut)->Unit(benchmark::kMillisecond);
BENCHMARK(wordsFind)->Unit(benchmark::kMillisecond);

template <class Map>
void wordsInto(benchmark::State& state)
{
    for (auto _ : state) {
        Map counts;
        std::int64_t sum = 0;
        tokenViews(logText(), [&](std::u16string_view token) {
            const auto place = counts.try_emplace(typename Map::key_type(token), 0).first;
            sum += ++place->second;
        });
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * tokenCount());
}
using StdMap = std::unordered_map<std::u16string, std::int64_t>;
BENCHMARK(wordsInto<StdMap>)->Name("wordsStd")->Unit(benchmark::kMillisecond);
#ifdef VX_BENCH_ABSL
using FlatMap = absl::flat_hash_map<std::u16string, std::int64_t>;
BENCHMARK(wordsInto<FlatMap>)->Name("wordsAbsl")->Unit(benchmark::kMillisecond);
#endif

} // namespace
