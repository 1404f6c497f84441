#include "StreamDoubles.h"

#include "tests/Told.h"

#include <functional>

using namespace vx;
using namespace vx::io;
using namespace vx::text::charset;

namespace {

/// Throws in one of its calls, which then does nothing.
class FailingOnce : public OutputStream {
public:
    explicit FailingOnce(int failingCall)
        : m_left(failingCall)
    {
    }

    using OutputStream::write;
    void write(const signed char* bytes, std::int32_t length) override
    {
        count();
        m_bytes.append(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(length));
    }
    void flush() override { count(); }

    bool hasFailed() const { return m_left < 0; }
    const std::string& bytes() const { return m_bytes; }

private:
    void count()
    {
        if (m_left-- == 0)
            throw TimeoutException(u"once");
    }

    int m_left;
    std::string m_bytes;
};

/// Repeats each of its steps that fails.
void retried(const std::function<void()>& step)
{
    try {
        step();
    } catch (const TimeoutException&) {
        step();
    }
}

void writeBits(OutputStream* sink)
{
    BitOutputStream out(sink);
    retried([&] { out.writeBit(true); });
    for (const auto& row : {std::pair(5U, 3), {0x1FU, 8}, {0x2AU, 7}, {0U, 1}, {0x91U, 8}}) {
        retried([&] { out.write(row.first, row.second); });
        retried([&] { out.write(static_cast<signed char>(row.first)); });
        retried([&] { out.write(0xDEADBEEFU, 32); });
    }
    for (int count = 0; count < 2; ++count)
        retried([&] { out.flush(); });
}

void writeAlphaNum(OutputStream* sink)
{
    AlphaNumOutputStream out(sink);
    for (const std::size_t count : {1, 7, 4}) {
        for (std::size_t index = 0; index < count; ++index)
            retried([&] { out.write("f\xE4\x9C\x31\xFFoo"[index]); });
        retried([&] { out.flush(); });
    }
}

void writeBuffered(OutputStream* sink)
{
    BufferedOutputStream out(sink, 16);
    for (const char* piece : {"0123456789", "0123456789", "0123456789012345", "0"})
        retried([&] { out.write(piece, static_cast<std::int32_t>(std::string_view(piece).size())); });
    retried([&] { out.flush(); });
}

/// Unit by unit, so that pairs are split.
template <const char16_t* encoding>
void writeUnits(OutputStream* sink)
{
    OutputStreamWriter out(sink, encoding, 9);
    for (const char16_t unit : std::u16string_view(u"a\u00E9\u4E2D\U0001F600\U0001D11Ebc\U0001F600"))
        retried([&] { out.write(unit); });
    retried([&] { out.flush(); });
}

/// Texts larger than the buffer, of which a plain stream keeps a part.
template <const char16_t* encoding>
void writeEntries(OutputStream* sink)
{
    OutputStreamWriter out(new EntryStream(sink), encoding, 9);
    for (const char16_t* text : {u"\u4E2D\U0001F600 0123456789 0123456789", u"x", u"", u"0123456789\U0001F600"}) {
        retried([&] { out.write(text); });
        retried([&] { out.flush(); });
    }
}

constexpr char16_t UTF8[] = u"UTF-8", UTF16[] = u"UTF-16LE", UTF32[] = u"UTF-32BE", AMP7[] = u"AMP-7";

TEST(Retry, WritesTheSameBytesWhicheverCallOfTheSinkHasFailed)
{
    const std::pair<const char*, void (*)(OutputStream*)> rows[]
        = {{"bits", writeBits}, {"alphanumeric", writeAlphaNum}, {"buffered", writeBuffered},
            {"units in UTF-8", writeUnits<UTF8>}, {"units in UTF-16", writeUnits<UTF16>},
            {"units in UTF-32", writeUnits<UTF32>}, {"units in AMP-7", writeUnits<AMP7>},
            {"entries in UTF-8", writeEntries<UTF8>}, {"entries in AMP-7", writeEntries<AMP7>}};
    for (const auto& [name, work] : rows) {
        const Reference<FailingOnce> whole(new FailingOnce(INT_MAX));
        work(whole.get());
        for (int call = 0;; ++call) {
            const Reference<FailingOnce> sink(new FailingOnce(call));
            work(sink.get());
            if (!sink->hasFailed()) {
                EXPECT_GT(call, 2) << name;
                break;
            }
            EXPECT_EQ(sink->bytes(), whole->bytes()) << name << ", call " << call;
        }
    }
}

TEST(Retry, ReadsBitsThatAFailingSourceKeptWaiting)
{
    std::string events;
    BitInputStream in(new Source<Bytes>({0x12, 0x34, 0x56, 0x78}, events, {1, Source<Bytes>::FAIL, 1, 1, -1, 1}));
    EXPECT_EQ(in.read(4), 1);
    EXPECT_THROW(in.read(12), TimeoutException);
    EXPECT_EQ(in.read(12), 0x234);
    EXPECT_THROW(in.read(16), TimeoutException);
    EXPECT_EQ(in.read(16), 0x5678);
}

TEST(Retry, LeavesNothingOfARefusedTextToTheNextOne)
{
    struct {
        const char* name;
        const char16_t *encoding, *refused;
        bool sinkFails;
    } const rows[] = {{"a pair without its other half", u"UTF-8", u"bad\xD800x", false},
        {"the same, held by the writer", u"AMP-7", u"bad\xD800x", false},
        {"half a pair at the end", u"UTF-8", u"bad\xD800", false},
        {"the same, held by the writer", u"AMP-7", u"bad\xD800", false},
        {"no character of the encoding", u"CP1252", u"bad\u4E2D", false}, {"a full disk", u"UTF-8", u"bad", true}};
    for (const auto& row : rows) {
        for (const bool flushes : {false, true}) {
            std::string events;
            Sink<Bytes>* const sink = new Sink<Bytes>(events);
            const Reference<OutputStreamWriter> out(new OutputStreamWriter(sink, row.encoding, 64));
            out->setSubstitutionMode(false);
            out->write(u"good\n");
            sink->m_fails = row.sinkFails;
            EXPECT_THROW((out->write(row.refused), out->flush()), Exception) << row.name;
            sink->m_fails = false;
            events.clear();
            if (flushes)
                out->flush();
            out->write(u"next\n");
            out->flush();
            // If the sink refuses a flush, the failed text is everything since the last flush.
            const std::string without = row.sinkFails ? "write(next\n) flush " : "write(good\nnext\n) flush ";
            EXPECT_EQ(events, flushes ? "write(good\nbad) flush write(next\n) flush " : without) << row.name;
        }
    }
}

TEST(EntryStream, IsOneWriteForEachEntryAndNoneForARefusedOne)
{
    std::string events;
    Sink<Bytes>* const sink = new Sink<Bytes>(events);
    const Reference<OutputStreamWriter> out(new OutputStreamWriter(new EntryStream(sink, false), u"CP1252", 6));
    out->setSubstitutionMode(false);
    out->write(u"<log>");
    EXPECT_THROW(out->write(u"longer than its buffer \u4E2D"), UnmappableCharacterException);
    out->write(u"longer than its buffer");
    out->flush();
    EXPECT_EQ(events, "write(<log>longer than its buffer) ");

    sink->m_fails = true;
    out->write(u"refused by the disk");
    EXPECT_THROW(out->flush(), TimeoutException);
    sink->m_fails = false;
    events.clear();
    out->write(u"next");
    out->flush();
    out->flush();
    EXPECT_EQ(events, "write(next) ");
}

TEST(InputStreamReader, GivesWhatFillsTheRoomBeforeItTellsAFault)
{
    struct {
        const char16_t* encoding;
        std::string_view bytes;
        std::int32_t length;
        const char16_t* text;
        std::int64_t position, fault;
    } const rows[] = {{u"UTF-8", "ab\xED\xA0\x80", 2, u"ab", 2, 2}, {u"AMP-7", "ab&_D800;", 2, u"ab", 2, 2},
        {u"AMP-7", "a&&_D800;", 2, u"a", 1, 2}, // a substitution needs one more unit
        {u"AMP-7", "&&_D800;", 1, u"\uFFFD", 1, 1}};
    for (const auto& row : rows) {
        InputStreamReader in(over(row.bytes).get(), row.encoding, 64);
        char16_t text[8] = {};
        const std::int32_t length = in.read(text, row.length);
        EXPECT_EQ((Told {length, String(text), in.getPosition()}),
            (Told {std::u16string_view(row.text).size(), String(row.text), row.position}))
            << row.bytes;
        for (int round = 0; round < 2; ++round) {
            EXPECT_THROW(in.read(text, 8), InvalidCharacterException) << row.bytes;
            EXPECT_EQ(in.getPosition(), row.fault) << row.bytes;
        }
    }
}

TEST(AlphaNumStreams, RefuseAnAlphabetThatLosesData)
{
    for (const char16_t* alphabet : {u"ABCDEFGHJKLMNPQRSTUVWXYZ2345678", u"ABCDEFGHJKLMNPQRSTUVWXYZ2345678A",
             u"ABCDEFGHJKLMNPQRSTUVWXYZ2345678\u0141"}) {
        EXPECT_THROW(AlphaNumInputStream(nullptr, alphabet), ResultException) << String(alphabet);
        EXPECT_THROW(AlphaNumOutputStream(nullptr, alphabet), ResultException) << String(alphabet);
    }
}

} // namespace
