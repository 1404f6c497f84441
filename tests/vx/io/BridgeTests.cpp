#include "StreamDoubles.h"

#include "tests/Outcome.h"
#include "tests/Slots.h"

#include <tuple>

using namespace std::literals;
using namespace vx;
using namespace vx::io;
using namespace vx::text::charset;

namespace {

/// "A", "é", "中" and a smiling face: one, two, three and four bytes.
constexpr const char MIXED_UTF8[] = "A\xC3\xA9\xE4\xB8\xAD\xF0\x9F\x98\x80";
constexpr const char16_t MIXED[] = u"A\u00E9\u4E2D\U0001F600";

class Bridges : public ::testing::Test {
protected:
    Reference<InputStreamReader> reader(
        std::string_view bytes, const char16_t* encoding, std::vector<int> steps = {}, std::int32_t size = 64)
    {
        m_source = new Source<Bytes>({bytes.begin(), bytes.end()}, m_events, std::move(steps));
        return Reference<InputStreamReader>(new InputStreamReader(m_source, encoding, size));
    }
    Reference<OutputStreamWriter> writer(const char16_t* encoding, std::int32_t size)
    {
        m_sink = new Sink<Bytes>(m_events);
        return Reference<OutputStreamWriter>(new OutputStreamWriter(m_sink, encoding, size));
    }
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

TEST_F(Bridges, DecodeTheSameTextHoweverItsBytesArrive)
{
    const std::string bytes = std::string(MIXED_UTF8) + MIXED_UTF8 + MIXED_UTF8;
    const std::u16string text = std::u16string(MIXED) + MIXED + MIXED;
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

TEST_F(Bridges, ReplaceTheBytesOfACharacterThatTheEndCuts)
{
    // The last number: the position of the fault with substitution off
    const std::tuple<const char16_t*, std::string_view, const char16_t*, std::int64_t> rows[]
        = {{u"UTF-8", "a\xE4", u"a\uFFFD", 1}, {u"UTF-8", "a\xE4\xB8", u"a\uFFFD\uFFFD", 1},
            {u"UTF-8", "\xE4z", u"\uFFFDz", 0}, {u"UTF-8", "\xF0\x9F\x98", u"\uFFFD\uFFFD\uFFFD", 0},
            {u"UTF-16LE", "a\0b"sv, u"a\uFFFD", 2}, {u"UTF-32BE", "\0\0\0a\0\0\0"sv, u"a\uFFFD\uFFFD\uFFFD", 4}};
    for (const auto& [encoding, bytes, text, position] : rows) {
        for (std::int32_t length = 1; length <= 4; ++length)
            EXPECT_EQ(readAll(*reader(bytes, encoding, {1, 1, 1, 1, 1, 1, 1}), length), text) << bytes;
        const auto strict = reader(bytes, encoding);
        strict->setSubstitutionMode(false);
        for (int round = 0; round < 2; ++round) {
            EXPECT_EQ(
                saidBy<InvalidCharacterException>([&] { readAll(*strict, 64); }), "the stream ends inside a character");
            EXPECT_EQ(strict->getPosition(), position);
        }
    }
}

TEST_F(Bridges, ReleaseTheStreamWhenTheEncodingIsUnknown)
{
    EXPECT_EQ(saidBy<UnknownEncodingException>([&] { reader("abc", u"no-such"); }), "no-such");
    EXPECT_EQ(saidBy<UnknownEncodingException>([&] { writer(u"UTF-16", 64); }), "UTF-16");
    EXPECT_EQ(m_events, "gone gone ");
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
            EXPECT_EQ(contentOf(*bytes), contentOf(*whole)) << String(encoding) << piece;
        }
    }
}

TEST_F(Bridges, StandAtTheUnitThatCannotBeEncoded)
{
    EXPECT_EQ(slotOf(&InputStreamReader::getEncodingName), slotOf(&Reader::reset) + 1);
    EXPECT_EQ(slotOf(&OutputStreamWriter::getEncodingName), slotOf(&Writer::close) + 1);
    EXPECT_EQ(slotOf(&BufferedReader::readLine), slotOf(&Reader::reset) + 1);
    const std::tuple<const char16_t*, const char16_t*, std::int64_t, const char*> rows[] = {
        {u"CP1252", u"ab\u20AC\u4E2Dcd", 3, "write(ab\x80) flush "},
        {u"ASCII", u"0123456789\u00E9", 10, "write(012345) write(6789) flush "},
        {u"ASCII", u"a\xDC00", 1, "write(a) flush "},
    };
    for (const auto& [encoding, text, position, events] : rows) {
        const auto output = writer(encoding, 6);
        output->setSubstitutionMode(false);
        m_events.clear();
        EXPECT_THROW(output->write(text), Exception);
        EXPECT_EQ(output->getPosition(), position);
        output->flush();
        EXPECT_EQ(m_events, events);
    }
}

} // namespace
