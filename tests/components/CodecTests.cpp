#include "Loaded.h"
#include "vx/text/charset/ByteToCharConverter.h"
#include "vx/text/charset/CharToByteConverter.h"
#include "vx/text/charset/CharsetException.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iconv.h>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace vx::text::charset {
namespace {

const struct {
    const char16_t* name;
    const char* systemName;
    std::uint16_t number;
} PAGES[] = {{u"CP1250", "CP1250", 1250}, {u"CP1251", "CP1251", 1251}, {u"CP1253", "CP1253", 1253},
    {u"CP1254", "CP1254", 1254}, {u"CP1255", "CP1255", 1255}, {u"CP1256", "CP1256", 1256}, {u"CP1257", "CP1257", 1257},
    {u"CP1258", "CP1258", 1258}, {u"CP737", "CP737", 737}, {u"CP775", "CP775", 775}, {u"CP850", "CP850", 850},
    {u"CP852", "CP852", 852}, {u"CP855", "CP855", 855}, {u"CP857", "CP857", 857}, {u"CP858", "CP858", 858},
    {u"CP862", "CP862", 862}, {u"CP866", "CP866", 866}, {u"CP932", "CP932", 932}, {u"CP936", "CP936", 936},
    {u"CP949", "CP949", 949}, {u"CP950", "CP950", 950}, {u"EUCJP", "EUC-JP", 20932}, {u"CP720", nullptr, 720}};

/// The component library, with all its classes on offer.
class CodecComponent : public testing::Test {
protected:
    CodecComponent()
    {
        for (const auto& page : PAGES) {
            const _GUID classId {0x6D2F0A51, page.number, 0x4B7E, {0x9C, 0x1A, 0x3E, 0x58, 0xD4, 0x07, 0xB2, 0x96}};
            const std::u16string progId = std::u16string(u"Velmaris.CharCodec.") + page.name;
            m_classes.push_back(std::make_unique<LoadedClass>(m_library, progId.c_str(), classId));
        }
    }

    LoadedLibrary m_library {COMPONENTS "/vxcodecs.so"};
    std::vector<std::unique_ptr<LoadedClass>> m_classes;
};

/// The system's converter as oracle, for one character at a time.
class Oracle {
public:
    Oracle(const char* to, const char* from)
        : m_handle(iconv_open(to, from))
    {
        EXPECT_NE(m_handle, reinterpret_cast<iconv_t>(-1));
    }
    ~Oracle() { iconv_close(m_handle); }

    /// Empty where `source` is not one whole character with a counterpart.
    std::string operator()(std::string source)
    {
        char target[16];
        char* in = source.data();
        std::size_t inLeft = source.size();
        char* out = target;
        std::size_t outLeft = sizeof target;
        const bool failed = iconv(m_handle, &in, &inLeft, &out, &outLeft) == static_cast<std::size_t>(-1);
        iconv(m_handle, nullptr, nullptr, &out, &outLeft);
        return failed || inLeft != 0 ? std::string() : std::string(target, sizeof target - outLeft);
    }

private:
    iconv_t m_handle;
};

std::string bytesOf(std::u16string_view text)
{
    return {reinterpret_cast<const char*>(text.data()), text.size() * 2};
}

std::u16string unitsOf(const std::string& bytes)
{
    return {reinterpret_cast<const char16_t*>(bytes.data()), bytes.size() / 2};
}

std::u16string textOf(std::uint32_t value)
{
    if (value < 0x10000)
        return {static_cast<char16_t>(value)};
    return {static_cast<char16_t>(0xD800 + ((value - 0x10000) >> 10)), static_cast<char16_t>(0xDC00 + (value & 0x3FF))};
}

/// Converts `text` in pieces of `size` units, each behind what the one before left unread.
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
            break; // the rest is no whole character
    }
    return result;
}

TEST_F(CodecComponent, DecodesEachWholeCodePageAsTheSystemDoes)
{
    for (const auto& page : PAGES) {
        if (page.systemName == nullptr)
            continue;
        Oracle decode("UTF-16LE", page.systemName);
        std::string bytes;
        std::u16string expected;
        const auto take = [&](const std::string& sequence) {
            const std::string units = decode(sequence);
            if (units.empty() || units.size() > (sequence.size() == 1 ? 2U : 4U))
                return false;
            bytes += sequence;
            expected += unitsOf(units);
            return true;
        };
        for (int first = 0; first < 0x100; ++first) {
            const std::string lead(1, static_cast<char>(first));
            if (take(lead))
                continue;
            for (int second = 0x21; second < 0x100; ++second) {
                const std::string pair = lead + static_cast<char>(second);
                if (!decode(lead + "").empty() || take(pair) || first != 0x8F || page.number != 20932)
                    continue;
                for (int third = 0xA1; third < 0xFF; ++third)
                    take(pair + static_cast<char>(third));
            }
        }
        ASSERT_GT(expected.size(), 230U) << page.systemName;
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
        Oracle encode(page.systemName, "UTF-16LE");
        std::u16string text;
        std::string expected;
        for (std::uint32_t value = 0; value < 0x30000; ++value) {
            if (value >= 0xD800 && value < 0xE000)
                continue;
            const std::u16string character = textOf(value);
            const std::string bytes = encode(bytesOf(character));
            if (bytes.empty() && value % 64 != 0) // of those without a mapping some will do
                continue;
            text += character;
            expected += bytes.empty() ? "?" : bytes;
        }
        for (std::size_t size = 1; size <= 7; ++size) {
            const auto encoded = inPieces<CharToByteConverter, char16_t, char>(page.name, text, size);
            EXPECT_TRUE(encoded == expected) << page.systemName << " in pieces of " << size;
        }
        const Reference<CharToByteConverter> encoder(CharToByteConverter::getConverter(page.name));
        EXPECT_EQ(std::u16string(encoder->getEncodingName()), page.name);
        EXPECT_LE(expected.size(), text.size() * static_cast<std::size_t>(encoder->getMaxBytesPerChar()));
    }
}

TEST_F(CodecComponent, ReadsGarbageAlikeInAnyPieces)
{
    std::mt19937 random(720);
    for (const auto& page : PAGES) {
        std::string bytes;
        for (int i = 0; i < 3000; ++i)
            bytes += static_cast<char>(random() % 3 == 0 ? random() % 0x80 : 0x80 + random() % 0x80);
        bytes += "end";
        const auto whole = inPieces<ByteToCharConverter, char, char16_t>(page.name, bytes, 16);
        EXPECT_TRUE(whole.ends_with(u"nd")) << String(page.name);
        for (std::size_t size = 1; size <= 7; ++size) {
            const auto decoded = inPieces<ByteToCharConverter, char, char16_t>(page.name, bytes, size);
            EXPECT_TRUE(decoded == whole) << String(page.name) << " in pieces of " << size;
        }
    }
}

TEST_F(CodecComponent, CountsWhatIsNoCharacterBySequences)
{
    struct {
        const char16_t* name;
        const char* bytes;
        const char16_t* text;
    } cases[] = {
        {u"CP932",
            "a\x85\xFC"
            "b",
            u"a\uFFFDb"}, // a pair without a character
        {u"CP932",
            "\xFF"
            "b",
            u"\uFFFDb"}, // no beginning of anything
        {u"CP932", "\x81 b", u"\uFFFD b"}, // ASCII behind a beginning stands for itself
        {u"CP932", "\x93\xFA\x96\x7B\xB1", u"日本ｱ"},
        {u"EUC-JP", "\xC6\xFC\xCB\xDC", u"日本"},
        {u"EUC_JP", "\x8F\xB0\xA1\x8E\xB1", u"丂ｱ"},
        {u"EUCJP",
            "\x8F\xA1\xA1"
            "b",
            u"\uFFFD\uFFFDb"}, // of a row without characters
        {u"windows-1251", "\xD0\xF3\xF1\xFC", u"Русь"},
        {u"1255", "\xF9\xD1", u"\u05E9\u05C1"}, // not joined to one
        {u"CP720", "\x98\xE0 A\x91", u"ء\u0636 A\u0651"},
        {u"BIG5", "\xA4\xA4", u"中"},
    };
    for (const auto& row : cases) {
        const std::string bytes(row.bytes);
        const auto text = inPieces<ByteToCharConverter, char, char16_t>(row.name, bytes, 16);
        EXPECT_EQ(text, row.text) << String(row.name);
        if (text.find(u'\uFFFD') == text.npos) {
            const auto encoded = inPieces<CharToByteConverter, char16_t, char>(row.name, text, 16);
            EXPECT_EQ(encoded, bytes) << String(row.name);
        }
    }
    const Reference<ByteToCharConverter> strict(ByteToCharConverter::getConverter(u"CP932"));
    strict->setSubstitutionMode(false);
    std::int32_t read = 0;
    std::int32_t written = 0;
    char16_t room[4];
    EXPECT_THROW(strict->convert(reinterpret_cast<const signed char*>("a\xFF"), &read, 2, room, &written, 4),
        UnmappableCharacterException);
    EXPECT_EQ(read, 1);
}

TEST_F(CodecComponent, RefusesWhatItCannotDo)
{
    void* out = &out;
    const _GUID unknown {1, 2, 3, {}};
    EXPECT_EQ(m_library.getClassObject(&unknown, &IVXUnknown::IID, &out), RESULT_CLASS_NOT_AVAILABLE);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(m_library.getClassObject(nullptr, &IVXUnknown::IID, &out), RESULT_INVALID_ARGUMENT);
    const _GUID classId {0x6D2F0A51, 932, 0x4B7E, {0x9C, 0x1A, 0x3E, 0x58, 0xD4, 0x07, 0xB2, 0x96}};
    Reference<IVXClassFactory> factory;
    ASSERT_EQ(m_library.getClassObject(&classId, &IVXClassFactory::IID, factory.outVoid()), RESULT_OK);
    EXPECT_EQ(factory->CreateInstance(factory.get(), IVXUnknown::IID, &out), RESULT_NO_AGGREGATION);
    EXPECT_EQ(m_library.canUnloadNow(), RESULT_OK);
    Reference<IVXUnknown> codec;
    EXPECT_EQ(factory->CreateInstance(nullptr, IVXUnknown::IID, codec.outVoid()), RESULT_OK);
    EXPECT_EQ(m_library.canUnloadNow(), RESULT_FALSE);
}

} // namespace
} // namespace vx::text::charset
