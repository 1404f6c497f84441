#include "tests/components/LoadedLibrary.h"
#include "tests/vx/Offer.h"
#include "tests/vx/net/SignalStorm.h"
#include "tests/vx/text/charset/Oracle.h"
#include "vx/Exception.h"
#include "vx/Result.h"
#include "vx/i18n/StringBundle.h"
#include "vx/io/ByteArrayInputStream.h"
#include "vx/io/ByteArrayOutputStream.h"
#include "vx/io/IChannel.h"
#include "vx/io/InputStreamReader.h"
#include "vx/io/OutputStreamWriter.h"
#include "vx/net/SocketResult.h"
#include "vx/net/Transport.h"
#include "vx/text/charset/ByteToCharConverter.h"
#include "vx/text/charset/CharToByteConverter.h"
#include "vx/text/charset/Decoder.h"
#include "vx/text/charset/Encoder.h"
#include "vx/util/PropertySet.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <list>
#include <netinet/in.h>
#include <set>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <tuple>
#include <unistd.h>
#include <vector>

namespace vx {
namespace {

using namespace std::literals;
using namespace text::charset;

const struct {
    const char16_t* name;
    const char* systemName;
    std::uint16_t number;
    /// Characters of which the system has another opinion, see scripts/generate-double-byte-tables.
    std::u16string_view decided = {};
} PAGES[] = {{u"CP1250", "CP1250", 1250}, {u"CP1251", "CP1251", 1251}, {u"CP1253", "CP1253", 1253},
    {u"CP1254", "CP1254", 1254}, {u"CP1255", "CP1255", 1255}, {u"CP1256", "CP1256", 1256}, {u"CP1257", "CP1257", 1257},
    {u"CP1258", "CP1258", 1258}, {u"CP737", "CP737", 737}, {u"CP775", "CP775", 775}, {u"CP850", "CP850", 850},
    {u"CP852", "CP852", 852}, {u"CP855", "CP855", 855}, {u"CP857", "CP857", 857}, {u"CP858", "CP858", 858},
    {u"CP862", "CP862", 862}, {u"CP866", "CP866", 866}, {u"CP932", "CP932", 932}, {u"CP936", "CP936", 936},
    {u"CP949", "CP949", 949}, {u"CP950", "CP950", 950}, {u"EUCJP", "EUC-JP", 20932}, {u"CP720", nullptr, 720},
    {u"ISO-8859-2", "ISO-8859-2", 5}, {u"ISO-8859-3", "ISO-8859-3", 6}, {u"ISO-8859-4", "ISO-8859-4", 7},
    {u"ISO-8859-5", "ISO-8859-5", 8}, {u"ISO-8859-6", "ISO-8859-6", 9}, {u"ISO-8859-7", "ISO-8859-7", 10},
    {u"ISO-8859-8", "ISO-8859-8", 11}, {u"ISO-8859-9", "ISO-8859-9", 12}, {u"ISO-8859-10", "ISO-8859-10", 13},
    {u"ISO-8859-11", "ISO-8859-11", 2259}, {u"ISO-8859-13", "ISO-8859-13", 109}, {u"ISO-8859-14", "ISO-8859-14", 110},
    {u"ISO-8859-15", "ISO-8859-15", 111}, {u"ISO-8859-16", "ISO-8859-16", 112}, {u"KOI8-R", "KOI8-R", 2084},
    {u"KOI8-U", "KOI8-U", 2088},
    // ASCII where the system has JIS X 0201, and no other forms of characters that have a code
    {u"Shift_JIS", "SHIFT_JIS", 17, u"\\~\u00A5\u203E\uFF3C\uFFE0\uFFE1\uFFE2"},
    {u"EUC-KR", "EUC-KR", 38, u"\u20A9"}, // the other won sign
    {u"GB18030", "GB18030", 114}, {u"ISO-2022-JP", nullptr, 39}, {u"UTF-16", nullptr, 1015},
    {u"UTF-32", nullptr, 1017}};

class CodecComponent : public testing::Test {
protected:
    CodecComponent()
    {
        for (const auto& page : PAGES) {
            const _GUID classId {0x6D2F0A51, page.number, 0x4B7E, {0x9C, 0x1A, 0x3E, 0x58, 0xD4, 0x07, 0xB2, 0x96}};
            const std::u16string progId = std::u16string(u"Velmaris.CharCodec.") + page.name;
            m_classes.emplace_back(progId.c_str(), creatorOf(m_library, classId));
        }
    }

    LoadedLibrary m_library {COMPONENTS "/vxcodecs.so"};
    std::list<Offer> m_classes;
};

std::u16string textOf(std::uint32_t value)
{
    if (value < 0x10000)
        return {static_cast<char16_t>(value)};
    return {static_cast<char16_t>(0xD800 + ((value - 0x10000) >> 10)), static_cast<char16_t>(0xDC00 + (value & 0x3FF))};
}

/// Converts `text` in pieces of `size` units, each of which begins with what the previous call did not read.
template <class Converter, class In, class Out>
std::basic_string<Out> inPieces(const char16_t* name, const std::basic_string<In>& text, std::size_t size)
{
    using Source = std::conditional_t<sizeof(In) == 1, signed char, char16_t>;
    using Target = std::conditional_t<sizeof(Out) == 1, signed char, char16_t>;
    const Reference<Converter> converter(Converter::getConverter(name));
    std::basic_string<Out> result;
    std::int32_t read = 0;
    for (std::size_t end = size; read < static_cast<std::int32_t>(text.size()); end += size) {
        Out room[64];
        std::int32_t written = 0;
        converter->convert(reinterpret_cast<const Source*>(text.data()), &read,
            static_cast<std::int32_t>(std::min(end, text.size())), reinterpret_cast<Target*>(room), &written, 64);
        result.append(room, static_cast<std::size_t>(written));
        if (end > text.size() + size)
            break; // the rest is an incomplete character
    }
    return result;
}

TEST_F(CodecComponent, DecodesEachWholeCodePageAsTheSystemDoes)
{
    for (const auto& page : PAGES) {
        if (page.systemName == nullptr)
            continue;
        Iconv decode("UTF-16LE", page.systemName);
        std::string bytes;
        std::u16string expected;
        const auto unitsOf
            = [&](const std::string& from) { return decode.convert(from.data(), from.size()).value_or(""); };
        const auto take = [&](const std::string& sequence) {
            const std::string units = unitsOf(sequence);
            if (page.number == 38 && (sequence[0] & 0xE0) == 0x80)
                return false; // the system has control characters there
            if (!units.empty()
                && page.decided.find(*reinterpret_cast<const char16_t*>(units.data())) != page.decided.npos)
                return true;
            if (units.empty() || units.size() > (sequence.size() == 1 ? 2U : 4U))
                return false;
            bytes += sequence;
            expected.append(reinterpret_cast<const char16_t*>(units.data()), units.size() / 2);
            return true;
        };
        for (int first = 0; first < 0x100; ++first) {
            const std::string lead(1, static_cast<char>(first));
            if (take(lead))
                continue;
            for (int second = 0x21; second < 0x100; ++second) {
                const std::string pair = lead + static_cast<char>(second);
                if (!unitsOf(lead).empty() || take(pair) || first != 0x8F || page.number != 20932)
                    continue;
                for (int third = 0xA1; third < 0xFF; ++third)
                    take(pair + static_cast<char>(third));
            }
        }
        ASSERT_GT(expected.size(), 210U) << page.systemName;
        for (std::size_t size = 1; size <= 7; ++size) {
            const auto decoded = inPieces<ByteToCharConverter, char, char16_t>(page.name, bytes, size);
            EXPECT_TRUE(decoded == expected) << page.systemName << " in pieces of " << size;
        }
    }
}

TEST_F(CodecComponent, EncodesEachWholeCodePageAsTheSystemDoes)
{
    for (const auto& page : PAGES) {
        if (page.systemName == nullptr)
            continue;
        Iconv encode(page.systemName, "UTF-16LE");
        std::u16string text;
        std::string expected;
        for (std::uint32_t value = 0; value < 0x30000; ++value) {
            if (value >= 0xD800 && value < 0xE000)
                continue;
            const std::u16string character = textOf(value);
            if (page.decided.find(character) != page.decided.npos
                || (page.number == 38 && value < 0xA0 && value >= 0x80))
                continue;
            const std::string bytes = encode.convert(character.data(), 2 * character.size()).value_or("");
            if (bytes.empty() && value % 64 != 0) // some of those without a mapping are enough
                continue;
            text += character;
            expected += bytes.empty() ? "?" : bytes;
        }
        for (std::size_t size = 1; size <= 7; ++size) {
            const auto encoded = inPieces<CharToByteConverter, char16_t, char>(page.name, text, size);
            EXPECT_TRUE(encoded == expected) << page.systemName << " in pieces of " << size;
        }
    }
}

TEST_F(CodecComponent, CountsWhatIsNoCharacterBySequences)
{
    // A pair without a character, a byte that begins nothing, ASCII after a first byte, a row without characters
    const std::tuple<const char16_t*, std::string, std::u16string> cases[] = {{u"CP932", "a\x85\xFC z", u"a\uFFFD z"},
        {u"CP932", "\xFF z", u"\uFFFD z"}, {u"CP932", "\x81 b", u"\uFFFD b"},
        {u"CP932", "\x93\xFA\x96\x7B\xB1", u"日本ｱ"}, {u"EUC-JP", "\xC6\xFC\xCB\xDC", u"日本"},
        {u"EUC_JP", "\x8F\xB0\xA1\x8E\xB1", u"丂ｱ"}, {u"EUCJP", "\x8F\xA1\xA1 z", u"\uFFFD\uFFFD z"},
        {u"windows-1251", "\xD0\xF3\xF1\xFC", u"Русь"}, {u"1255", "\xF9\xD1", u"\u05E9\u05C1"},
        {u"CP720", "\x98\xE0 A\x91", u"ء\u0636 A\u0651"}, {u"BIG5", "\xA4\xA4", u"中"},
        {u"CP949", "a\xA2\xE8z\xA2\xE8", u"a\uFFFDz\uFFFD"}, {u"CP936", "\x80\xFF\xD6", u"€\uFFFD"},
        {u"Shift_JIS", "\x93\xFA\xB1\\~", u"日ｱ\\~"}, {u"MS_Kanji", "\x85\xFC\x81 \xA0", u"\uFFFD\uFFFD \uFFFD"},
        {u"csEUCKR", "\xB0\xA1\xA2\xE8", u"가\u327E"}, {u"EUC-KR", "\xC9\xA1\x80z", u"\uFFFD\uFFFDz"},
        {u"GB18030", "\x81\x30\x81\x30\xA6\xD9\xFE\x51\x95\x32\x90\x31", u"\u0080\uFE10\U00020087\uE816"},
        {u"csgb18030", "\x81\x30\x81 \xFF", u"\uFFFD0\uFFFD \uFFFD"}, {u"GB18030", "\x84\x31\xA5\x30!", u"\uFFFD!"},
        {u"latin-9", "\xA4", u"€"}, {u"ISO_8859-8:1988", "\xE0\xFF", u"א\uFFFD"}, {u"koi8-u", "\xA4", u"є"},
        {u"UTF-16", "\xFE\xFF\0A\xDC\0"s, u"A\xDC00"},
        {u"csUTF16",
            "\xFF\xFE"
            "A\0\xFF\xFE"s,
            u"A\uFEFF"},
        {u"UTF-16", "\0A"s, u"A"}, {u"UTF-32", "\xFF\xFE\0\0A\0\0\0\xFF\xFF\xFF\xFF"s, u"A\uFFFD"},
        {u"ISO-2022-JP", "\x1B$@F|\x7F\n~\x1B(J~\x1B)\x80", u"日\x7F\n~‾\uFFFD)\uFFFD"},
        {u"csISO2022JP", "\x1B$BF|\x7D\x7Dz \x1B(Bz", u"日\uFFFD\uFFFD z"}};
    for (const auto& [name, bytes, expected] : cases) {
        const auto text = inPieces<ByteToCharConverter, char, char16_t>(name, bytes, 16);
        EXPECT_EQ(text, expected) << String(name);
        const bool hasState
            = bytes.find('\x1B') != bytes.npos || std::u16string_view(name).find(u"UTF") != std::u16string_view::npos;
        if (text.find(u'\uFFFD') == text.npos && !hasState) {
            const auto encoded = inPieces<CharToByteConverter, char16_t, char>(name, text, 16);
            EXPECT_EQ(encoded, bytes) << String(name);
        }
    }
}

TEST_F(CodecComponent, DecodesTheLongCodesOfGb18030AsTheSystemDoes)
{
    Iconv decode("UTF-16LE", "GB18030");
    for (int number = 0; number < 1260 * 1260; number += number % 39000 < 600 ? 1 : 211) { // all at some borders
        const std::string code {static_cast<char>(0x81 + number / 12600), static_cast<char>(0x30 + number / 1260 % 10),
            static_cast<char>(0x81 + number / 10 % 126), static_cast<char>(0x30 + number % 10)};
        const std::string units = decode.convert(code.data(), code.size()).value_or("\xFD\xFF");
        const std::u16string expected(reinterpret_cast<const char16_t*>(units.data()), units.size() / 2);
        const auto text = inPieces<ByteToCharConverter, char, char16_t>(u"GB18030", code, 16);
        const bool isPrivate = text[0] >= 0xE700 && text[0] < 0xE900; // some have no code in the system
        ASSERT_TRUE(text == expected || isPrivate) << number;
        if (text != u"\uFFFD") {
            ASSERT_EQ((inPieces<CharToByteConverter, char16_t, char>(u"GB18030", text, 16)), code) << number;
        }
    }
}

TEST_F(CodecComponent, KeepsTheStateOfATextBetweenItsPieces)
{
    const struct {
        const char16_t* name;
        std::u16string text;
        std::string bytes;
        std::u16string decoded = {};
    } cases[] = {{u"UTF-16", u"é😀\uFEFF", "\xFE\xFF\0\xE9\xD8\x3D\xDE\0\xFE\xFF"s}, {u"UTF-16", u"", ""},
        {u"UTF-32", u"é😀", "\0\0\xFE\xFF\0\0\0\xE9\0\x01\xF6\0"s},
        {u"ISO-2022-JP", u"a日本\nb¥語", "a\x1B$BF|K\\\x1B(B\nb\x1B(J\\\x1B$B8l\x1B(B"},
        {u"ISO-2022-JP", u"日😀本", "\x1B$BF|\x1B(B?\x1B$BK\\\x1B(B", u"日?本"}};
    for (const auto& [name, text, bytes, replaced] : cases) {
        for (std::size_t size = 1; size <= 7; ++size) {
            const Reference<io::ByteArrayOutputStream> stored(new io::ByteArrayOutputStream);
            const Reference<io::OutputStreamWriter> writer(new io::OutputStreamWriter(stored.get(), name, 16));
            Encoder encoder(name);
            Decoder decoder(name);
            for (int round = 0; round < 2; ++round) { // the second text begins as the first
                std::string encoded;
                for (std::size_t at = 0; at < text.size(); at += size)
                    encoded += encoder.encode(std::u16string_view(text).substr(at, size));
                EXPECT_EQ(encoded + encoder.finish(), bytes) << String(name) << size;
                String decoded;
                for (std::size_t at = 0; at < bytes.size(); at += size)
                    decoded += decoder.decode(std::string_view(bytes).substr(at, size));
                decoded += decoder.finish();
                EXPECT_EQ(decoded, replaced.empty() ? text : replaced) << String(name) << size;
            }
            for (std::size_t at = 0; at < text.size(); at += size)
                writer->write(String(std::u16string_view(text).substr(at, size)));
            writer->flush();
            const Reference<io::Reader> reader(new io::InputStreamReader(
                new io::ByteArrayInputStream(stored->getBytes(), stored->getSize()), name, 16));
            const std::string_view written(
                reinterpret_cast<const char*>(stored->getBytes()), static_cast<std::size_t>(stored->getSize()));
            EXPECT_EQ(written, bytes) << String(name) << size;
            std::u16string read;
            char16_t units[32];
            for (std::int32_t count; (count = reader->read(units, 32)) > 0;)
                read.append(units, static_cast<std::size_t>(count));
            EXPECT_EQ(read, replaced.empty() ? text : replaced) << String(name) << size;
        }
    }
}

/// Converts into `room` units, and says what is read, written, thrown, and what a flush writes.
template <class Converter, class Source, class Target>
std::string outcomeOf(const char16_t* name, const std::basic_string<Source>& text, std::int32_t room, bool substitutes)
{
    const Reference<Converter> converter(Converter::getConverter(name));
    converter->setSubstitutionMode(substitutes);
    if constexpr (sizeof(Source) == 1)
        converter->setSubstitutionChars(u"<?>", 3);
    else
        converter->setSubstitutionBytes(reinterpret_cast<const signed char*>("<?>"), 3);
    using In = std::conditional_t<sizeof(Source) == 1, signed char, char16_t>;
    Target target[32];
    std::int32_t read = 0, written = 0;
    std::string said;
    const auto attempt = [&](auto work) {
        std::int32_t result = RESULT_OK;
        try {
            work();
        } catch (const Exception& failure) {
            result = failure.getResult();
        }
        said += std::to_string(read) + ' ' + std::to_string(written) + ' ' + std::to_string(result) + ' ';
    };
    const auto length = static_cast<std::int32_t>(text.size());
    attempt(
        [&] { converter->convert(reinterpret_cast<const In*>(text.data()), &read, length, target, &written, room); });
    attempt([&] { converter->flush(target, &written, room); });
    converter->reset();
    attempt([&] { converter->flush(target, &written, room); });
    return said + std::string(target, target + written);
}

TEST_F(CodecComponent, StopsAtTheSamePlaceByBothInterfaces)
{
    // CP1255 has only the interface for one character, the others also that for a text.
    for (const char16_t* name : {u"Shift_JIS", u"EUC-KR", u"CP932", u"CP950", u"ISO-2022-JP", u"KOI8-R"}) {
        for (std::int32_t room = 0; room <= 7; ++room) {
            for (const bool substitutes : {false, true}) {
                for (const std::u16string text :
                    {u"ab\u0E01c", u"ab😀c", u"ab\xD83D", u"ab\xD83D\xD83D", u"a\xDE00", u""}) {
                    EXPECT_EQ((outcomeOf<CharToByteConverter, char16_t, signed char>(name, text, room, substitutes)),
                        (outcomeOf<CharToByteConverter, char16_t, signed char>(u"CP1255", text, room, substitutes)))
                        << String(name) << room << substitutes << String(text);
                }
                if (name == std::u16string_view(u"KOI8-R"))
                    continue;
                EXPECT_EQ((outcomeOf<ByteToCharConverter, char, char16_t>(name, "ab\xFFz"s, room, substitutes)),
                    (outcomeOf<ByteToCharConverter, char, char16_t>(u"CP1255", "ab\xFFz"s, room, substitutes)))
                    << String(name) << room << substitutes;
            }
        }
    }
}

_GUID bundleClass(std::uint16_t index)
{
    return {0x2C7E94D8, static_cast<std::uint16_t>(0x5B10 + index), 0x4F63,
        {0xA7, 0x45, 0x91, 0x0E, 0x6B, 0xF2, 0x38, 0xCD}};
}

TEST(BundleComponent, SaysTheSameInEachLanguage)
{
    const LoadedLibrary library(COMPONENTS "/vxbundles.so");
    const Offer english(u"Velmaris.Tools.StringBundle.en_US", creatorOf(library, bundleClass(0)));
    const Offer german(u"Velmaris.Tools.StringBundle.de", creatorOf(library, bundleClass(1)));
    const Offer french(u"Velmaris.Tools.StringBundle.fr", creatorOf(library, bundleClass(2)));
    std::set<std::u16string> keys, greetings;
    for (const char16_t* name : {u"en_US", u"de_AT@euro", u"fr_CA"}) {
        const Reference<i18n::Locale> locale(new i18n::Locale(name));
        const Reference<i18n::StringBundle> bundle = i18n::StringBundle::getBundle(u"Tools", locale.get());
        EXPECT_EQ(bundle->getLocale()->getLanguage(), locale->getLanguage());
        greetings.insert(std::u16string(bundle->getString(u"greeting")));
        EXPECT_THROW(bundle->getString(u"absent"), Exception);
        std::set<std::u16string> own;
        const Reference<const collections::Collection<String>> listed = bundle->getKeys();
        for (const Reference<String>& key : *listed)
            own.insert(std::u16string(*key));
        if (keys.empty())
            keys = own;
        EXPECT_EQ(own, keys) << String(name);
    }
    EXPECT_EQ(greetings.size(), 3U);
    EXPECT_TRUE(greetings.contains(u"Grüß Gott! Dieser Text kommt aus einem Bündel."));
    EXPECT_TRUE(keys.contains(u"greeting"));
}

constexpr _GUID TCP_CLASS {0x84B1D3E6, 0x0C29, 0x4A5D, {0xB8, 0x72, 0x6F, 0x15, 0x9E, 0x43, 0xD0, 0x2B}};

TEST(TcpComponent, ConnectsTwoParties)
{
    const LoadedLibrary library(COMPONENTS "/vxtcp.so");
    const Offer tcp(u"Velmaris.Transport.Tcp", creatorOf(library, TCP_CLASS));
    for (const char16_t* host : {u"", u"127.0.0.1"}) {
        const Reference<net::ITransport> transport = net::Transport::get(u"Velmaris.Transport.Tcp");
        util::PropertySet properties;
        if (*host != 0)
            properties.set(u"host", host);
        const Reference<net::IAcceptor> acceptor = transport->createAcceptor(properties);
        EXPECT_NE(properties.get(u"port"), u"0") << "the set is told which one it is";
        util::PropertySet there;
        there.set(u"port", properties.get(u"port"));
        const Reference<net::IConnector> connector = transport->createConnector(there);
        Reference<io::IChannel> near = connector->connect();
        const Reference<io::IChannel> far = acceptor->accept();
        writeTo(*far, "answer");
        EXPECT_EQ(readFrom(*near, 6), "answer");
        writeTo(*near, "question");
        near = nullptr;
        EXPECT_EQ(readFrom(*far, 100), "question") << "and then the end";
        there.set(u"port", properties.get(u"port") + String(u"\0evil"sv));
        EXPECT_EQ(resultOf([&] { transport->createConnector(there); }), RESULT_INVALID_ARGUMENT)
            << "a port that is cut";
        there.set(u"port", properties.get(u"port"));
        there.set(u"host", String(u"127.0.0.1\0.evil"sv));
        EXPECT_EQ(resultOf([&] { transport->createConnector(there); }), RESULT_INVALID_ARGUMENT)
            << "a host that is cut";
    }
}

TEST(TcpComponent, StaysLoadedAsLongAsAnyOfItsObjects)
{
    const LoadedLibrary library(COMPONENTS "/vxtcp.so");
    const Offer tcp(u"Velmaris.Transport.Tcp", creatorOf(library, TCP_CLASS));
    util::PropertySet properties;
    Reference<net::IAcceptor> acceptor = net::Transport::get(u"Velmaris.Transport.Tcp")->createAcceptor(properties);
    EXPECT_EQ(library.canUnloadNow(), RESULT_FALSE);
    Reference<net::IConnector> connector = net::Transport::get(u"Velmaris.Transport.Tcp")->createConnector(properties);
    const Reference<io::IChannel> near = connector->connect();
    acceptor = nullptr;
    EXPECT_EQ(library.canUnloadNow(), RESULT_FALSE);
    connector = nullptr;
    EXPECT_EQ(library.canUnloadNow(), RESULT_FALSE);
}

TEST(TcpComponent, WaitsForAPeerNoLongerThanItIsTold)
{
    const LoadedLibrary library(COMPONENTS "/vxtcp.so");
    const Offer tcp(u"Velmaris.Transport.Tcp", creatorOf(library, TCP_CLASS));
    const Reference<net::ITransport> transport = net::Transport::get(u"Velmaris.Transport.Tcp");
    util::PropertySet properties;
    properties.set(u"timeout", u"20");
    const net::SignalStorm storm; // no wait takes longer for it
    const Reference<net::IAcceptor> acceptor = transport->createAcceptor(properties);
    const Reference<net::IConnector> connector = transport->createConnector(properties);
    {
        const Reference<io::IChannel> near = connector->connect(), far = acceptor->accept();
        for (io::IChannel* channel : {near.get(), far.get()})
            EXPECT_EQ(resultOf([&] { readFrom(*channel, 1); }), VX_E_SOCKET_ETIMEDOUT);
        for (io::IChannel* channel : {near.get(), far.get()})
            EXPECT_EQ(resultOf([&] { writeTo(*channel, std::string(32 << 20, 'x')); }), VX_E_SOCKET_ETIMEDOUT);
    }
    // If a server does not accept, clients wait once a few are connected.
    const int listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address {AF_INET, 0, {htonl(INADDR_LOOPBACK)}, {}};
    socklen_t length = sizeof address;
    ASSERT_EQ(::bind(listener, reinterpret_cast<sockaddr*>(&address), length), 0);
    ASSERT_EQ(::getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length), 0);
    properties.set(u"port", String::valueOf(int {ntohs(address.sin_port)}));
    const Reference<net::IConnector> ignored = transport->createConnector(properties);
    EXPECT_EQ(resultOf([&] { ignored->connect(); }), VX_E_SOCKET_ECONNREFUSED);
    ASSERT_EQ(::listen(listener, 0), 0);
    std::vector<Reference<io::IChannel>> channels;
    std::int32_t result = RESULT_OK;
    while (result == RESULT_OK && channels.size() < 100)
        result = resultOf([&] { channels.push_back(ignored->connect()); });
    ::close(listener);
    EXPECT_EQ(result, VX_E_SOCKET_ETIMEDOUT) << channels.size() << " connections";
}

} // namespace
} // namespace vx
