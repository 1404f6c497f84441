#include "StreamDoubles.h"

#include <utility>

#include "tests/Slots.h"

using namespace vx;
using namespace vx::io;

namespace {

/// A reader of `text` with a buffer of `size`, over a source that gives at most `piece` units at a time.
Reference<BufferedReader> linesOf(std::u16string_view text, std::int32_t size, int piece, std::string& events)
{
    return Reference<BufferedReader>(new BufferedReader(
        new Source<Chars>({text.begin(), text.end()}, events, std::vector<int>(text.size() + 1, piece)), size));
}

TEST(ReadLine, EndsAtEachLineEndWhereverTheBufferEnds)
{
    // lines: each after its length
    const std::pair<const char16_t*, const char16_t*> rows[] = {
        {u"", u""}, {u"\n", u"0|"}, {u"a\r\nb\nc\rd", u"1|a1|b1|c1|d"}, {u"\r\n\r\n", u"0|0|"}, {u"\n\r", u"0|0|"},
        {u"\r\r\n\n", u"0|0|0|"}, {u"0123456789abcde\r\n\nx", u"15|0123456789abcde0|1|x"},
        {u"0123456789abcdef\r", u"16|0123456789abcdef"}, {u"0123456789abcdef\r\nx\n", u"16|0123456789abcdef1|x"},
        {u"0123456789abcdefghijklmnopqrstuvwxyz0123456789\r\r", u"46|0123456789abcdefghijklmnopqrstuvwxyz01234567890|"},
        {u"a\u2028b\u0085c\vd\fe", u"9|a\u2028b\u0085c\vd\fe"}, // other separators are part of the text
    };
    std::string events;
    for (const auto& [text, lines] : rows) {
        for (const int piece : {1, 2, 3, 5, 15, 16, 100}) {
            for (const int size : {16, 17, 64}) {
                const auto reader = linesOf(text, size, piece, events);
                String found, line(u"what was there before");
                for (std::int32_t length; (length = reader->readLine(line)) >= 0;)
                    found += String::valueOf(length) + u"|" + line;
                EXPECT_EQ(found, lines) << piece << ' ' << size;
                EXPECT_EQ(line, u"");
                EXPECT_EQ(reader->readLine(line), -1);
            }
        }
    }
}

TEST(ReadLine, ContinuesALineWhoseSourceHasFailed)
{
    using S = Source<Chars>;
    constexpr std::u16string_view TEXT = u"0123456789abcde\r\n\r\r\n0123456789abcdefg\n\rz\r\n";
    std::string events;
    for (const int piece : {1, 16}) {
        for (std::size_t failing = 0; failing < TEXT.size(); ++failing) {
            std::vector<int> steps(TEXT.size() + 2, piece);
            steps.insert(steps.begin() + static_cast<std::ptrdiff_t>(failing), {S::FAIL, S::FAIL});
            BufferedReader reader(new S({TEXT.begin(), TEXT.end()}, events, steps), 16);
            String found, line;
            for (bool isEnd = false; !isEnd;) {
                try {
                    isEnd = reader.readLine(line) < 0;
                    found += line + u"|";
                } catch (const TimeoutException&) {
                    found += line;
                }
            }
            EXPECT_EQ(found, u"0123456789abcde|||0123456789abcdefg||z||") << piece << ' ' << failing;
        }
    }
}

TEST(ReadLimitedLine, RefusesALineThatIsTooLongAndContinuesIt)
{
    const std::pair<std::int32_t, const char16_t*> rows[] = {// the limit, and what it reads; a refusal ends with "!"
        {0, u"a!b|c|0!1!2!3!4!5!6!7!8!9!x!y|"}, {1, u"a!b|c|0!1!2!3!4!5!6!7!8!9!x!y|"}, {2, u"ab|c|01!23!45!67!89!xy|"},
        {5, u"ab|c|01234!56789!xy|"}, {11, u"ab|c|0123456789x!y|"}, {12, u"ab|c|0123456789xy|"},
        {INT32_MAX, u"ab|c|0123456789xy|"}};
    std::string events;
    for (const auto& [limit, told] : rows) {
        for (const int piece : {1, 2, 16}) {
            const auto reader = linesOf(u"ab\r\nc\n0123456789xy\r\n", 16, piece, events);
            String found, line;
            for (std::int32_t length = 0; length >= 0;) {
                try {
                    length = reader->readLimitedLine(line, limit);
                    found += length < 0 ? u"" : line + u"|";
                } catch (const IoException&) {
                    found += line + u"!";
                }
            }
            EXPECT_EQ(found, told) << limit << ' ' << piece;
        }
    }
}

TEST(PrintWriter, StandsInItsOrder)
{
#define SLOT(operation, ...) slotOf<void (PrintWriter::*)(__VA_ARGS__)>(&PrintWriter::operation)
#define SLOTS(operation)                                                                                               \
    SLOT(operation, const String&), SLOT(operation, const char*), SLOT(operation, const char16_t*),                    \
        SLOT(operation, double), SLOT(operation, float), SLOT(operation, long), SLOT(operation, int),                  \
        SLOT(operation, char16_t), SLOT(operation, bool)
    expectSlots("PrintWriter", slotOf(&Writer::close) + 1, {SLOTS(print), SLOTS(println), SLOT(println)});
#undef SLOTS
#undef SLOT
}

TEST(PrintWriter, PrintsEveryKindOfValueAndEndsLinesWithALineFeed)
{
    std::string events;
    PrintWriter out(new Sink<Chars>(events), true);
    const auto printAll = [&](const auto&... values) { (out.print(values), ...); };
    printAll(String(u"a string"), "narrow", u"wide", 0.1, 2.5F, INT64_MIN, 18446744073709551615UL, short {-3}, u'x',
        u8"utf8");
    EXPECT_EQ(events,
        "write(a string) write(narrow) write(wide) write(0.1) write(2.5) write(-9223372036854775808) "
        "write(18446744073709551615) write(-3) write(x) write(utf8) ");
    events.clear();
    out.println(4294967295U);
    out.println(false);
    EXPECT_EQ(events, "write(4294967295) write(\n) flush write(false) write(\n) flush ");
}

TEST(StringWriter, CollectsForEver)
{
    StringWriter out(4);
    out.write(u"abc", 2);
    out.write(String(u"string"));
    EXPECT_EQ(out.toString(), u"abstring");
    out.close();
    out.write(u"!");
    out.write(out.toString()); // the source may be its own text
    EXPECT_EQ(out.toString(), u"abstring!abstring!");
}

/// Makes protected operations public.
class Memory : public ByteArrayOutputStream {
public:
    using ByteArrayOutputStream::ByteArrayOutputStream;
    using ByteArrayOutputStream::ensureCapacity;
    using ByteArrayOutputStream::reallocBuffer;
};

TEST(ByteArrayOutputStream, KeepsWhatIsWrittenAndGivesItOut)
{
    Memory out(4);
    out.write("abc", 3);
    out.write(reinterpret_cast<const unsigned char*>("\xC3\xA9"), 2);
    out.write("ignored", -1);
    EXPECT_EQ(out.toString(u"UTF-8"), u"abc\u00E9");
    EXPECT_EQ(out.toString(u"ISO8859_1"), u"abc\u00C3\u00A9");
    EXPECT_THROW(out.toString(u"no-such"), text::charset::UnknownEncodingException);
    out.write(out.getBytes(), out.getSize()); // its own bytes, while they move
    out.writeTo(&out);
    EXPECT_EQ(out.toString(u"UTF-8"), u"abc\u00E9abc\u00E9abc\u00E9abc\u00E9");
    out.reallocBuffer(2);
    EXPECT_EQ(contentOf(out), "ab");
    const signed char* storage = out.getBytes();
    out.reset();
    out.close();
    out.write("xy", 2);
    EXPECT_EQ(contentOf(out), "xy");
    EXPECT_EQ(out.getBytes(), storage);
}

TEST(ByteArrayOutputStream, StandsAsItWasWhenItCannotGrow)
{
    Memory out(4);
    out.write("ab", 2);
    for (const std::int32_t size : {INT32_MAX, 858993460, -1})
        EXPECT_THROW(size < 0 ? out.reallocBuffer(size) : out.ensureCapacity(size), std::bad_alloc) << size;
    EXPECT_THROW(out.write("x", INT32_MAX), std::bad_alloc);
    EXPECT_EQ(contentOf(out), "ab");
}

} // namespace
