#include "Recording.h"
#include "tests/Random.h"
#include "tests/vx/io/StreamDoubles.h"
#include "vx/Result.h"
#include "vx/collections/Set.h"
#include "vx/io/EntryStream.h"
#include "vx/io/OutputStreamWriter.h"
#include "vx/log/AsyncProcessor.h"
#include "vx/log/BasicLogWriter.h"
#include "vx/log/LogEntry.h"
#include "vx/log/Logger.h"
#include "vx/log/XmlLogWriter.h"

#include <gtest/gtest.h>

#include <string>

namespace vx::log {
namespace {

const char LINE[] = "-------------------------\n";

TEST(BasicLogWriter, WritesAnEntryInOneCallAndFlushes)
{
    std::string events;
    const Reference<io::Writer> writer(new Sink<Chars>(events));
    {
        const Reference<ILogProcessor> log = BasicLogWriter::create(writer.get());
        const Reference<LogEntry> entry = LogEntry::create();
        log->process(entry.get());
        entry->setField(u"text", new String(u"two\nlines"));
        log->process(entry.get());
    }
    EXPECT_EQ(events, std::string("write(") + LINE + ") flush write(text=two\nlines\n" + LINE + ") flush ");
}

/// Adds fields of one letter and of two, from the same few, so that names meet in a bucket, and some that are its own.
class Adding : public Logger {
public:
    explicit Adding(Random& random)
        : Logger(String(u'n', static_cast<int>(random() % 400)))
        , m_random(random)
    {
        for (const char16_t* field : {u"sequence", u"thread", u"name", u"timestamp", u"level", u"text"})
            enableField(field, m_random() % 3 != 0);
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
        logger->addProcessor(BasicLogWriter::create(writer.get()).get()); // before the values are asked for
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
    const Reference<LogEntry> entry = LogEntry::create();
    entry->setField(u"nothing", nullptr);
    EXPECT_THROW(BasicLogWriter::create(writer.get())->process(entry.get()), ResultException);
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
        {XmlLogWriter::Values::ESCAPED, "&lt;b&gt;&amp;\xFD&#13;"}, // U+FFFD, of which the sink keeps the low byte
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

/// A disk that may be full: a stream that keeps what it takes.
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

} // namespace
} // namespace vx::log
