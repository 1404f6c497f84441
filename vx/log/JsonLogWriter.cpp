#include "vx/log/JsonLogWriter.h"

#include "vx/log/detail/EntryFields.h"

#include <algorithm>
#include <iterator>

namespace vx::log {

namespace {

using namespace std::string_view_literals;

using detail::FieldOrder;
using vx::detail::ShortTextBuilder;
using vx::detail::TextBuilder;

constexpr std::u16string_view LOGGER_NAMES[] = {
    u"\"sequence\":",
    u"\"thread\":",
    u"\"name\":",
    u"\"timestamp\":",
    u"\"level\":",
    u"\"text\":",
};
static_assert(std::size(LOGGER_NAMES) == FieldOrder::LOGGER_FIELDS);

/// The character after the backslash in the short form of an escape; 0 if there is none.
constexpr char16_t shortEscapeOf(char16_t unit) noexcept
{
    switch (unit) {
    case u'"':
    case u'\\':
        return unit;
    case u'\b':
        return u'b';
    case u'\f':
        return u'f';
    case u'\n':
        return u'n';
    case u'\r':
        return u'r';
    case u'\t':
        return u't';
    default:
        return 0;
    }
}

/// Appends a string of JSON. Line and paragraph separators are escaped too, because some readers take them for the end
/// of a line.
template <class Builder>
void appendString(Builder& text, std::u16string_view units)
{
    constexpr char16_t DIGITS[] = u"0123456789abcdef";
    constexpr char16_t LINE_SEPARATOR = 0x2028, PARAGRAPH_SEPARATOR = 0x2029;
    text.append(u'"');
    std::size_t done = 0;
    for (std::size_t index = 0; index < units.size(); ++index) {
        const char16_t unit = units[index];
        const char16_t shortEscape = shortEscapeOf(unit);
        if (shortEscape == 0 && unit >= u' ' && unit != LINE_SEPARATOR && unit != PARAGRAPH_SEPARATOR)
            continue;
        text.append(units.substr(done, index - done));
        done = index + 1;
        text.append(u'\\');
        if (shortEscape != 0) {
            text.append(shortEscape);
            continue;
        }
        text.append(u'u');
        for (int shift = 12; shift >= 0; shift -= 4)
            text.append(DIGITS[unit >> shift & 0xF]);
    }
    text.append(units.substr(done));
    text.append(u'"');
}

std::size_t skipDigits(std::u16string_view text, std::size_t from)
{
    return std::min(text.find_first_not_of(u"0123456789", from), text.size());
}

/// Whether the text is a number in the grammar of JSON, which excludes infinite numbers and leading zeros.
bool isJsonNumber(std::u16string_view text)
{
    const std::size_t first = text.starts_with(u'-') ? 1 : 0;
    std::size_t end = skipDigits(text, first);
    if (end == first || (text[first] == u'0' && end > first + 1))
        return false;
    if (end < text.size() && text[end] == u'.') {
        const std::size_t fraction = end + 1;
        end = skipDigits(text, fraction);
        if (end == fraction)
            return false;
    }
    if (end < text.size() && (text[end] == u'e' || text[end] == u'E')) {
        const std::size_t sign = end + 1;
        const std::size_t exponent = sign < text.size() && (text[sign] == u'+' || text[sign] == u'-') ? sign + 1 : sign;
        end = skipDigits(text, exponent);
        if (end == exponent)
            return false;
    }
    return end == text.size();
}

template <class Builder>
void printObject(const ILogEntry& entry, Builder& text)
{
    char16_t before = u'{';
    detail::forEachField(entry, [&](std::size_t loggerField, std::u16string_view name, const auto& value) {
        text.append(before);
        before = u',';
        if (loggerField < std::size(LOGGER_NAMES)) {
            text.append(LOGGER_NAMES[loggerField]);
        } else {
            ShortTextBuilder<> whole;
            detail::appendWhole(whole, name);
            appendString(text, whole.view());
            text.append(u':');
        }
        if (value.isNull())
            return text.append(u"null"sv);
        ShortTextBuilder<> units;
        value.print(units);
        if (value.isNumber() && isJsonNumber(units.view()))
            text.append(units.view());
        else
            appendString(text, units.view());
    });
    text.append(before == u'{' ? u"{}\n"sv : u"}\n"sv);
}

} // namespace

JsonLogWriter::JsonLogWriter(io::Writer* writer)
    : AbstractLogWriter(writer)
{
    m_form = Form::JSON;
}

JsonLogWriter::~JsonLogWriter() noexcept(false) = default;

Reference<ILogProcessor> JsonLogWriter::create(io::Writer* writer)
{
    return new JsonLogWriter(writer);
}

String JsonLogWriter::format(const ILogEntry* entry)
{
    return AbstractLogWriter::format(entry);
}

void JsonLogWriter::print(const ILogEntry& entry, TextBuilder& text)
{
    printObject(entry, text);
}

void JsonLogWriter::printUtf8(const ILogEntry& entry, detail::Utf8Builder& text)
{
    printObject(entry, text);
}

} // namespace vx::log
