#include "StreamDoubles.h"

#include "tests/Slots.h"

#include "vx/io/ByteArrayInputStream.h"
#include "vx/io/ByteArrayOutputStream.h"
#include "vx/io/InputStreamReader.h"
#include "vx/io/OutputStreamWriter.h"
#include "vx/text/charset/CharsetException.h"

#include <functional>

using namespace std::string_literals;
using namespace vx;
using namespace vx::io;
using namespace vx::text::charset;

namespace {

std::vector<signed char> bytesOf(std::string_view text)
{
    return {text.begin(), text.end()};
}

/// "A", "é", "中" and a smile: one, two, three and four bytes.
constexpr const char MIXED_UTF8[] = "A\xC3\xA9\xE4\xB8\xAD\xF0\x9F\x98\x80";
constexpr const char16_t MIXED[] = u"A\u00E9\u4E2D\U0001F600";

class Bridges : public ::testing::Test {
protected:
    Reference<InputStreamReader> reader(
        std::string_view bytes, const char16_t* encoding, std::vector<int> steps = {}, std::int32_t size = 64)
    {
        m_source = new Source<Bytes>(bytesOf(bytes), m_events, std::move(steps));
        return Reference<InputStreamReader>(new InputStreamReader(m_source, encoding, size));
    }
    Reference<OutputStreamWriter> writer(const char16_t* encoding, std::int32_t size)
    {
        m_sink = new Sink<Bytes>(m_events);
        return Reference<OutputStreamWriter>(new OutputStreamWriter(m_sink, encoding, size));
    }
    /// Everything, by reads of `length`.
    static std::u16string readAll(Reader& reader, std::int32_t length)
    {
        std::u16string text;
        std::vector<char16_t> units(static_cast<std::size_t>(length));
        for (std::int32_t got; (got = reader.read(units.data(), length)) >= 0;)
            text.append(units.data(), static_cast<std::size_t>(got));
        return text;
    }

    std::string m_events;
    Source<Bytes>* m_source = nullptr;
    Sink<Bytes>* m_sink = nullptr;
};

TEST_F(Bridges, AppendTheNameBehindTheOperationsOfTheirBase)
{
    EXPECT_EQ(slotOf(&InputStreamReader::getEncodingName), slotOf(&Reader::reset) + 1);
    EXPECT_EQ(slotOf(&OutputStreamWriter::getEncodingName), slotOf(&Writer::close) + 1);
    EXPECT_EQ(slotOf(&BufferedReader::readLine), slotOf(&Reader::reset) + 1);
    EXPECT_EQ(reader("", u"latin1")->getEncodingName(), std::u16string_view(u"ISO8859_1"));
    EXPECT_EQ(writer(u"utf8", 0)->getEncodingName(), std::u16string_view(u"UTF-8"));
}

TEST_F(Bridges, DecodeTheSameTextHoweverItsBytesArrive)
{
    std::string bytes;
    std::u16string text;
    for (int count = 0; count < 5; ++count) {
        bytes += MIXED_UTF8;
        text += MIXED;
    }
    for (int piece = 1; piece <= 12; ++piece)
        for (std::int32_t length = 1; length <= 5; ++length)
            for (const std::int32_t available : {0, 1})
                for (const std::int32_t size : {0, 7, 64}) {
                    const auto input = reader(bytes, u"UTF-8", std::vector<int>(bytes.size() + 1, piece), size);
                    m_source->m_available = available;
                    EXPECT_EQ(readAll(*input, length), text)
                        << piece << ' ' << length << ' ' << available << ' ' << size;
                    EXPECT_EQ(input->getPosition(), static_cast<std::int64_t>(bytes.size()));
                }
}

TEST_F(Bridges, ReadABlockOfTheirSizeAndNotMoreThanIsAskedFor)
{
    struct Row {
        std::int32_t size;
        std::int32_t available;
        std::vector<std::int32_t> lengths;
        const char* results;
        const char* events;
    };
    const Row rows[] = {
        {1, 0, {1}, "1 ", "read(6) "},
        {8, 0, {4, 4, 4}, "4 4 4 ", "read(8) read(8) "},
        {8, 0, {6, 6}, "6 2 ", "read(8) available "},
        {8, 1, {6, 6}, "6 6 ", "read(8) available read(8) "},
        {8, 1, {99, 99, 99}, "20 -1 -1 ", "read(8) available read(8) available read(8) available read(8) "},
        {8, 0, {0, -1, 99, 99, 99, 99}, "0 0 8 8 4 -1 ",
            "read(8) available read(8) available read(8) available read(8) "},
    };
    for (const Row& row : rows) {
        const auto input = reader("abcdefghijklmnopqrst", u"ASCII", {}, row.size);
        m_source->m_available = row.available;
        m_events.clear();
        std::string results;
        for (const std::int32_t length : row.lengths) {
            char16_t units[99];
            results += std::to_string(input->read(units, length)) + " ";
        }
        EXPECT_EQ(results, row.results) << row.events;
        EXPECT_EQ(m_events, row.events);
    }
}

TEST_F(Bridges, KeepACharacterWholeOrItsRestForTheNextRead)
{
    const auto input = reader(MIXED_UTF8, u"UTF-8");
    char16_t units[8];
    EXPECT_EQ(input->read(units, 4), 3); // the pair has no room
    EXPECT_EQ(input->available(), 4 / 6);
    EXPECT_EQ(input->read(), 0xD83D);
    EXPECT_EQ(input->available(), 1);
    EXPECT_EQ(input->getPosition(), 10);
    EXPECT_EQ(input->read(units, 8), 1);
    EXPECT_EQ(units[0], 0xDE00);
    EXPECT_EQ(input->read(), -1);
    EXPECT_EQ(input->read(), -1);
}

TEST_F(Bridges, TellWhatIsAvailableAsIfEachCharacterWereTheLongest)
{
    const auto input = reader(std::string(40, 'a'), u"UTF-8");
    m_source->m_available = 12;
    EXPECT_EQ(input->available(), 2);
    input->read();
    EXPECT_EQ(input->available(), (12 + 39) / 6);
    m_source->m_available = INT32_MAX;
    EXPECT_EQ(reader("", u"ASCII")->available(), 0);
    EXPECT_EQ(input->available(), (INT64_C(39) + INT32_MAX) / 6);
}

TEST_F(Bridges, ReplaceTheBytesOfACharacterThatTheEndCuts)
{
    const struct {
        const char16_t* encoding;
        std::string_view bytes;
        const char16_t* text;
        std::int64_t position; // of the fault, with substitution off
    } rows[] = {
        {u"UTF-8", "a\xE4", u"a\uFFFD", 1},
        {u"UTF-8", "a\xE4\xB8", u"a\uFFFD\uFFFD", 1},
        {u"UTF-8", "\xE4z", u"\uFFFDz", 0}, // what comes behind it is read again
        {u"UTF-8", "\xF0\x9F\x98", u"\uFFFD\uFFFD\uFFFD", 0},
        {u"UTF-16LE", std::string_view("a\0b", 3), u"a\uFFFD", 2},
        {u"UTF-32BE", std::string_view("\0\0\0a\0\0\0", 7), u"a\uFFFD\uFFFD\uFFFD", 4},
    };
    for (const auto& row : rows) {
        for (std::int32_t length = 1; length <= 4; ++length)
            EXPECT_EQ(readAll(*reader(row.bytes, row.encoding, {1, 1, 1, 1, 1, 1, 1}), length), row.text) << row.bytes;

        const auto strict = reader(row.bytes, row.encoding);
        strict->setSubstitutionMode(false);
        for (int round = 0; round < 2; ++round) {
            expectThrow<InvalidCharacterException>(
                [&] { readAll(*strict, 64); }, u"the stream ends inside a character");
            EXPECT_EQ(strict->getPosition(), row.position);
        }
    }
}

TEST_F(Bridges, StandAtTheByteThatCannotBeDecoded)
{
    const struct {
        const char16_t* encoding;
        std::string_view bytes;
        bool substitution;
        std::int64_t position;
    } rows[] = {
        {u"UTF-8", "abc\xED\xA0\x80", true, 3},
        {u"UTF-8", "\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9\xF4\x90\x80\x80", false, 8},
        {u"UTF-32LE", std::string_view("a\0\0\0\0\xD8\0\0", 8), true, 4},
        {u"ASCII", "0123456789\x80", false, 10},
    };
    for (const auto& row : rows) {
        const auto input = reader(row.bytes, row.encoding, {}, 6);
        m_source->m_available = 1;
        input->setSubstitutionMode(row.substitution);
        for (int round = 0; round < 2; ++round) {
            EXPECT_THROW(readAll(*input, 64), Exception) << row.bytes;
            EXPECT_EQ(input->getPosition(), row.position) << row.bytes;
        }
    }
    // With substitution on, a value beyond the last code point needs a unit more than it gives.
    for (std::int32_t length = 1; length <= 3; ++length)
        EXPECT_EQ(readAll(*reader("a\xF4\x90\x80\x80z", u"UTF-8"), length), u"a\uFFFDz");
}

TEST_F(Bridges, PassAFailureOfTheSourceOnAndGoOn)
{
    using S = Source<Bytes>;
    const auto input = reader(MIXED_UTF8, u"UTF-8", {2, S::FAIL, S::NOTHING, 3, S::FAIL});
    EXPECT_EQ(input->read(), 'A');
    expectThrow<TimeoutException>([&] { input->read(); }, u"source failed");
    EXPECT_EQ(input->read(), 0xE9);
    expectThrow<TimeoutException>([&] { input->read(); }, u"source failed");
    EXPECT_EQ(readAll(*input, 64), u"\u4E2D\U0001F600");
}

TEST_F(Bridges, CloseWithoutFlushingAndReleaseAtTheEnd)
{
    {
        const auto input = reader("abc", u"ASCII");
        input->read();
        m_events.clear();
        input->close();
        input->close();
        const std::function<void()> operations[] = {[&] { input->read(); }, [&] { input->available(); },
            [&] { input->getEncodingName(); }, [&] { input->setSubstitutionMode(true); }};
        for (const auto& operation : operations)
            expectThrow<IoException>(operation, u"stream closed");
        EXPECT_EQ(input->getPosition(), 1);
    }
    EXPECT_EQ(m_events, "close close gone ");
    m_events.clear();
    {
        const auto output = writer(u"ASCII", 64);
        output->write(u"lost");
        output->close();
        output->close();
        const std::function<void()> operations[] = {[&] { output->write(u'a'); }, [&] { output->flush(); },
            [&] { output->getEncodingName(); }, [&] { output->setSubstitutionMode(true); }};
        for (const auto& operation : operations)
            expectThrow<IoException>(operation, u"stream closed");
    }
    EXPECT_EQ(m_events, "close close gone ");
    m_events.clear();
    writer(u"ASCII", 64)->write(u"lost");
    EXPECT_EQ(m_events, "gone ");
}

TEST_F(Bridges, ReleaseTheStreamWhenNobodyKnowsTheEncoding)
{
    expectThrow<UnknownEncodingException>([&] { reader("abc", u"no-such"); }, u"no-such");
    expectThrow<UnknownEncodingException>([&] { writer(u"UTF-16", 64); }, u"UTF-16");
    EXPECT_EQ(m_events, "gone gone ");
}

TEST_F(Bridges, WriteWhatIsEncodedWhenTheBufferIsFull)
{
    const struct {
        const char16_t* encoding;
        std::int32_t size;
        std::vector<std::u16string> writes;
        std::string events;
    } rows[] = {
        {u"ASCII", 0, {u"abc", u"def", u"g"}, "write(abcdef) | write(g) flush "}, // 6 at least
        {u"ASCII", 8, {u"0123456789"}, "write(01234567) | write(89) flush "},
        {u"ASCII", 8, {u"01234567"}, "write(01234567) | flush "},
        {u"ASCII", 8, {u"", u"a"}, "| write(a) flush "},
        {u"ASCII", 8, {}, "| flush "},
        {u"ASCII", 8, {u"a\u4E2Db"}, "| write(a?b) flush "},
        {u"UTF-8", 6, {u"aaaa", MIXED}, "write(aaaaA) write(\xC3\xA9\xE4\xB8\xAD) | write(\xF0\x9F\x98\x80) flush "},
        {u"UTF-16BE", 7, {u"abcd"}, "write(\0a\0b\0c) | write(\0d) flush "s},
    };
    for (const auto& row : rows) {
        const auto output = writer(row.encoding, row.size);
        m_events.clear();
        for (const std::u16string& text : row.writes)
            output->write(text.data(), static_cast<std::int32_t>(text.size()));
        m_events += "| ";
        output->flush();
        EXPECT_EQ(m_events, row.events);
    }
}

TEST_F(Bridges, EncodeTheSameBytesHoweverTheTextIsCut)
{
    const std::u16string text = std::u16string(MIXED) + MIXED + u"\U0001D11E\U0001D11Ez" + MIXED;
    for (const char16_t* encoding : {u"UTF-8", u"UTF-16LE", u"UTF-32BE", u"CP1252"}) {
        const Reference<ByteArrayOutputStream> whole(new ByteArrayOutputStream);
        const Reference<OutputStreamWriter> atOnce(new OutputStreamWriter(whole.get(), encoding, 1024));
        atOnce->write(text.c_str());
        atOnce->flush();
        for (std::size_t piece = 1; piece < text.size(); ++piece) {
            const Reference<ByteArrayOutputStream> bytes(new ByteArrayOutputStream);
            const Reference<OutputStreamWriter> output(new OutputStreamWriter(bytes.get(), encoding, 7));
            for (std::size_t start = 0; start < text.size(); start += piece) {
                const std::u16string part = text.substr(start, piece);
                output->write(part.data(), static_cast<std::int32_t>(part.size()));
                EXPECT_EQ(output->getPosition(), static_cast<std::int64_t>(start + part.size()));
            }
            output->flush();
            EXPECT_EQ(std::string(
                          reinterpret_cast<const char*>(bytes->getBytes()), static_cast<std::size_t>(bytes->getSize())),
                std::string(
                    reinterpret_cast<const char*>(whole->getBytes()), static_cast<std::size_t>(whole->getSize())))
                << String(encoding) << piece;
        }
    }
}

TEST_F(Bridges, StandAtTheUnitThatCannotBeEncoded)
{
    const struct {
        const char16_t* encoding;
        const char16_t* text;
        std::int64_t position;
        const char16_t* description;
        const char* events; // with what stood before the unit
    } rows[] = {
        {u"CP1252", u"ab\u20AC\u4E2Dcd", 3, u"", "write(ab\x80) flush "},
        {u"ASCII", u"0123456789\u00E9", 10, u"", "write(012345) write(6789) flush "},
        {u"UTF-8", u"ab\xD83Dx", 3, u"leading surrogate without trailing", nullptr},
        {u"ASCII", u"a\xDC00", 1, u"trailing surrogate without leading", "write(a) flush "},
    };
    for (const auto& row : rows) {
        const auto output = writer(row.encoding, 6);
        output->setSubstitutionMode(false);
        m_events.clear();
        try {
            output->write(row.text);
            ADD_FAILURE() << "nothing was thrown";
        } catch (const Exception& failure) {
            EXPECT_EQ(failure.getDescription(), row.description);
        }
        EXPECT_EQ(output->getPosition(), row.position);
        if (row.events != nullptr) {
            output->flush();
            EXPECT_EQ(m_events, row.events);
        } else {
            expectThrow<InvalidCharacterException>([&] { output->flush(); }, row.description);
        }
    }
}

TEST_F(Bridges, KeepWhatTheSinkDidNotTake)
{
    const auto output = writer(u"ASCII", 8);
    output->write(u"abcd");
    m_sink->m_fails = true;
    EXPECT_THROW(output->flush(), TimeoutException);
    EXPECT_THROW(output->write(u"0123456"), TimeoutException);
    m_sink->m_fails = false;
    m_events.clear();
    output->write(u"z");
    output->flush();
    EXPECT_EQ(m_events, "write(abcd0123) write(z) flush ");
}

} // namespace
