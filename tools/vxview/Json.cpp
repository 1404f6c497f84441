#include "Json.h"

#include "Utf8.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <optional>

namespace vxview {

namespace {

constexpr char32_t REPLACEMENT = 0xFFFD;

class Parser {
public:
    Parser(std::string_view text, std::string& decoded)
        : m_rest(text)
        , m_decoded(decoded)
    {
    }

    bool parseObject(std::vector<Field>& fields)
    {
        skipBlanks();
        if (!take('{'))
            return false;
        skipBlanks();
        if (!take('}')) {
            do {
                skipBlanks();
                const std::optional<std::string_view> name = string();
                skipBlanks();
                if (!name || !take(':'))
                    return false;
                skipBlanks();
                if (!addValue(*name, fields))
                    return false;
                skipBlanks();
            } while (take(','));
            if (!take('}'))
                return false;
        }
        skipBlanks();
        return m_rest.empty();
    }

private:
    static bool isBlank(char byte) { return byte == ' ' || byte == '\n' || byte == '\t' || byte == '\r'; }

    void skipBlanks()
    {
        while (!m_rest.empty() && isBlank(m_rest.front()))
            m_rest.remove_prefix(1);
    }

    bool take(char byte)
    {
        if (!m_rest.starts_with(byte))
            return false;
        m_rest.remove_prefix(1);
        return true;
    }

    bool addValue(std::string_view name, std::vector<Field>& fields)
    {
        if (m_rest.starts_with('"')) {
            const std::optional<std::string_view> text = string();
            if (text)
                fields.push_back({name, *text, true});
            return text.has_value();
        }
        const std::string_view start = m_rest;
        if (!skipValue())
            return false;
        fields.push_back({name, start.substr(0, start.size() - m_rest.size()), false});
        return true;
    }

    /// The decoded text of a string.
    std::optional<std::string_view> string()
    {
        if (!take('"'))
            return std::nullopt;
        std::size_t end = plainLength();
        if (end < m_rest.size() && m_rest[end] == '"') { // the usual case: no escape
            const std::string_view text = m_rest.substr(0, end);
            m_rest.remove_prefix(end + 1);
            return text;
        }
        const std::size_t start = m_decoded.size();
        for (;; end = plainLength()) {
            m_decoded += m_rest.substr(0, end);
            m_rest.remove_prefix(end);
            if (take('"'))
                return std::string_view(m_decoded).substr(start);
            if (!take('\\') || !decodeEscape())
                return std::nullopt;
        }
    }

    /// The number of bytes before a quote, a backslash or a control character.
    std::size_t plainLength() const
    {
        std::size_t length = 0;
        for (; m_rest.size() - length >= sizeof(std::uint64_t); length += sizeof(std::uint64_t)) {
            std::uint64_t word = 0;
            std::memcpy(&word, m_rest.data() + length, sizeof word);
            if (hasSpecialByte(word))
                break;
        }
        while (length < m_rest.size()) {
            const auto byte = static_cast<unsigned char>(m_rest[length]);
            if (byte < ' ' || byte == '"' || byte == '\\')
                break;
            ++length;
        }
        return length;
    }

    /// Whether a byte of the word is a quote, a backslash or a control character. May say so of a byte after such a one.
    static bool hasSpecialByte(std::uint64_t word)
    {
        constexpr std::uint64_t ONES = 0x0101010101010101, HIGH = 0x80 * ONES;
        const auto hasLess = [](std::uint64_t x, std::uint64_t least) { return (x - least * ONES) & ~x & HIGH; };
        const auto hasByte = [&](std::uint64_t byte) { return hasLess(word ^ byte * ONES, 1); };
        return (hasLess(word, ' ') | hasByte('"') | hasByte('\\')) != 0;
    }

    bool decodeEscape()
    {
        static constexpr std::string_view LETTERS = "\"\\/bfnrt", MEANINGS = "\"\\/\b\f\n\r\t";
        if (m_rest.empty())
            return false;
        const std::size_t index = LETTERS.find(m_rest.front());
        if (index != LETTERS.npos) {
            m_decoded += MEANINGS[index];
            m_rest.remove_prefix(1);
            return true;
        }
        const std::optional<char32_t> first = unit();
        if (!first)
            return false;
        char32_t code = *first;
        if (isHighSurrogate(code) && m_rest.starts_with("\\u")) {
            const std::string_view before = m_rest;
            m_rest.remove_prefix(1);
            const std::optional<char32_t> second = unit();
            if (second && isLowSurrogate(*second))
                code = 0x10000 + ((code - 0xD800) << 10) + (*second - 0xDC00);
            else
                m_rest = before;
        }
        appendUtf8(isHighSurrogate(code) || isLowSurrogate(code) ? REPLACEMENT : code, m_decoded);
        return true;
    }

    static bool isHighSurrogate(char32_t code) { return code >= 0xD800 && code <= 0xDBFF; }
    static bool isLowSurrogate(char32_t code) { return code >= 0xDC00 && code <= 0xDFFF; }

    /// "u" and four digits.
    std::optional<char32_t> unit()
    {
        constexpr std::size_t LENGTH = 5;
        if (m_rest.size() < LENGTH || m_rest.front() != 'u')
            return std::nullopt;
        char32_t code = 0;
        for (const char digit : m_rest.substr(1, LENGTH - 1)) {
            const std::size_t value = std::string_view("0123456789abcdef").find(static_cast<char>(digit | 0x20));
            if (value == std::string_view::npos || digit < '0')
                return std::nullopt;
            code = code << 4 | static_cast<char32_t>(value);
        }
        m_rest.remove_prefix(LENGTH);
        return code;
    }

    /// A number, true, false, null, or an object or array. What is in the last two is not checked: only their brackets
    /// are counted.
    bool skipValue()
    {
        if (m_rest.starts_with('{') || m_rest.starts_with('['))
            return skipNested();
        std::size_t end = 0;
        while (end < m_rest.size() && m_rest[end] != ',' && m_rest[end] != '}' && m_rest[end] != ']'
            && !isBlank(m_rest[end]))
            ++end;
        const std::string_view word = m_rest.substr(0, end);
        m_rest.remove_prefix(end);
        return word == "true" || word == "false" || word == "null" || isNumber(word);
    }

    bool skipNested()
    {
        std::string open; // the brackets that have to be closed, the innermost one last
        while (!m_rest.empty()) {
            const char byte = m_rest.front();
            if (byte == '"') {
                const std::size_t size = m_decoded.size();
                const bool isString = string().has_value();
                m_decoded.resize(size);
                if (!isString)
                    return false;
                continue;
            }
            m_rest.remove_prefix(1);
            if (byte == '{' || byte == '[') {
                open += byte == '{' ? '}' : ']';
            } else if (byte == '}' || byte == ']') {
                if (open.back() != byte)
                    return false;
                open.pop_back();
                if (open.empty())
                    return true;
            }
        }
        return false;
    }

    static bool isNumber(std::string_view word)
    {
        const auto skipDigits = [&word] {
            const std::size_t size = word.size();
            while (!word.empty() && word.front() >= '0' && word.front() <= '9')
                word.remove_prefix(1);
            return word.size() < size;
        };
        if (word.starts_with('-'))
            word.remove_prefix(1);
        const bool hasLeadingZero = word.size() > 1 && word[0] == '0' && word[1] >= '0' && word[1] <= '9';
        if (hasLeadingZero || !skipDigits())
            return false;
        if (word.starts_with('.')) {
            word.remove_prefix(1);
            if (!skipDigits())
                return false;
        }
        if (word.starts_with('e') || word.starts_with('E')) {
            word.remove_prefix(1);
            if (word.starts_with('+') || word.starts_with('-'))
                word.remove_prefix(1);
            if (!skipDigits())
                return false;
        }
        return word.empty();
    }

    std::string_view m_rest;
    std::string& m_decoded;
};

} // namespace

bool parseJson(std::string_view line, std::vector<Field>& fields, std::string& decoded)
{
    return Parser(line, decoded).parseObject(fields) && !fields.empty();
}

void appendJson(std::string_view text, std::string& json)
{
    static constexpr std::string_view LETTERS = "\"\\\b\f\n\r\t", ESCAPES = "\"\\bfnrt";
    static constexpr char DIGITS[] = "0123456789abcdef";
    json += '"';
    forEachCharacter(text, [&](char32_t code, std::string_view bytes) {
        const std::size_t index = code < 0x80 ? LETTERS.find(static_cast<char>(code)) : LETTERS.npos;
        if (index != LETTERS.npos) {
            json += '\\';
            json += ESCAPES[index];
        } else if (code < ' ' || code == 0x7F) {
            json += "\\u00";
            json += DIGITS[code >> 4];
            json += DIGITS[code & 0xF];
        } else {
            json += bytes;
        }
    });
    json += '"';
}

} // namespace vxview
