#include "vxreg/TextForm.h"

#include "common/Failure.h"
#include "vxreg/Texts.h"

#include <vx/Exception.h>
#include <vxsys/Surrogate.h>

#include <algorithm>
#include <charconv>
#include <istream>
#include <limits>
#include <string_view>

namespace vxreg {

namespace {

using vx::String;
using vx::util::RegistryKey;
using vxtools::UsageError;

constexpr char DIGITS[] = "0123456789abcdef";

std::string hexOf(std::uint64_t number, int digits)
{
    std::string text;
    for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4)
        text += DIGITS[number >> shift & 15];
    return text;
}

template <class Number>
Number parseNumber(std::string_view text, int base = 10)
{
    Number number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
    if (text.empty() || error != std::errc() || end != text.data() + text.size()) {
        const std::string given(text);
        throw UsageError(base == 16 ? NO_HEX(given) : NO_NUMBER(given, std::numeric_limits<Number>::max()));
    }
    return number;
}

bool isControl(char16_t unit)
{
    return unit < 0x20 || unit == 0x7F;
}

std::string quote(const String& text)
{
    std::u16string quoted = u"\"";
    const std::u16string_view units = text.view();
    for (std::size_t i = 0; i < units.size(); ++i) {
        const char16_t unit = units[i];
        constexpr std::u16string_view PLAIN = u"\\\"\n\r\t";
        constexpr std::u16string_view SHORT = u"\\\"nrt";
        if (const std::size_t at = PLAIN.find(unit); at != PLAIN.npos) {
            quoted += u'\\';
            quoted += SHORT[at];
        } else if (isControl(unit) || vxsys::isLoneSurrogate(units, i)) {
            const std::string digits = hexOf(unit, 4);
            quoted += u"\\u";
            quoted.append(digits.begin(), digits.end());
        } else {
            quoted += unit;
        }
    }
    return String(std::u16string_view(quoted + u"\"")).toUtf8();
}

/// Takes a text in quotes from the front of `line`.
String unquote(std::u16string_view& line)
{
    if (line.empty() || line.front() != u'"')
        throw UsageError(NO_QUOTE());
    std::u16string text;
    for (std::size_t i = 1; i < line.size(); ++i) {
        if (line[i] == u'"') {
            line.remove_prefix(i + 1);
            return String(std::u16string_view(text));
        }
        if (line[i] != u'\\') {
            text += line[i];
            continue;
        }
        constexpr std::u16string_view SHORT = u"\\\"nrt";
        constexpr std::u16string_view PLAIN = u"\\\"\n\r\t";
        const char16_t letter = ++i < line.size() ? line[i] : u'\0';
        if (const std::size_t at = SHORT.find(letter); at != SHORT.npos) {
            text += PLAIN[at];
        } else if (letter == u'u' && i + 4 < line.size()) {
            const std::u16string_view digits = line.substr(i + 1, 4);
            text += static_cast<char16_t>(parseNumber<std::uint16_t>(String(digits).toUtf8(), 16));
            i += 4;
        } else {
            throw UsageError(LONE_BACKSLASH());
        }
    }
    throw UsageError(NO_QUOTE());
}

RegistryKey parseKey(std::u16string_view path)
{
    std::u16string text;
    for (std::size_t i = 0; i < path.size(); ++i) {
        if (path[i] != u'%') {
            text += path[i];
            continue;
        }
        const std::u16string_view digits = path.substr(i + 1, 2);
        if (digits.size() != 2)
            throw UsageError(LONE_PERCENT());
        text += static_cast<char16_t>(parseNumber<std::uint8_t>(String(digits).toUtf8(), 16));
        i += 2;
    }
    try {
        return RegistryKey(String(std::u16string_view(text)));
    } catch (const vx::Exception&) {
        throw UsageError(NO_HIVE());
    }
}

Value parseValueInLine(std::u16string_view line)
{
    Value value;
    if (!line.empty() && line.front() == u'"') {
        value.text = unquote(line);
        if (!line.empty())
            throw UsageError(AFTER_TEXT());
        return value;
    }
    const std::string text = String(line).toUtf8();
    const std::size_t colon = text.find(':');
    if (colon == text.npos || text.substr(0, colon) == "text")
        throw UsageError(NO_VALUE());
    return parseValue(text.substr(0, colon), text.substr(colon + 1));
}

} // namespace

String fromUtf8(const std::string& bytes)
{
    String text {std::string_view(bytes)};
    if (text.toUtf8() != bytes) // malformed bytes were replaced
        throw UsageError(NO_UTF_8());
    return text;
}

Value readValue(const RegistryKey& key, const String& name)
{
    Value value;
    value.type = key.getValueType(name);
    switch (value.type) {
    case VX_REG_STRING:
        value.text = key.getValueString(name);
        break;
    case VX_REG_UINT32:
        value.number = key.getValueUINT32(name);
        break;
    case VX_REG_UINT64:
        value.number = key.getValueUINT64(name);
        break;
    case VX_REG_BINARY:
        for (std::int32_t length = key.getValue(name, nullptr, 0);;) {
            value.bytes.resize(static_cast<std::size_t>(length));
            length = key.getValue(name, value.bytes.data(), length);
            if (length <= static_cast<std::int32_t>(value.bytes.size())) {
                value.bytes.resize(static_cast<std::size_t>(length));
                break; // otherwise the value has grown meanwhile
            }
        }
        break;
    }
    return value;
}

void writeValue(const RegistryKey& key, const String& name, const Value& value)
{
    switch (value.type) {
    case VX_REG_STRING:
        key.setValue(name, value.text);
        break;
    case VX_REG_UINT32:
        key.setValue(name, static_cast<std::uint32_t>(value.number));
        break;
    case VX_REG_UINT64:
        key.setValue(name, value.number);
        break;
    case VX_REG_BINARY:
        key.setValue(name, value.bytes.data(), static_cast<std::int32_t>(value.bytes.size()));
        break;
    }
}

Value parseValue(const std::string& type, const std::string& text)
{
    Value value;
    if (type == "text") {
        value.text = fromUtf8(text);
    } else if (type == "u32") {
        value.type = VX_REG_UINT32;
        value.number = parseNumber<std::uint32_t>(text);
    } else if (type == "u64") {
        value.type = VX_REG_UINT64;
        value.number = parseNumber<std::uint64_t>(text);
    } else if (type == "hex") {
        value.type = VX_REG_BINARY;
        if (text.size() % 2 != 0)
            throw UsageError(HALF_BYTE());
        for (std::size_t i = 0; i < text.size(); i += 2)
            value.bytes.push_back(static_cast<signed char>(parseNumber<std::uint8_t>(text.substr(i, 2), 16)));
    } else {
        throw UsageError(NO_TYPE(type));
    }
    return value;
}

std::string plainText(const Value& value)
{
    switch (value.type) {
    case VX_REG_STRING:
        return value.text.toUtf8();
    case VX_REG_UINT32:
    case VX_REG_UINT64:
        return std::to_string(value.number);
    case VX_REG_BINARY:
        break;
    }
    std::string text;
    for (const signed char byte : value.bytes)
        text += hexOf(static_cast<unsigned char>(byte), 2);
    return text;
}

std::string lineOfKey(const RegistryKey& key)
{
    std::string line = "[";
    // The path of a key directly below a hive starts with a backslash.
    const RegistryKey hive(key.getVXHKEY(), String());
    const std::string path = key.getKey(true).toUtf8();
    const std::size_t start = path.find_first_not_of('\\');
    const std::string relative = start != path.npos ? path.substr(start - 1) : "";
    for (const char character : hive.getKey().toUtf8() + relative) {
        if (character == '%' || isControl(static_cast<unsigned char>(character)))
            line += '%' + hexOf(static_cast<unsigned char>(character), 2);
        else
            line += character;
    }
    return line + "]";
}

std::string lineOfValue(const String& name, const Value& value)
{
    constexpr const char* PREFIXES[] = {"", "u32:", "u64:", "hex:"};
    const bool isText = value.type == VX_REG_STRING;
    return quote(name) + "=" + PREFIXES[value.type] + (isText ? quote(value.text) : plainText(value));
}

std::vector<Entry> parseEntries(std::istream& source)
{
    std::vector<Entry> entries;
    int number = 0;
    for (std::string bytes; std::getline(source, bytes);) {
        ++number;
        try {
            if (bytes.ends_with('\r'))
                bytes.pop_back();
            if (bytes.empty() || bytes.front() == '#')
                continue;
            const String text = fromUtf8(bytes);
            std::u16string_view line = text.view();
            if (line.front() == u'[') {
                if (line.back() != u']')
                    throw UsageError(NO_BRACKET());
                entries.push_back({parseKey(line.substr(1, line.size() - 2)), false, {}, {}});
                continue;
            }
            if (entries.empty())
                throw UsageError(NO_KEY());
            Entry entry {entries.back().key, true, unquote(line), {}};
            if (line.empty() || line.front() != u'=')
                throw UsageError(NO_EQUALS());
            entry.value = parseValueInLine(line.substr(1));
            entries.push_back(std::move(entry));
        } catch (const UsageError& failure) {
            throw UsageError(IN_LINE(number, failure.text()));
        }
    }
    return entries;
}

} // namespace vxreg
