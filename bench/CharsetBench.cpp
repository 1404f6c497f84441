#include "tests/vxsys/Scratch.h"
#include "vx/Exception.h"
#include "vx/Reference.h"
#include "vx/text/charset/ByteToCharConverter.h"
#include "vx/text/charset/CharToByteConverter.h"
#include "vxsys/Component.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <iconv.h>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#ifdef VX_BENCH_ICU
#include <unicode/ucnv.h>
#include <unicode/ustring.h>
#endif

// Each encoding beside a peer over the same text: ICU where the build found it, the system's iconv anywhere.

namespace {

using namespace vx;
using namespace vx::text::charset;

constexpr std::size_t TEXT_BYTES = 1 << 20;

struct Text {
    const char* name;
    const char16_t* encoding;
    const char* peerEncoding;
    std::vector<std::u16string_view> words;
    std::vector<std::u16string_view> separators; ///< one is chosen at random after each word
};

const std::vector<std::u16string_view> SPACES = {u" ", u" ", u" ", u" ", u" ", u", ", u". ", u"\n"};

const Text TEXTS[] = {
    {"ascii", u"UTF-8", "UTF-8",
        {u"the", u"quick", u"reader", u"of", u"a", u"service", u"log", u"finds", u"12.5", u"failures", u"connection",
            u"id=4711", u"in", u"established"},
        SPACES},
    {"latin", u"UTF-8", "UTF-8",
        {u"die", u"schöne", u"Straße", u"führt", u"über", u"den", u"Fluss", u"und", u"weiter", u"zum", u"großen",
            u"Wald", u"Abendrot", u"l'été", u"où"},
        SPACES},
    {"greek", u"UTF-8", "UTF-8",
        {u"η", u"θάλασσα", u"είναι", u"ήρεμη", u"το", u"πρωί", u"και", u"οι", u"ψαράδες", u"γυρίζουν", u"στο",
            u"λιμάνι", u"με", u"γεμάτα", u"δίχτυα"},
        SPACES},
    {"chinese", u"UTF-8", "UTF-8",
        {u"清晨", u"的", u"海面", u"很", u"平静", u"渔民们", u"带着", u"满满的", u"渔网", u"回到", u"港口", u"孩子们",
            u"在", u"岸边", u"等待"},
        {u"的", u"了", u"在", u"和", u"，", u"。", u"\n"}},
    {"emoji", u"UTF-8", "UTF-8", {u"😀", u"😂😂", u"🚀", u"🎉🎉🎉", u"🐟", u"🌊🌊", u"🌞", u"🍀", u"👍🏽", u"🧭"},
        {u"", u"", u" ", u"\n"}},
    {"latinAgain", u"UTF-8", "UTF-8", {u"Grüße aus Köln, schöne Straße "}, {}},
    {"greekAgain", u"UTF-8", "UTF-8", {u"η θάλασσα είναι ήρεμη το πρωί, και "}, {}},
    {"chineseAgain", u"UTF-8", "UTF-8", {u"清晨的海面很平静，渔民们带着满满的渔网回到港口。\n"}, {}},
    {"emojiAgain", u"UTF-8", "UTF-8", {u"😀😃😄 🚀🎉 "}, {}},
    {"latin", u"CP1252", "windows-1252",
        {u"die", u"schöne", u"Straße", u"führt", u"über", u"den", u"Fluss", u"„und“", u"weiter", u"zum", u"großen",
            u"Wald", u"100€", u"l'été", u"où"},
        SPACES},
    {"ascii", u"CP1252", "windows-1252",
        {u"the", u"quick", u"reader", u"of", u"a", u"service", u"log", u"finds", u"12.5", u"failures", u"connection",
            u"id=4711", u"in", u"established"},
        SPACES},
    {"latin", u"CP437", "IBM437",
        {u"die", u"schöne", u"Straße", u"führt", u"über", u"den", u"Fluss", u"und", u"weiter", u"zum", u"großen"},
        SPACES},
    {"latin", u"ISO8859_1", "ISO-8859-1",
        {u"die", u"schöne", u"Straße", u"führt", u"über", u"den", u"Fluss", u"und", u"weiter", u"zum", u"großen"},
        SPACES},
    {"greek", u"UTF-16BE", "UTF-16BE", {u"η", u"θάλασσα", u"είναι", u"ήρεμη", u"το", u"πρωί"}, SPACES},
    {"greek", u"UTF-32LE", "UTF-32LE", {u"η", u"θάλασσα", u"είναι", u"ήρεμη", u"το", u"πρωί"}, SPACES},
#ifdef VX_CODECS
    {"japanese", u"Shift_JIS", "SHIFT_JIS",
        {u"朝", u"の", u"海", u"は", u"とても", u"静か", u"で", u"漁師たち", u"が", u"ｶﾆ", u"港", u"へ", u"戻って",
            u"くる"},
        {u"", u"", u"、", u"。", u" 12 ", u"\n"}},
    {"chinese", u"GB18030", "GB18030",
        {u"清晨", u"的", u"海面", u"很", u"平静", u"渔民们", u"带着", u"满满的", u"渔网", u"回到", u"港口", u"孩子们",
            u"naïve", u"在", u"岸边", u"等待"},
        {u"的", u"了", u"在", u"和", u"，", u"。", u"\n"}},
    {"korean", u"EUC-KR", "EUC-KR",
        {u"아침", u"바다는", u"아주", u"고요하고", u"어부들은", u"가득", u"찬", u"그물을", u"들고", u"항구로",
            u"돌아온다"},
        SPACES},
    {"polish", u"ISO-8859-2", "ISO-8859-2",
        {u"morze", u"jest", u"rano", u"bardzo", u"spokojne", u"a", u"rybacy", u"wracają", u"do", u"portu", u"z",
            u"pełnymi", u"sieciami", u"żeglarz", u"łódź"},
        SPACES},
#endif
};

std::int32_t lengthOf(std::size_t size)
{
    return static_cast<std::int32_t>(size);
}

std::vector<signed char> encoded(const Text& text, std::u16string_view units)
{
    const Reference<CharToByteConverter> encoder(CharToByteConverter::getConverter(text.encoding));
    std::vector<signed char> bytes(units.size() * 4);
    std::int32_t position = 0;
    std::int32_t written = 0;
    encoder->convert(units.data(), &position, lengthOf(units.size()), bytes.data(), &written, lengthOf(bytes.size()));
    bytes.resize(static_cast<std::size_t>(written));
    return bytes;
}

#ifdef VX_CODECS
/// A registry with the encodings of the component library.
class Codecs {
public:
    Codecs()
    {
        std::filesystem::copy_file(VX_CODECS, m_scratch / "codecs.so");
        std::filesystem::permissions(m_scratch / "codecs.so", std::filesystem::perms(0755));
        throwIfFailed(VXComRegisterLibrary((m_scratch / "codecs.so").u16string().c_str()));
    }

private:
    Scratch m_scratch;
    ScopedVariable m_named {"VXSYS4_REGISTRY", (m_scratch / "store").c_str()};
};
#endif

/// TEXT_BYTES of a text once encoded, cut between characters. Words in a random order keep the branches of the processor
/// from learning it by heart, as they do with a phrase that is repeated.
struct Sample {
    explicit Sample(const Text& text)
    {
#ifdef VX_CODECS
        static const Codecs codecs;
#endif
        std::mt19937 random(20);
        while (units.size() < TEXT_BYTES) {
            units += text.words[random() % text.words.size()];
            if (!text.separators.empty())
                units += text.separators[random() % text.separators.size()];
        }
        bytes = encoded(text, units);
        bytes.resize(TEXT_BYTES);
        const Reference<ByteToCharConverter> decoder(ByteToCharConverter::getConverter(text.encoding));
        std::int32_t position = 0;
        std::int32_t written = 0;
        decoder->convert(
            bytes.data(), &position, lengthOf(bytes.size()), units.data(), &written, lengthOf(units.size()));
        bytes.resize(static_cast<std::size_t>(position));
        units.resize(static_cast<std::size_t>(written));
    }

    std::u16string units;
    std::vector<signed char> bytes;
};

/// Runs one conversion again and again, and checks its last result. `convert` stores it in `target`, which has room for
/// more, and returns how much it stored.
template <class Target, class Convert>
void measure(benchmark::State& state, const Sample& sample, const Target& expected, Convert&& convert)
{
    Target target(expected.size() + 16, 0);
    std::size_t written = 0;
    for (auto _ : state) {
        written = static_cast<std::size_t>(convert(target));
        benchmark::ClobberMemory();
    }
    target.resize(written);
    if (target != expected)
        state.SkipWithError("another text came out");
    state.SetBytesProcessed(state.iterations() * lengthOf(sample.bytes.size()));
}

void decode(benchmark::State& state, const Text& text)
{
    const Sample sample(text);
    const Reference<ByteToCharConverter> decoder(ByteToCharConverter::getConverter(text.encoding));
    measure(state, sample, sample.units, [&](std::u16string& units) {
        std::int32_t position = 0;
        std::int32_t written = 0;
        decoder->convert(sample.bytes.data(), &position, lengthOf(sample.bytes.size()), units.data(), &written,
            lengthOf(units.size()));
        return written;
    });
}

void encode(benchmark::State& state, const Text& text)
{
    const Sample sample(text);
    const Reference<CharToByteConverter> encoder(CharToByteConverter::getConverter(text.encoding));
    measure(state, sample, sample.bytes, [&](std::vector<signed char>& bytes) {
        std::int32_t position = 0;
        std::int32_t written = 0;
        encoder->convert(sample.units.data(), &position, lengthOf(sample.units.size()), bytes.data(), &written,
            lengthOf(bytes.size()));
        return written;
    });
}

/// The system's converter, opened once.
class Iconv {
public:
    Iconv(const char* to, const char* from)
        : m_handle(::iconv_open(to, from))
    {
    }
    ~Iconv() { ::iconv_close(m_handle); }
    Iconv(const Iconv&) = delete;
    Iconv& operator=(const Iconv&) = delete;

    std::size_t convert(const void* source, std::size_t sourceBytes, void* target, std::size_t targetBytes)
    {
        char* in = static_cast<char*>(const_cast<void*>(source));
        char* out = static_cast<char*>(target);
        const std::size_t room = targetBytes;
        ::iconv(m_handle, &in, &sourceBytes, &out, &targetBytes);
        return room - targetBytes;
    }

private:
    iconv_t m_handle;
};

void decodeIconv(benchmark::State& state, const Text& text)
{
    const Sample sample(text);
    Iconv peer("UTF-16LE", text.peerEncoding);
    measure(state, sample, sample.units, [&](std::u16string& units) {
        return peer.convert(sample.bytes.data(), sample.bytes.size(), units.data(), units.size() * sizeof(char16_t))
            / sizeof(char16_t);
    });
}

void encodeIconv(benchmark::State& state, const Text& text)
{
    const Sample sample(text);
    Iconv peer(text.peerEncoding, "UTF-16LE");
    measure(state, sample, sample.bytes, [&](std::vector<signed char>& bytes) {
        return peer.convert(sample.units.data(), sample.units.size() * sizeof(char16_t), bytes.data(), bytes.size());
    });
}

#ifdef VX_BENCH_ICU

/// ICU's converter of an encoding. For UTF-8 its string functions are used, which are faster.
class Icu {
public:
    explicit Icu(const Text& text)
        : strings(std::u16string_view(text.encoding) == u"UTF-8")
        , converter(ucnv_open(text.peerEncoding, &status))
    {
    }
    ~Icu() { ucnv_close(converter); }
    Icu(const Icu&) = delete;
    Icu& operator=(const Icu&) = delete;
    /// What a conversion stored, or 0 if one has failed.
    std::int32_t stored(std::int32_t count) const { return U_SUCCESS(status) ? count : 0; }

    UErrorCode status = U_ZERO_ERROR;
    const bool strings;
    UConverter* const converter;
};

void decodeIcu(benchmark::State& state, const Text& text)
{
    const Sample sample(text);
    Icu peer(text);
    const auto* bytes = reinterpret_cast<const char*>(sample.bytes.data());
    const std::int32_t length = lengthOf(sample.bytes.size());
    measure(state, sample, sample.units, [&](std::u16string& units) {
        std::int32_t written = 0;
        if (peer.strings)
            u_strFromUTF8(units.data(), lengthOf(units.size()), &written, bytes, length, &peer.status);
        else
            written = ucnv_toUChars(peer.converter, units.data(), lengthOf(units.size()), bytes, length, &peer.status);
        return peer.stored(written);
    });
}

void encodeIcu(benchmark::State& state, const Text& text)
{
    const Sample sample(text);
    Icu peer(text);
    const char16_t* units = sample.units.data();
    const std::int32_t length = lengthOf(sample.units.size());
    measure(state, sample, sample.bytes, [&](std::vector<signed char>& bytes) {
        auto* const target = reinterpret_cast<char*>(bytes.data());
        std::int32_t written = 0;
        if (peer.strings)
            u_strToUTF8(target, lengthOf(bytes.size()), &written, units, length, &peer.status);
        else
            written = ucnv_fromUChars(peer.converter, target, lengthOf(bytes.size()), units, length, &peer.status);
        return peer.stored(written);
    });
}

#endif

std::string narrow(std::u16string_view name)
{
    return std::string(name.begin(), name.end());
}

const bool g_registered = [] {
    struct {
        const char* name;
        void (*run)(benchmark::State&, const Text&);
    } const runs[] = {
        {"decode", decode},
        {"encode", encode},
#ifdef VX_BENCH_ICU
        {"decodeIcu", decodeIcu},
        {"encodeIcu", encodeIcu},
#endif
        {"decodeIconv", decodeIconv},
        {"encodeIconv", encodeIconv},
    };
    for (const Text& text : TEXTS) {
        for (const auto& run : runs) {
            const std::string name = std::string(run.name) + "/" + narrow(text.encoding) + "/" + text.name;
            benchmark::RegisterBenchmark(name.c_str(), run.run, text);
        }
    }
    return true;
}();

} // namespace
