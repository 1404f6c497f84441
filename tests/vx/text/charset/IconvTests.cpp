#include "Oracle.h"

#include "tests/Random.h"
#include "tests/vx/Common.h"
#include "vx/text/charset/ByteToCharConverter.h"
#include "vx/text/charset/CharToByteConverter.h"
#include "vx/text/charset/CharsetException.h"

namespace vx::text::charset {
namespace {

/// The result for a source: the output, and the exceptions with their positions.
template <class Out>
struct Outcome {
    std::vector<Out> out;
    std::vector<std::u16string> faults;
    std::size_t read = 0;
    bool operator==(const Outcome&) const = default;
};

std::u16string faultAt(std::size_t position, std::size_t written, std::u16string_view what)
{
    const std::string places = std::to_string(position) + " -> " + std::to_string(written) + ": ";
    return std::u16string(places.begin(), places.end()).append(what);
}

struct Decoder {
    using Converter = ByteToCharConverter;
    using Oracle = DecodingOracle;
};

struct Encoder {
    using Converter = CharToByteConverter;
    using Oracle = EncodingOracle;
};

/// One direction of one encoding, in one substitution mode.
template <class Side>
class Trial {
public:
    using In = typename Side::Oracle::In;
    using Out = typename Side::Oracle::Out;

    Trial(const Encoding& encoding, bool substitutes)
        : m_encoding(encoding)
        , m_substitutes(substitutes)
    {
    }

    /// After a fault both sides continue one unit later; in an output of a given `size` they stop there.
    Outcome<Out> expected(const std::vector<In>& source, std::optional<std::size_t> size = {}) const
    {
        typename Side::Oracle oracle(m_encoding, m_substitutes);
        Outcome<Out> outcome;
        while (const auto step = oracle.next(source, outcome.read)) {
            if (size && outcome.out.size() + step->room > *size)
                break;
            if (!step->fault.empty()) {
                outcome.faults.push_back(faultAt(outcome.read, outcome.out.size(), step->fault));
                if (size)
                    break;
                ++outcome.read;
                oracle.reset();
            }
            outcome.read += step->length;
            outcome.out.insert(outcome.out.end(), step->out.begin(), step->out.end());
        }
        return outcome;
    }

    /// The result of the converter for a source in pieces, up to each of `ends` and then up to its end.
    Outcome<Out> converted(const std::vector<In>& source, std::vector<std::size_t> ends = {}) const
    {
        const auto converter = newConverter();
        ends.push_back(source.size());
        Outcome<Out> outcome;
        outcome.out.resize(4 * source.size() + 64);
        std::int32_t position = 0, written = 0;
        for (const std::size_t end : ends) {
            for (;;) {
                const std::u16string fault
                    = call(*converter, source, position, end, outcome.out, written, outcome.out.size());
                if (fault.empty())
                    break;
                outcome.faults.push_back(fault);
                converter->reset();
                ++position;
            }
        }
        outcome.read = static_cast<std::size_t>(position);
        outcome.out.resize(static_cast<std::size_t>(written));
        return outcome;
    }

    /// One call for an output of each size, up to the first fault.
    void expectToStopWhereTheOutputEnds(const std::vector<In>& source) const
    {
        constexpr std::size_t AFTER = 40;
        constexpr Out UNTOUCHED = 0x55;
        const std::size_t largest = expected(source).out.size() + 2;
        for (std::size_t size = 0; size <= largest; ++size) {
            const auto converter = newConverter();
            Outcome<Out> got;
            got.out.assign(size + AFTER, UNTOUCHED);
            std::int32_t position = 0, written = 0;
            const std::u16string fault = call(*converter, source, position, source.size(), got.out, written, size);
            if (!fault.empty())
                got.faults.push_back(fault);
            got.read = static_cast<std::size_t>(position);
            ASSERT_EQ(std::count(got.out.end() - AFTER, got.out.end(), UNTOUCHED), AFTER) << "size " << size;
            got.out.resize(static_cast<std::size_t>(written));
            ASSERT_EQ(got, expected(source, size)) << "size " << size;
        }
    }

private:
    Reference<typename Side::Converter> newConverter() const
    {
        Reference<typename Side::Converter> converter(Side::Converter::getConverter(m_encoding.name));
        converter->setSubstitutionMode(m_substitutes);
        return converter;
    }

    /// The fault, or an empty text. The result must be the number of units or bytes stored.
    std::u16string call(typename Side::Converter& converter, const std::vector<In>& source, std::int32_t& position,
        std::size_t end, std::vector<Out>& out, std::int32_t& written, std::size_t size) const
    {
        const std::int32_t before = written;
        std::u16string_view what = u"unmappable";
        String description;
        try {
            const std::int32_t result = converter.convert(source.data(), &position, static_cast<std::int32_t>(end),
                out.data(), &written, static_cast<std::int32_t>(size));
            const bool countsUnits = sizeof(Out) == 1 && m_encoding.family == Family::UTF16;
            EXPECT_EQ(result * (countsUnits ? 2 : 1), written - before);
            return {};
        } catch (const InvalidCharacterException& failure) {
            description = failure.getDescription();
            what = description;
        } catch (const UnmappableCharacterException& failure) {
            EXPECT_EQ(failure.getDescription(), u"");
        }
        return faultAt(static_cast<std::size_t>(position), static_cast<std::size_t>(written), what);
    }

    const Encoding& m_encoding;
    bool m_substitutes;
};

void append(std::vector<char16_t>& units, std::uint32_t value)
{
    if (value > 0xFFFF) {
        units.push_back(static_cast<char16_t>(0xD7C0 + (value >> 10)));
        value = 0xDC00 | (value & 0x3FF);
    }
    units.push_back(static_cast<char16_t>(value));
}

/// Random text: runs of one script, mixtures, and with `faulty` sometimes an invalid unit.
class Generator {
public:
    explicit Generator(const Encoding& encoding)
        : m_encoding(encoding)
        , m_iconv(encoding.systemName, "UTF-16LE")
    {
    }

    unsigned below(unsigned limit) { return m_random() % limit; }

    /// A character of the encoding by the number of bytes that UTF-8 has for it.
    std::uint32_t character(unsigned length)
    {
        if (m_encoding.family == Family::SINGLE_BYTE) {
            constexpr char16_t OTHERS[] = u"\u20AC\u00E9\u00DF\u2592\u00A0\u2022\u00FF\u0192\u0130\uFFFD";
            return length == 1 ? below(0x80) : length == 2 ? 0x80 + below(0x80) : OTHERS[below(10)];
        }
        constexpr unsigned FIRST[] = {0, 0x80, 0x800, 0x10000, 0x110000};
        const std::uint32_t value = FIRST[length - 1] + below(FIRST[length] - FIRST[length - 1]);
        return value >= 0xD800 && value < 0xE000 ? value - 0x800 : value;
    }

    std::vector<char16_t> units(std::size_t characters, bool faulty)
    {
        std::vector<char16_t> units;
        while (characters > 0) {
            const unsigned kind = below(6);
            std::size_t run = std::min<std::size_t>(characters, 1 + below(40));
            characters -= run;
            while (run-- > 0)
                append(units, character(kind < 4 ? kind + 1 : 1 + below(kind == 4 ? 2 : 4)));
            if (faulty && below(2) == 0)
                units.push_back(static_cast<char16_t>(0xD800 + below(0x800)));
        }
        return units;
    }

    Bytes bytes(std::size_t characters, bool faulty)
    {
        Bytes bytes;
        while (characters > 0) {
            const std::size_t run = std::min<std::size_t>(characters, 1 + below(60));
            characters -= run;
            const std::vector<char16_t> text = units(run, false);
            for (std::size_t at = 0, length = 0; at < text.size(); at += length) {
                length = text[at] >= 0xD800 && text[at] < 0xDC00 ? 2 : 1;
                const std::string character = m_iconv.convert(text.data() + at, 2 * length).value_or(std::string());
                bytes.insert(bytes.end(), character.begin(), character.end());
            }
            for (unsigned fault = faulty ? below(4) : 0; fault > 0; --fault)
                bytes.push_back(static_cast<signed char>(below(256)));
        }
        return bytes;
    }

    /// One character again and again, which has one unit in each encoding.
    Bytes plainBytes(std::size_t characters)
    {
        const std::string character = m_iconv.convert(u"a", sizeof(char16_t)).value();
        Bytes bytes;
        while (characters-- > 0)
            bytes.insert(bytes.end(), character.begin(), character.end());
        return bytes;
    }

private:
    const Encoding& m_encoding;
    Iconv m_iconv;
    Random m_random;
};

class IconvAgreement : public testing::TestWithParam<Encoding> {
protected:
    /// If `strictly`, also with substitution off, which throws for everything without a mapping.
    template <class Side, class In>
    void expectAgreement(const std::vector<In>& source, bool strictly)
    {
        for (bool substitutes = true;; substitutes = false) {
            const Trial<Side> trial(GetParam(), substitutes);
            const auto expected = trial.expected(source);
            const auto got = trial.converted(source);
            ASSERT_EQ(got.faults, expected.faults) << substitutes;
            ASSERT_EQ(got.read, expected.read) << substitutes;
            // Not compared by GoogleTest, which would print both completely.
            const auto [gotAt, expectedAt]
                = std::mismatch(got.out.begin(), got.out.end(), expected.out.begin(), expected.out.end());
            ASSERT_TRUE(gotAt == got.out.end() && expectedAt == expected.out.end())
                << "first difference in the output at " << gotAt - got.out.begin() << ", " << substitutes;
            if (!substitutes || !strictly)
                return;
        }
    }
};

std::string nameOf(const testing::TestParamInfo<Encoding>& encoding)
{
    std::string name = encoding.param.systemName;
    std::replace_if(
        name.begin(), name.end(), [](char character) { return character == '-' || character == '.'; }, '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Charset, IconvAgreement, testing::ValuesIn(ENCODINGS), nameOf);

TEST_P(IconvAgreement, OverAllCodePoints)
{
    std::vector<char16_t> units;
    for (std::uint32_t value = 0; value <= 0x10FFFF; ++value) {
        if (value < 0xD800 || value > 0xDFFF)
            append(units, value);
    }
    expectAgreement<Encoder>(units, false);
    if (GetParam().family == Family::SINGLE_BYTE)
        return; // what they decode is in the next test
    Trial<Encoder> encoder(GetParam(), true);
    expectAgreement<Decoder>(encoder.expected(units).out, false);
}

TEST_P(IconvAgreement, OverShortSequencesOfAllKinds)
{
    Bytes bytes;
    for (unsigned first = 0; first < 256; ++first) {
        for (unsigned second = 0; second < 256; ++second) {
            bytes.push_back(static_cast<signed char>(first));
            bytes.push_back(static_cast<signed char>(second));
        }
    }
    // The first and last of every kind of byte, in all combinations of four.
    constexpr std::uint8_t BORDERS[] = {0x00, 0x7F, 0x80, 0x8D, 0x8F, 0x90, 0x9F, 0xA0, 0xBF, 0xC0, 0xC1, 0xC2, 0xD8,
        0xDF, 0xE0, 0xED, 0xEF, 0xF0, 0xF4, 0xF5, 0xFF};
    constexpr std::size_t COUNT = std::size(BORDERS);
    for (std::size_t number = 0; number < COUNT * COUNT * COUNT * COUNT; ++number) {
        for (std::size_t rest = number, index = 0; index < 4; ++index, rest /= COUNT)
            bytes.push_back(static_cast<signed char>(BORDERS[rest % COUNT]));
    }
    expectAgreement<Decoder>(bytes, GetParam().family == Family::UTF8);
    constexpr char16_t UNITS[]
        = {0, 0x7F, 0x80, 0xFF, 0x7FF, 0x800, 0x20AC, 0xD7FF, 0xD800, 0xDBFF, 0xDC00, 0xDFFF, 0xE000, 0xFFFD, 0xFFFF};
    std::vector<char16_t> units;
    for (std::size_t number = 0; number < std::size(UNITS) * std::size(UNITS) * std::size(UNITS); ++number) {
        for (std::size_t rest = number, index = 0; index < 3; ++index, rest /= std::size(UNITS))
            units.push_back(UNITS[rest % std::size(UNITS)]);
    }
    expectAgreement<Encoder>(units, true);
}

TEST_P(IconvAgreement, OverRandomTextWithAndWithoutFaults)
{
    Generator generator(GetParam());
    for (const bool faulty : {false, true}) {
        expectAgreement<Decoder>(generator.bytes(40'000, faulty), true);
        expectAgreement<Encoder>(generator.units(40'000, faulty), true);
    }
    Bytes noise(20'000);
    std::vector<char16_t> unitNoise(noise.size());
    for (std::size_t index = 0; index < noise.size(); ++index) {
        noise[index] = static_cast<signed char>(generator.below(256));
        unitNoise[index] = static_cast<char16_t>(generator.below(0x10000));
    }
    expectAgreement<Decoder>(noise, true);
    expectAgreement<Encoder>(unitNoise, true);
}

TEST_P(IconvAgreement, WhateverThePieces)
{
    Generator generator(GetParam());
    const auto expectSame = [&](const auto& trial, const auto& source) {
        const auto whole = trial.expected(source);
        std::vector<std::size_t> ones;
        for (std::size_t end = 0; end <= source.size(); ++end) {
            ASSERT_EQ(trial.converted(source, {end}), whole) << "cut at " << end;
            ones.push_back(end);
        }
        ASSERT_EQ(trial.converted(source, ones), whole) << "one by one";
    };
    for (const bool faulty : {false, true}) {
        expectSame(Trial<Decoder>(GetParam(), faulty), generator.bytes(150, faulty));
        expectSame(Trial<Encoder>(GetParam(), faulty), generator.units(150, faulty));
    }
}

TEST_P(IconvAgreement, WhateverTheRoom)
{
    Generator generator(GetParam());
    for (int round = 0; round < 8; ++round) {
        const bool faulty = round % 2 == 1;
        Trial<Decoder>(GetParam(), round < 6).expectToStopWhereTheOutputEnds(generator.bytes(120, faulty));
        Trial<Encoder>(GetParam(), round < 6).expectToStopWhereTheOutputEnds(generator.units(120, faulty));
        if (HasFatalFailure())
            return;
    }
    Trial<Decoder>(GetParam(), true).expectToStopWhereTheOutputEnds(generator.plainBytes(140));
    Trial<Encoder>(GetParam(), true).expectToStopWhereTheOutputEnds(std::vector<char16_t>(140, u'a'));
}

} // namespace
} // namespace vx::text::charset
