#include "Recording.h"
#include "vx/io/Writer.h"
#include "vx/log/BasicLogWriter.h"
#include "vx/log/LogEntry.h"
#include "vx/log/XmlLogWriter.h"

#include <gtest/gtest.h>

#include <string>

namespace vx::log {
namespace {

const char LINE[] = "-------------------------\n";

/// Writes each of its calls down.
class RecordingWriter : public io::Writer {
public:
    using Writer::write;
    void write(const char16_t* text, std::int32_t length) override
    {
        m_events += "write(" + String(text, length).toUtf8() + ") ";
    }
    void flush() override { m_events += "flush "; }
    void close() override { m_events += "close "; }

    std::string m_events;
};

TEST(BasicLogWriter, WritesAnEntryInOneCallAndFlushes)
{
    Reference<RecordingWriter> writer(new RecordingWriter);
    {
        const Reference<ILogProcessor> log = BasicLogWriter::create(writer.get());
        const Reference<LogEntry> entry = LogEntry::create();
        log->process(entry.get());
        entry->setField(u"text", new String(u"two\nlines"));
        log->process(entry.get());
    }
    EXPECT_EQ(writer->m_events, std::string("write(") + LINE + ") flush write(text=two\nlines\n" + LINE + ") flush ");
}

TEST(XmlLogWriter, FramesItsEntriesAndEscapesWhenAsked)
{
    const std::string head = "write(<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n) write(<log>\n) ";
    const std::string foot = "write(</log>\n) flush ";
    Reference<RecordingWriter> writer(new RecordingWriter);
    XmlLogWriter::create(writer.get());
    EXPECT_EQ(writer->m_events, head + foot);

    struct {
        XmlLogWriter::Values values;
        std::string value;
    } cases[] = {
        {XmlLogWriter::Values::AS_THEY_ARE, "<b>&\x01\r"},
        {XmlLogWriter::Values::ESCAPED, "&lt;b&gt;&amp;\xEF\xBF\xBD&#13;"},
    };
    for (const auto& row : cases) {
        writer->m_events.clear();
        {
            const Reference<ILogProcessor> log = XmlLogWriter::create(writer.get(), row.values);
            const Reference<LogEntry> entry = LogEntry::create();
            log->process(entry.get());
            entry->setField(u"text kind=\"x\"", new String(u"<b>&\x01\r"));
            log->process(entry.get());
        }
        EXPECT_EQ(writer->m_events,
            head + "write(  <entry>\n  </entry>\n) flush write(  <entry>\n    <text kind=\"x\"> " + row.value
                + " </text>\n  </entry>\n) flush " + foot);
    }
}

} // namespace
} // namespace vx::log
