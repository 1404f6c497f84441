#include "StreamDoubles.h"

#include "tests/Slots.h"

#include "vx/io/ByteArrayInputStream.h"
#include "vx/io/ByteArrayOutputStream.h"
#include "vx/io/PrintWriter.h"
#include "vx/io/StringWriter.h"
#include "vx/text/charset/CharsetException.h"

#include <functional>

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
    const struct {
        const char16_t* text;
        const char16_t* lines; // each behind its length
    } rows[] = {
        {u"", u""}, {u"\n", u"0|"}, {u"a\r\nb\nc\rd", u"1|a1|b1|c1|d"}, {u"\r\n\r\n", u"0|0|"}, {u"\n\r", u"0|0|"},
        {u"\r\r\n\n", u"0|0|0|"}, {u"0123456789abcde\r\n\nx", u"15|0123456789abcde0|1|x"},
        {u"0123456789abcdef\r", u"16|0123456789abcdef"}, {u"0123456789abcdef\r\nx\n", u"16|0123456789abcdef1|x"},
        {u"0123456789abcdefghijklmnopqrstuvwxyz0123456789\r\r", u"46|0123456789abcdefghijklmnopqrstuvwxyz01234567890|"},
        {u"a\u2028b\u0085c\vd\fe", u"9|a\u2028b\u0085c\vd\fe"}, // other separators are text
    };
    std::string events;
    for (const auto& row : rows) {
        for (const int piece : {1, 2, 3, 5, 15, 16, 100}) {
            for (const int size : {16, 17, 64}) {
                const auto reader = linesOf(row.text, size, piece, events);
                String found;
                String line(u"what was there before");
                for (std::int32_t length; (length = reader->readLine(line)) >= 0;)
                    found += String::valueOf(length) + u"|" + line;
                EXPECT_EQ(found, row.lines) << piece << ' ' << size;
                EXPECT_EQ(line, u"");
                EXPECT_EQ(reader->readLine(line), -1);
            }
        }
    }
}

TEST(ReadLine, WaitsBehindACarriageReturnOnlyWhereTheBufferEnds)
{
    std::string events;
    const auto reader = linesOf(u"ab\rcd\re", 64, 3, events);
    String line;
    EXPECT_EQ(reader->readLine(line), 2);
    EXPECT_EQ(events, "read(64) read(64) ");
    EXPECT_EQ(reader->readLine(line), 2);
    EXPECT_EQ(line, u"cd");
    EXPECT_EQ(events, "read(64) read(64) read(64) ");
    reader->close();
    expectThrow<IoException>([&] { reader->readLine(line); }, u"stream closed");
}

/// A string whose component view writes down what happens to it.
class WatchedText : public String {
public:
    WatchedText(const char16_t* text, std::string& events)
        : String(text)
        , m_events(events)
    {
    }
    std::int32_t GetReadLock(const char16_t** text) const override
    {
        m_events += "lock ";
        return m_lockResult < 0 ? m_lockResult : String::GetReadLock(text);
    }
    std::int32_t ReleaseReadLock() const override
    {
        m_events += "release ";
        String::ReleaseReadLock();
        return m_releaseResult;
    }
    std::int32_t m_lockResult = 0;
    std::int32_t m_releaseResult = 0;

private:
    std::string& m_events;
};

TEST(Writer, WritesAStringUnderItsReadLock)
{
    struct Row {
        std::int32_t lockResult;
        std::int32_t releaseResult;
        bool sinkFails;
        const char* thrown;
        const char* events;
    };
    const Row rows[] = {
        {0, 0, false, "", "lock write(text) release "},
        {-5, 0, false, "result -5", "lock "},
        {0, -6, false, "result -6", "lock write(text) release "},
        {0, 0, true, "sink", "lock write(text) release "},
        {0, -6, true, "sink", "lock write(text) release "},
    };
    for (const Row& row : rows) {
        std::string events;
        const Reference<Sink<Chars>> sink(new Sink<Chars>(events));
        sink->m_fails = row.sinkFails;
        WatchedText text(u"text", events);
        text.m_lockResult = row.lockResult;
        text.m_releaseResult = row.releaseResult;
        std::string thrown;
        try {
            sink->write(text);
        } catch (const TimeoutException&) {
            thrown = "sink";
        } catch (const ResultException& failure) {
            thrown = "result " + std::to_string(failure.getResult());
        }
        EXPECT_EQ(thrown, row.thrown);
        EXPECT_EQ(events, row.events);
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
    const struct {
        std::function<void(PrintWriter&)> print;
        std::function<void(PrintWriter&)> println;
        const char* text;
    } rows[] = {
#define VALUE(value, text)                                                                                             \
    {[](PrintWriter& out) { out.print(value); }, [](PrintWriter& out) { out.println(value); }, text}
        VALUE(String(u"a string"), "a string"),
        VALUE("narrow", "narrow"),
        VALUE(u"wide", "wide"),
        VALUE(0.1, "0.1"),
        VALUE(1e300, "1e+300"),
        VALUE(2.5F, "2.5"),
        VALUE(-2147483648L, "-2147483648"),
        VALUE(INT64_MIN, "-9223372036854775808"),
        VALUE(-7, "-7"),
        VALUE(u'x', "x"),
        VALUE(true, "true"),
        VALUE(4294967295U, "4294967295"),
        VALUE(18446744073709551615UL, "18446744073709551615"),
        VALUE(-9LL, "-9"),
        VALUE(9ULL, "9"),
        VALUE(short {-3}, "-3"),
        VALUE(std::u16string_view(u"view"), "view"),
        VALUE(std::string("standard"), "standard"),
        VALUE(u8"utf8", "utf8"),
#undef VALUE
    };
    for (const auto& row : rows) {
        for (const bool autoFlush : {false, true}) {
            std::string events;
            PrintWriter out(new Sink<Chars>(events), autoFlush);
            row.print(out);
            row.println(out);
            const std::string written = "write(" + std::string(row.text) + ") ";
            EXPECT_EQ(events, written + written + "write(\n) " + (autoFlush ? "flush " : ""));
        }
    }
}

template <class Value>
concept Printable = requires(PrintWriter& out, Value value)
{
    out.print(value);
};
static_assert(!Printable<char> && !Printable<void*> && !Printable<const int*> && !Printable<std::nullptr_t>);

TEST(PrintWriter, GoesThroughTheOperationsThatItsHeirsChange)
{
    struct Shouting : PrintWriter {
        using PrintWriter::print;
        using PrintWriter::PrintWriter;
        void print(int) override { FilterWriter::write(u"number"); }
        void write(char16_t ch) override { FilterWriter::write(ch == 10 ? u';' : ch); }
    };
    std::string events;
    auto* sink = new Sink<Chars>(events);
    Shouting out(sink, true);
    out.println(5);
    out.println(u'x');
    sink->m_fails = true;
    expectThrow<TimeoutException>([&] { out.println(u"lost"); }, u"sink failed");
    EXPECT_EQ(events, "write(number) write(;) flush write(x) write(;) flush write(lost) ");
}

TEST(StringWriter, CollectsForEver)
{
    StringWriter out(4);
    out.write(u"abc", 2);
    out.write(u"wide");
    out.write(String(u"string"));
    out.write(u'c');
    out.write(u"", 0);
    const String before = out.toString();
    out.flush();
    out.close();
    StringWriter copy(out);
    out.write(u"!");
    EXPECT_EQ(before, u"abwidestringc");
    EXPECT_EQ(out.toString(), u"abwidestringc!");
    copy.write(out.toString()); // what is written may be its own text
    copy.write(copy.toString());
    EXPECT_EQ(copy.toString(), u"abwidestringcabwidestringc!abwidestringcabwidestringc!");
}

TEST(ByteArrayInputStream, ReadsItsOwnCopyToTheEnd)
{
    signed char bytes[] = {-1, 2, 3};
    ByteArrayInputStream in(bytes, 3);
    bytes[0] = 9;
    signed char target[10];
    EXPECT_EQ(in.read(target, 0), 0);
    EXPECT_EQ(in.read(target, -1), 0);
    expectThrow<IoException>([&] { in.read(static_cast<signed char*>(nullptr), 1); }, u"null buffer");
    EXPECT_EQ(in.read(), 255);
    EXPECT_EQ(in.available(), 0);
    in.close();
    unsigned char plain[10];
    EXPECT_EQ(in.read(plain, 10), 2);
    EXPECT_EQ(plain[1], 3);
    EXPECT_EQ(in.read(target, 0), -1);
    EXPECT_EQ(in.read(reinterpret_cast<char*>(plain), 10), -1);
    EXPECT_EQ(ByteArrayInputStream(bytes, -3).read(), -1);
    EXPECT_EQ(ByteArrayInputStream(nullptr, 3).read(), -1);
}

/// Shows what its heirs may do, and the capacity that tells the growth.
class Memory : public ByteArrayOutputStream {
public:
    using ByteArrayOutputStream::ByteArrayOutputStream;
    using ByteArrayOutputStream::ensureCapacity;
    using ByteArrayOutputStream::reallocBuffer;

    std::string text() const
    {
        return {reinterpret_cast<const char*>(getBytes()), static_cast<std::size_t>(getSize())};
    }
    /// Writes until the buffer moves.
    std::int32_t capacity()
    {
        for (const signed char* before = getBytes(); getBytes() == before;)
            write(static_cast<signed char>('.'));
        return getSize() - 1;
    }
};

TEST(ByteArrayOutputStream, GrowsToAQuarterMoreThanItNeeds)
{
    const struct {
        std::int32_t capacity;
        std::function<void(Memory&)> work;
        std::int32_t result;
    } rows[] = {
        {10, [](Memory&) {}, 10},
        {10, [](Memory& out) { out.write("0123456789a", 11); }, 13},
        {10, [](Memory& out) { out.write("0123456789", 10); }, 10},
        {10, [](Memory& out) { out.ensureCapacity(10); }, 10},
        {10, [](Memory& out) { out.ensureCapacity(30); }, 37},
        {10, [](Memory& out) { out.reallocBuffer(21); }, 21},
        {-4, [](Memory& out) { out.write("01234", 5); }, 6},
    };
    for (const auto& row : rows) {
        Memory out(row.capacity);
        row.work(out);
        EXPECT_EQ(out.capacity(), row.result);
    }
}

TEST(ByteArrayOutputStream, KeepsWhatIsWrittenAndGivesItOut)
{
    Memory out(4);
    out.write("abc", 3);
    out.write(reinterpret_cast<const unsigned char*>("\xC3\xA9"), 2);
    out.write("ignored", -1);
    EXPECT_EQ(out.toString(u"UTF-8"), u"abc\u00E9");
    EXPECT_EQ(out.toString(u"ISO8859_1"), u"abc\u00C3\u00A9");
    EXPECT_THROW(out.toString(u"no-such"), text::charset::UnknownEncodingException);
    signed char target[3] = {};
    EXPECT_EQ(out.getBytes(target, 2), 2);
    EXPECT_EQ(target[2], 0);
    EXPECT_EQ(out.getBytes(target, -1), 0);
    out.write(out.getBytes(), out.getSize()); // its own bytes, while they move
    out.writeTo(&out);
    EXPECT_EQ(out.text(),
        "abc\xC3\xA9"
        "abc\xC3\xA9"
        "abc\xC3\xA9"
        "abc\xC3\xA9");

    out.reallocBuffer(2);
    EXPECT_EQ(out.text(), "ab");
    const signed char* storage = out.getBytes();
    out.reset();
    EXPECT_EQ(out.getSize(), 0);
    out.close();
    out.write("xy", 2);
    EXPECT_EQ(out.getBytes(), storage);

    std::string events;
    const Reference<OutputStream> sink(new Sink<Bytes>(events));
    out.writeTo(sink.get());
    out.reset();
    out.writeTo(sink.get());
    EXPECT_EQ(events, "write(xy) write() ");
    expectThrow<IoException>([&] { out.writeTo(nullptr); }, u"stream closed");
    EXPECT_EQ(Memory(0).toString(u"UTF-8"), u"");
}

TEST(ByteArrayOutputStream, StandsAsItWasWhenItCannotGrow)
{
    Memory out(4);
    out.write("ab", 2);
    for (const std::int32_t size : {INT32_MAX, 858993460, -1})
        EXPECT_THROW(size < 0 ? out.reallocBuffer(size) : out.ensureCapacity(size), std::bad_alloc) << size;
    EXPECT_THROW(out.write("x", INT32_MAX), std::bad_alloc);
    EXPECT_EQ(out.text(), "ab");
}

} // namespace
