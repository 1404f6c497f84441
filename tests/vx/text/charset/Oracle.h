#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iconv.h>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// What the converters must do: the result of the system's iconv, changed by a table of the differences.

using Bytes = std::vector<signed char>;

enum class Family { SINGLE_BYTE, UTF8, UTF16, UTF32 };

struct Encoding {
    const char16_t* name;
    const char* systemName;
    Family family;
};

inline constexpr Encoding ENCODINGS[] = {{u"ASCII", "ANSI_X3.4-1968", Family::SINGLE_BYTE},
    {u"ISO8859_1", "ISO-8859-1", Family::SINGLE_BYTE}, {u"CP437", "IBM437", Family::SINGLE_BYTE},
    {u"CP1252", "CP1252", Family::SINGLE_BYTE}, {u"UTF-8", "UTF-8", Family::UTF8},
    {u"UTF-16LE", "UTF-16LE", Family::UTF16}, {u"UTF-16BE", "UTF-16BE", Family::UTF16},
    {u"UTF-32LE", "UTF-32LE", Family::UTF32}, {u"UTF-32BE", "UTF-32BE", Family::UTF32}};

enum class Reading {
    AS_COMPUTED, ///< by its bits, though they could be fewer
    AS_UNIT, ///< a unit like any other
    SURROGATE, ///< an InvalidCharacterException
    UNMAPPABLE,
};

/// Bytes that iconv refuses, each of them from the one in `first` to the one in `last`.
struct Difference {
    std::u16string_view encoding;
    std::string_view first;
    std::string_view last;
    Reading reading;
};

// The first matching row is used. For other bytes that iconv refuses: a value of UTF-32 is unmappable, a byte that
// begins no UTF-8 sequence is U+FFFD, and a sequence that is incomplete by its first byte waits for more bytes.
inline constexpr Difference DIFFERENCES[] = {
    {u"UTF-8", "\xE0\x80\x80", "\xE0\x9F\xBF", Reading::AS_COMPUTED},
    {u"UTF-8", "\xED\xA0\x80", "\xED\xBF\xBF", Reading::SURROGATE},
    {u"UTF-8", "\xF0\x8D\xA0\x80", "\xF0\x8D\xBF\xBF", Reading::SURROGATE},
    {u"UTF-8", "\xF0\x80\x80\x80", "\xF0\x8F\xBF\xBF", Reading::AS_COMPUTED},
    {u"UTF-8", "\xF4\x90\x80\x80", "\xF4\xBF\xBF\xBF", Reading::UNMAPPABLE},
    {u"UTF-16LE", {"\x00\xD8", 2}, "\xFF\xDF", Reading::AS_UNIT},
    {u"UTF-16BE", {"\xD8\x00", 2}, "\xDF\xFF", Reading::AS_UNIT},
    {u"UTF-32LE", {"\x00\xD8\x00\x00", 4}, {"\xFF\xDF\x00\x00", 4}, Reading::SURROGATE},
    {u"UTF-32BE", {"\x00\x00\xD8\x00", 4}, {"\x00\x00\xDF\xFF", 4}, Reading::SURROGATE},
};

/// The smallest part that a converter handles at once.
template <class Out>
struct Step {
    std::size_t length; ///< of the source
    std::vector<Out> out;
    std::size_t room; ///< that must be free
    std::u16string fault = {}; ///< the message of an InvalidCharacterException, "unmappable", or nothing
};

class Iconv {
public:
    Iconv(const char* to, const char* from)
        : m_handle(::iconv_open(to, from))
    {
        if (m_handle == reinterpret_cast<iconv_t>(-1))
            throw std::runtime_error(std::string("iconv knows no conversion from ") + from + " to " + to);
    }
    ~Iconv() { ::iconv_close(m_handle); }
    Iconv(const Iconv&) = delete;
    Iconv& operator=(const Iconv&) = delete;

    /// Nothing if it refuses, does not read all of the source, or drops it, as it does with the tags from U+E0000 on.
    std::optional<std::string> convert(const void* source, std::size_t size)
    {
        char* in = static_cast<char*>(const_cast<void*>(source));
        char target[32];
        char* out = target;
        std::size_t room = sizeof target;
        ::iconv(m_handle, nullptr, nullptr, nullptr, nullptr);
        const bool isWhole = ::iconv(m_handle, &in, &size, &out, &room) == 0 && size == 0;
        ::iconv(m_handle, nullptr, nullptr, &out, &room); // keeps a character until it knows that no mark follows
        if (!isWhole || out == target)
            return std::nullopt;
        return std::string(target, out);
    }

private:
    iconv_t m_handle;
};

struct OracleState {
    const Encoding& m_encoding;
    bool m_substitutes;
    Iconv m_iconv;
};

class DecodingOracle : private OracleState {
public:
    using In = signed char;
    using Out = char16_t;

    DecodingOracle(const Encoding& encoding, bool substitutes)
        : OracleState {encoding, substitutes, {"UTF-16LE", encoding.systemName}}
    {
    }

    void reset() { }

    /// Nothing if the source ends, or if more of it is needed.
    std::optional<Step<char16_t>> next(const Bytes& source, std::size_t position)
    {
        const std::string_view rest(reinterpret_cast<const char*>(source.data()) + position, source.size() - position);
        if (rest.empty())
            return std::nullopt;
        for (const Difference& row : DIFFERENCES) {
            if (row.encoding == m_encoding.name && fits(row, rest))
                return read(row.reading, rest.substr(0, row.first.size()));
        }
        for (std::size_t length = 1; length <= std::min<std::size_t>(rest.size(), 4); ++length) {
            if (const auto bytes = m_iconv.convert(rest.data(), length)) {
                std::vector<char16_t> units(bytes->size() / 2);
                std::memcpy(units.data(), bytes->data(), bytes->size());
                return Step<char16_t> {length, units, units.size()};
            }
        }
        if (m_encoding.family == Family::SINGLE_BYTE)
            return unmappable(1, 0);
        if (m_encoding.family == Family::UTF32 && rest.size() >= 4)
            return unmappable(4, 1);
        const unsigned first = static_cast<std::uint8_t>(rest[0]);
        const std::size_t told = first < 0xC2 || first > 0xF4 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
        if (m_encoding.family != Family::UTF8 || told > rest.size())
            return std::nullopt;
        return Step<char16_t> {1, {u'\uFFFD'}, 1};
    }

private:
    static bool fits(const Difference& row, std::string_view rest)
    {
        std::size_t index = 0;
        const auto byte = [&](std::string_view text) { return static_cast<std::uint8_t>(text[index]); };
        while (index < std::min(row.first.size(), rest.size()) && byte(rest) >= byte(row.first)
            && byte(rest) <= byte(row.last))
            ++index;
        return index == row.first.size();
    }

    Step<char16_t> read(Reading reading, std::string_view bytes) const
    {
        unsigned value = 0;
        switch (reading) {
        case Reading::UNMAPPABLE:
            return unmappable(bytes.size(), 1);
        case Reading::SURROGATE:
            return {0, {}, 1,
                m_encoding.family == Family::UTF8 ? u"Invalid UTF-8 sequence (decoded chars in surrogate range)"
                                                  : u"Illegal UTF-32 char in surrogate range"};
        case Reading::AS_UNIT:
            value
                = static_cast<std::uint8_t>(bytes[0]) | static_cast<unsigned>(static_cast<std::uint8_t>(bytes[1])) << 8;
            if (std::u16string_view(m_encoding.name).ends_with(u"BE"))
                value = value >> 8 | (value & 0xFF) << 8;
            break;
        case Reading::AS_COMPUTED:
            for (const char byte : bytes.substr(1)) // the first byte of these has no bit of the value
                value = value << 6 | (static_cast<unsigned>(byte) & 0x3F);
        }
        return {bytes.size(), {static_cast<char16_t>(value)}, 1};
    }

    Step<char16_t> unmappable(std::size_t length, std::size_t room) const
    {
        if (m_substitutes)
            return {length, {u'\uFFFD'}, room + 1};
        return {0, {}, room, u"unmappable"};
    }
};

class EncodingOracle : private OracleState {
public:
    using In = char16_t;
    using Out = signed char;

    EncodingOracle(const Encoding& encoding, bool substitutes)
        : OracleState {encoding, substitutes, {encoding.systemName, "UTF-16LE"}}
    {
    }

    void reset() { m_lead = 0; }

    // iconv refuses lone surrogates. UTF-16 accepts all of them, the other encodings no leading one, and single bytes
    // none.
    std::optional<Step<signed char>> next(const std::vector<char16_t>& source, std::size_t position)
    {
        if (position == source.size())
            return std::nullopt;
        const char16_t unit = source[position];
        const bool lead = unit >= 0xD800 && unit < 0xDC00;
        const bool trail = unit >= 0xDC00 && unit < 0xE000;
        const std::size_t always = m_encoding.family == Family::UTF32 ? 4 : 0; // free before it looks at a unit
        if (m_lead != 0 && trail) {
            const char16_t pair[] = {std::exchange(m_lead, u'\0'), unit};
            return encoded({pair, 2});
        }
        if (m_lead != 0)
            return Step<signed char> {0, {}, always, u"leading surrogate without trailing"};
        if (lead && m_encoding.family != Family::UTF16) {
            m_lead = unit;
            return Step<signed char> {1, {}, always};
        }
        if (trail && m_encoding.family == Family::SINGLE_BYTE)
            return Step<signed char> {0, {}, 0, u"trailing surrogate without leading"};
        if (!lead && !trail)
            return encoded({&unit, 1});
        const Bytes bytes = ownForm(unit);
        return Step<signed char> {1, bytes, bytes.size()};
    }

private:
    /// The second unit of a pair, or another one.
    Step<signed char> encoded(std::u16string_view character)
    {
        if (const auto bytes = m_iconv.convert(character.data(), 2 * character.size()))
            return {1, Bytes(bytes->begin(), bytes->end()), bytes->size()};
        if (m_substitutes)
            return {1, {'?'}, 1};
        return {0, {}, 0, u"unmappable"};
    }

    /// A surrogate as any other unit of its size.
    Bytes ownForm(char16_t unit) const
    {
        const auto byte = [](unsigned value) { return static_cast<signed char>(value); };
        const signed char low = byte(unit & 0xFF);
        const signed char high = byte(unit >> 8);
        if (m_encoding.family == Family::UTF8)
            return {byte(0xE0 | unit >> 12), byte(0x80 | (unit >> 6 & 0x3F)), byte(0x80 | (unit & 0x3F))};
        Bytes bytes = m_encoding.family == Family::UTF16 ? Bytes {low, high} : Bytes {low, high, 0, 0};
        if (std::u16string_view(m_encoding.name).ends_with(u"BE"))
            std::reverse(bytes.begin(), bytes.end());
        return bytes;
    }

    char16_t m_lead = 0;
};
