#include "Recording.h"
#include "tests/Random.h"
#include "tests/vx/Common.h"
#include "tests/vx/io/StreamDoubles.h"
#include "vx/NumberBoxes.h"
#include "vx/collections/Set.h"
#include "vx/io/EntryStream.h"
#include "vx/io/OutputStreamWriter.h"
#include "vx/log/AsyncProcessor.h"
#include "vx/log/BasicLogWriter.h"
#include "vx/log/JsonLogWriter.h"
#include "vx/log/LogEntry.h"
#include "vx/log/Logger.h"
#include "vx/log/XmlLogWriter.h"
#include "vx/log/ZonedTimeStamp.h"
#include "vx/math/BigDecimal.h"

#include <cstdio>

namespace vx::log {
namespace {

const char LINE[] = "-------------------------\n";

/// Adds fields with names of one and two letters. Many share buckets, and some are fields of the logger.
class Adding : public Logger {
public:
    explicit Adding(Random& random)
        : Logger(String(u'n', static_cast<int>(random() % 400)))
        , m_random(random)
    {
        for (const char16_t* field : {u"sequence", u"thread", u"name", u"timestamp", u"level", u"text"})
            enableField(field, m_random() % 3 != 0);
        constexpr Times TIMES[] = {Times::AS_THE_LOCALE_WRITES, Times::RFC_3339, Times::RFC_3339_UTC};
        setTimes(TIMES[m_random() % std::size(TIMES)]);
    }

protected:
    void addCustomFields(ILogEntry* entry) override
    {
        if (m_random() % 2 == 0 && entry->hasField(u"text"))
            m_asked = entry->getField(u"text");
        for (std::size_t count = m_random() % 16; count > 0; --count) {
            std::string name(1 + m_random() % 2, 'a');
            for (char& letter : name)
                letter = static_cast<char>('a' + m_random() % 26);
            if (m_random() % 40 == 0)
                name = m_random() % 2 == 0 ? "text" : "level";
            entry->setField(String(name), new String(u"x"));
        }
    }

private:
    Random& m_random;
    Reference<const Object> m_asked;
};

TEST(BasicLogWriter, WritesTheFieldsInTheOrderOfTheirNames)
{
    Random random;
    std::string events;
    const Reference<io::Writer> writer(new Sink<Chars>(events));
    for (int round = 0; round < 400; ++round) {
        const Reference<Logger> logger(new Adding(random));
        Reference<RecordingProcessor> entries(new RecordingProcessor);
        events.clear();
        logger->addProcessor(BasicLogWriter::create(writer.get()).get()); // before the values are read
        logger->addProcessor(entries.get());
        logger->log(-round, String(u't', static_cast<int>(random() % 400)));

        const ILogEntry& entry = *entries->entries()[0];
        std::string expected = "write(";
        const auto names = entry.getFieldNames();
        for (const Reference<String>& name : *names)
            expected += name->toUtf8() + "=" + fieldOf(entry, name->getData()) + "\n";
        expected += LINE + std::string(") flush ");
        ASSERT_EQ(events, expected) << "round " << round;
        BasicLogWriter::create(writer.get())->process(&entry);
        ASSERT_EQ(events, expected + expected) << "round " << round;
    }
    events.clear();
    const Reference<LogEntry> entry = LogEntry::create();
    const Reference<ILogProcessor> log = BasicLogWriter::create(writer.get());
    log->process(entry.get());
    entry->setField(u"text", new String(u"two\nlines"));
    log->process(entry.get());
    EXPECT_EQ(events, std::string("write(") + LINE + ") flush write(text=two\nlines\n" + LINE + ") flush ");
    entry->setField(u"nothing", nullptr);
    EXPECT_THROW(log->process(entry.get()), ResultException);
}

TEST(XmlLogWriter, FramesItsEntriesAndEscapesWhenAsked)
{
    const std::string head = "write(<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n) write(<log>\n) ";
    const std::string foot = "write(</log>\n) flush ";
    std::string events;
    const Reference<io::Writer> writer(new Sink<Chars>(events));
    XmlLogWriter::create(writer.get());
    EXPECT_EQ(events, head + foot);

    const std::pair<XmlLogWriter::Values, std::string> cases[] = {
        {XmlLogWriter::Values::AS_THEY_ARE, "<b>&\x01\r"},
        {XmlLogWriter::Values::ESCAPED, "&lt;b&gt;&amp;\xFD&#13;"}, // U+FFFD, of which the sink stores the low byte
    };
    for (const auto& [values, value] : cases) {
        events.clear();
        {
            const Reference<ILogProcessor> log = XmlLogWriter::create(writer.get(), values);
            const Reference<LogEntry> entry = LogEntry::create();
            log->process(entry.get());
            entry->setField(u"text kind=\"x\"", new String(u"<b>&\x01\r"));
            log->process(entry.get());
        }
        EXPECT_EQ(events,
            head + "write(  <entry>\n  </entry>\n) flush write(  <entry>\n    <text kind=\"x\"> " + value
                + " </text>\n  </entry>\n) flush " + foot);
    }
}

TEST(JsonLogWriter, WritesAnObjectOnALine)
{
    std::string events;
    const Reference<io::Writer> writer(new Sink<Chars>(events));
    const Reference<ILogProcessor> log = JsonLogWriter::create(writer.get());
    const Reference<LogEntry> entry = LogEntry::create();
    log->process(entry.get());
    EXPECT_EQ(std::exchange(events, ""), "write({}\n) flush ");

    const std::pair<Reference<Object>, const char*> cases[] = {{nullptr, "null"}, {new Integer32(-5), "-5"},
        {new UInteger64(UINT64_MAX), "18446744073709551615"}, {new math::BigDecimal(u"-0.250"), "-0.25"},
        {new Double(std::numeric_limits<double>::infinity()), "\"inf\""}, {new String(u"-5"), "\"-5\""},
        {new String(u"a\"b\\c\n\x1F\u2028"), "\"a\\\"b\\\\c\\n\\u001f\\u2028\""}};
    for (const auto& [value, text] : cases) {
        entry->setField(u"\n", value.get());
        log->process(entry.get());
        EXPECT_EQ(std::exchange(events, ""), std::string("write({\"\\n\":") + text + "}\n) flush ");
    }
}

/// Fails unless each line is an object of which a text is, in UTF-16, what the hexadecimal digits say.
constexpr char JSON_CHECK[] = R"(python3 -c '
import json, sys
lines = sys.stdin.buffer.read().split(b"\n")
entries = [json.loads(line) for line in lines[:-1]]
assert len(entries) == 500 and lines[-1] == b""
for number, entry in enumerate(entries):
    assert entry["sequence"] == number, number
    for name in ("text", "more"):
        assert entry[name] == bytes.fromhex(entry["hex" + name]).decode("utf-16-le", "replace"), entry
')";

TEST(JsonLogWriter, IsReadByAnotherReader)
{
    Random random;
    const Reference<io::ByteArrayOutputStream> out(new io::ByteArrayOutputStream);
    const Reference<ILogProcessor> log = JsonLogWriter::create(new io::OutputStreamWriter(out.get(), u"UTF-8", 64));
    for (int number = 0; number < 500; ++number) {
        const Reference<LogEntry> entry = LogEntry::create();
        entry->setField(u"sequence", new Integer32(number));
        for (const char16_t* name : {u"text", u"more"}) {
            std::u16string text;
            std::string hex;
            const int kinds[] = {0x80, 0x3000, 0x10000};
            for (int left = random.below(20); left > 0; --left) {
                const bool isHalf = random.below(4) == 0;
                text += static_cast<char16_t>(isHalf ? 0xD800 + random.below(0x800) : random.below(kinds[left % 3]));
                for (const int byte : {text.back() & 0xFF, text.back() >> 8}) {
                    for (const int digit : {byte >> 4, byte & 0xF})
                        hex += "0123456789abcdef"[digit];
                }
            }
            entry->setField(name, new String(text));
            entry->setField(String(u"hex").append(name), new String(hex));
        }
        log->process(entry.get());
    }
    std::FILE* const reader = ::popen(JSON_CHECK, "w");
    ASSERT_NE(reader, nullptr);
    std::fwrite(out->getBytes(), 1, static_cast<std::size_t>(out->getSize()), reader);
    EXPECT_EQ(::pclose(reader), 0);
}

TEST(ZonedTimeStamp, IsWrittenByRfc3339)
{
    const STRUCT_VX_TIME time {2026, 3, 0, 1, 2, 3, 4, 5};
    const std::pair<int, const char*> rows[]
        = {{0, "Z"}, {330, "+05:30"}, {-420, "-07:00"}, {-1, "-00:01"}, {14 * 60, "+14:00"}};
    for (const auto& [ahead, zone] : rows)
        EXPECT_EQ(ZonedTimeStamp({time, ahead}).toString().toUtf8(), std::string("2026-03-01T02:03:04.005") + zone);
    EXPECT_EQ(ZonedTimeStamp(false).getMinutesAhead(), 0);
}

TEST(ZonedTimeStamp, IsReadByRfc3339)
{
    const std::pair<const char16_t*, const char*> rows[] = {// the text, and the time as it is written
        {u"1985-04-12T23:20:50.52Z", "1985-04-12T23:20:50.520Z"}, // the examples of the standard
        {u"1996-12-19T16:39:57-08:00", "1996-12-19T16:39:57.000-08:00"},
        {u"1990-12-31T15:59:60-08:00", "1990-12-31T15:59:59.000-08:00"},
        {u"1937-01-01T12:00:27.87+00:20", "1937-01-01T12:00:27.870+00:20"},
        {u"2000-02-29t00:00:00.9999z", "2000-02-29T00:00:00.999Z"},
        {u"0000-01-01 23:59:59-00:00", "0000-01-01T23:59:59.000Z"}};
    for (const auto& [text, written] : rows) {
        const auto time = ZonedTimeStamp::tryParse(text);
        ASSERT_TRUE(time) << written;
        EXPECT_EQ(time->toString().toUtf8(), written);
    }
    EXPECT_EQ(
        ZonedTimeStamp::tryParse(u"2026-11-19T02:58:01+01:00"), ZonedTimeStamp::tryParse(u"2026-11-19T01:58:01Z"));
    EXPECT_EQ(ZonedTimeStamp::tryParse(u"2026-11-27T00:00:00Z")->getTime().dayOfWeek, 5);
    const std::u16string whole = u"2026-11-19T02:58:01.5+01:00";
    for (std::size_t length = 0; length < whole.size(); ++length)
        EXPECT_FALSE(ZonedTimeStamp::tryParse(whole.substr(0, length))) << length;
    for (const char16_t* text : {u"2026-11-19T02:58:01.+01:00", u"2026-11-19T02:58:01.5+01:00 ",
             u"2026-02-29T00:00:00Z", u"2026-13-01T00:00:00Z", u"2026-00-01T00:00:00Z", u"2026-01-00T00:00:00Z",
             u"2026-01-01T24:00:00Z", u"2026-01-01T00:60:00Z", u"2026-01-01T00:00:61Z", u"2026-01-01T00:00:00+24:00",
             u"2026-01-01T00:00:00+00:60", u"+026-01-01T00:00:00Z", u"2026-1-01T00:00:00Z", u"2026-01-01T00:00:00+1:00",
             u"2026-01-01X00:00:00Z"})
        EXPECT_FALSE(ZonedTimeStamp::tryParse(text)) << String(text);
}

/// A disk that may be full: a stream that stores what it accepts.
struct Disk : io::ByteArrayOutputStream {
    using ByteArrayOutputStream::write;
    void write(const signed char* bytes, std::int32_t length) override
    {
        if (m_isFull)
            throw ResultException(RESULT_FAIL, u"full");
        ByteArrayOutputStream::write(bytes, length);
    }
    bool m_isFull = false;
};

TEST(LogChain, GoesOnAfterAnEntryThatItCannotWrite)
{
    const auto entry = [](const std::string& text) { return "text=" + text + "\n" + LINE; };
    for (const char16_t* encoding : {u"UTF-8", u"UTF-16LE", u"UTF-32LE"}) {
        const Reference<Disk> disk(new Disk);
        const Reference<ILogProcessor> writer
            = BasicLogWriter::create(new io::OutputStreamWriter(new io::EntryStream(disk.get()), encoding, 64));
        const Reference<AsyncProcessor> async
            = AsyncProcessor::create(writer.get(), 1, AsyncProcessor::Failures::KEEP_WORKER);
        const Reference<Logger> logger = Logger::create();
        logger->enableField(u"level", false);
        logger->addProcessor(async.get());
        logger->log(u"half of a pair \xD83D");
        logger->log(u"\xDE00 the other half");
        logger->log(u"both \U0001F600");
        EXPECT_TRUE(async->waitUntilDone());
        disk->m_isFull = true;
        logger->log(String(u'x', 1000));
        EXPECT_FALSE(async->waitUntilDone());
        disk->m_isFull = false;
        logger->log(u"last");
        EXPECT_TRUE(async->waitUntilDone());
        EXPECT_EQ(disk->toString(encoding).toUtf8(),
            entry("half of a pair \uFFFD") + entry("\uFFFD the other half") + entry("both \U0001F600") + entry("last"))
            << String(encoding);
    }
}

TEST(LogWriters, WriteTheSameToUtf8AndToText)
{
    const auto escaped = [](io::Writer* writer) { return XmlLogWriter::create(writer, XmlLogWriter::Values::ESCAPED); };
    const auto raw = [](io::Writer* writer) { return XmlLogWriter::create(writer); };
    using Create = Reference<ILogProcessor> (*)(io::Writer*);
    for (const Create create : {Create(BasicLogWriter::create), Create(JsonLogWriter::create), +escaped, +raw}) {
        for (const std::int32_t size : {6, 200, 4096}) {
            const Reference<io::ByteArrayOutputStream> bytes(new io::ByteArrayOutputStream);
            const Reference<io::OutputStreamWriter> toBytes(new io::OutputStreamWriter(bytes.get(), u"UTF-8", size));
            const Reference<io::StringWriter> toText(new io::StringWriter);
            const Reference<Logger> logger = Logger::create(u"n\u4E2D");
            for (const char16_t* field : {u"sequence", u"thread", u"timestamp"})
                logger->enableField(field, true);
            logger->setTimes(Logger::Times::RFC_3339);
            logger->addProcessor(create(toBytes.get()).get());
            logger->addProcessor(create(toText.get()).get());
            for (int length = 0; length < 40; ++length) {
                for (const char16_t* part : {u"", u"\u00E9", u"<\u2028", u"\U0001F600", u"\xD83D", u"\xDE00\xDE00"})
                    logger->log(length - 20, String(u'a', length) + part + u"b");
            }
            const String text = toText->toString();
            EXPECT_EQ(bytes->toString(u"UTF-8"), text) << size;
            EXPECT_EQ(toBytes->getPosition(), text.getLength()) << size;
        }
    }
}

} // namespace
} // namespace vx::log
