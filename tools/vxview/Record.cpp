#include "Record.h"

#include "Json.h"
#include "Utf8.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <set>

namespace vxview {

namespace {

/// Removes `text` from the start of `bytes`.
bool take(std::string_view& bytes, std::string_view text)
{
    if (!bytes.starts_with(text))
        return false;
    bytes.remove_prefix(text.size());
    return true;
}

bool isNameLine(std::string_view line, std::size_t& nameLength)
{
    nameLength = line.find('=');
    if (nameLength == line.npos || nameLength == 0)
        return false;
    return std::all_of(line.begin(), line.begin() + static_cast<std::ptrdiff_t>(nameLength),
        [](unsigned char byte) { return byte > ' ' && byte != 0x7F; });
}

/// The names of the fields of an entry. Whoever writes to a log can give an entry any number of them.
class Names {
public:
    explicit Names(const std::vector<Field>& fields)
        : m_fields(fields)
    {
    }

    bool contain(std::string_view name)
    {
        constexpr std::size_t FEW = 16;
        if (m_fields.size() <= FEW)
            return std::ranges::any_of(m_fields, [&](const Field& field) { return field.name == name; });
        while (m_many.size() < m_fields.size()) // no name stands twice
            m_many.insert(m_fields[m_many.size()].name);
        return m_many.contains(name);
    }

private:
    const std::vector<Field>& m_fields;
    std::set<std::string_view> m_many;
};

bool parsePlain(std::string_view bytes, std::vector<Field>& fields)
{
    // A value may have several lines. This form does not tell such a line from a field if it looks like one. Only a
    // name that the entry already has must be part of a value.
    Names names(fields);
    while (!bytes.empty()) {
        const std::size_t end = bytes.find('\n');
        if (end == bytes.npos)
            return false;
        const std::string_view line = bytes.substr(0, end);
        std::size_t nameLength = 0;
        if (bytes.size() == end + 1 && line.starts_with("----"))
            return !fields.empty(); // the last line of an entry
        if (isNameLine(line, nameLength) && !names.contain(line.substr(0, nameLength))) {
            fields.push_back({line.substr(0, nameLength), line.substr(nameLength + 1), true});
        } else if (fields.empty()) {
            return false;
        } else { // the value goes on: it stands in one piece before this line
            Field& last = fields.back();
            last.value = {last.value.data(), static_cast<std::size_t>(line.data() + line.size() - last.value.data())};
        }
        bytes.remove_prefix(end + 1);
    }
    return false;
}

/// The character of "&lt;" and its like at the start of `text`, whose length is returned; 0 if there is none.
std::size_t decodeReference(std::string_view text, std::string& decoded)
{
    struct Name {
        std::string_view reference;
        char character;
    };
    static constexpr Name NAMES[] = {{"&lt;", '<'}, {"&gt;", '>'}, {"&amp;", '&'}, {"&quot;", '"'}, {"&apos;", '\''}};
    for (const Name& each : NAMES) {
        if (text.starts_with(each.reference)) {
            decoded += each.character;
            return each.reference.size();
        }
    }
    constexpr std::size_t LONGEST = 10;
    const std::size_t end = text.substr(0, LONGEST).find(';');
    if (!text.starts_with("&#") || end == text.npos)
        return 0;
    const bool isHexadecimal = text[2] == 'x';
    const char* const first = text.data() + (isHexadecimal ? 3 : 2);
    std::uint32_t code = 0;
    const auto [stop, error] = std::from_chars(first, text.data() + end, code, isHexadecimal ? 16 : 10);
    const bool isCharacter = code > 0 && code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
    if (error != std::errc() || stop != text.data() + end || !isCharacter)
        return 0;
    appendUtf8(code, decoded);
    return end + 1;
}

std::string_view decodeXml(std::string_view text, std::string& decoded)
{
    if (text.find('&') == text.npos)
        return text;
    const std::size_t start = decoded.size();
    while (!text.empty()) {
        const std::size_t length = text.front() == '&' ? decodeReference(text, decoded) : 0;
        if (length == 0)
            decoded += text.front();
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return std::string_view(decoded).substr(start);
}

bool parseXml(std::string_view bytes, std::vector<Field>& fields, std::string& decoded)
{
    if (!take(bytes, "  <entry>\n"))
        return false;
    std::string closing;
    while (!take(bytes, "  </entry>\n")) {
        if (!take(bytes, "    <"))
            return false;
        const std::size_t nameLength = bytes.find('>');
        if (nameLength == bytes.npos || nameLength == 0)
            return false;
        const std::string_view name = bytes.substr(0, nameLength);
        bytes.remove_prefix(nameLength + 1);
        closing = " </";
        closing += name.substr(0, name.find(' ')); // attributes may follow the name
        closing += ">\n";
        const std::size_t end = bytes.find(closing);
        if (end == bytes.npos)
            return false;
        std::string_view value = bytes.substr(0, end);
        if (value.starts_with(' '))
            value.remove_prefix(1);
        fields.push_back({name, decodeXml(value, decoded), true});
        bytes.remove_prefix(end + closing.size());
    }
    return bytes.empty() && !fields.empty();
}

} // namespace

void Record::set(Kind kind, Form form, std::string_view bytes)
{
    m_kind = kind;
    m_form = form;
    m_bytes = bytes;
    m_isParsed = kind != Kind::ENTRY;
    m_fields.clear();
}

void Record::parse()
{
    m_isParsed = true;
    m_decoded.clear();
    m_decoded.reserve(m_bytes.size()); // no decoded text is longer, so the fields can point to it
    const bool isWhole = m_form == Form::PLAIN ? parsePlain(m_bytes, m_fields)
        : m_form == Form::XML                  ? parseXml(m_bytes, m_fields, m_decoded)
                                               : parseJson(m_bytes, m_fields, m_decoded);
    if (!isWhole) {
        const bool isForeign = m_form == Form::JSON && !m_bytes.starts_with("{\"");
        m_kind = isForeign ? Kind::FOREIGN : Kind::TORN;
        m_fields.clear();
    }
}

Record::Kind Record::getKind()
{
    if (!m_isParsed)
        parse();
    return m_kind;
}

const std::vector<Field>& Record::getFields()
{
    if (!m_isParsed)
        parse();
    return m_fields;
}

std::optional<std::string_view> Record::find(std::string_view name)
{
    for (const Field& field : getFields()) {
        if (field.name == name)
            return field.value;
    }
    return std::nullopt;
}

bool isInteger(std::string_view text)
{
    if (text.starts_with('-'))
        text.remove_prefix(1);
    const bool hasLeadingZero = text.size() > 1 && text.front() == '0';
    return !text.empty() && !hasLeadingZero && std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; });
}

} // namespace vxview
