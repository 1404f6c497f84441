#include "Printer.h"

#include "Json.h"
#include "Utf8.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace vxview {

namespace {

using Kind = Record::Kind;

/// The fields of a table for which the user named none.
constexpr std::string_view COLUMNS[] = {"timestamp", "level", "name", "text", "sequence", "thread"};

std::string_view withoutLineEnd(std::string_view bytes)
{
    return bytes.ends_with('\n') ? bytes.substr(0, bytes.size() - 1) : bytes;
}

std::string_view nameOf(Kind kind)
{
    return kind == Kind::ENTRY ? "entry" : kind == Kind::TORN ? "torn" : "foreign";
}

bool isControl(char32_t code)
{
    const bool turnsDirection = (code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069)
        || code == 0x200E || code == 0x200F || code == 0x061C;
    return code < ' ' || (code >= 0x7F && code < 0xA0) || turnsDirection;
}

void appendCsv(std::string_view text, std::string& csv)
{
    if (text.find_first_of(",\"\r\n") == text.npos) {
        csv += text;
        return;
    }
    csv += '"';
    for (const char byte : text) {
        if (byte == '"')
            csv += '"';
        csv += byte;
    }
    csv += '"';
}

/// Text of a document: what XML 1.0 forbids becomes U+FFFD.
void appendXml(std::string_view text, std::string& xml)
{
    forEachCharacter(text, [&](char32_t code, std::string_view bytes) {
        const bool isForbidden
            = (code < ' ' && code != '\t' && code != '\n' && code != '\r') || code == 0xFFFE || code == 0xFFFF;
        xml += code == '<' ? "&lt;"
            : code == '>'  ? "&gt;"
            : code == '&'  ? "&amp;"
            : code == '\r' ? "&#13;"
            : isForbidden  ? "\xEF\xBF\xBD"
                           : bytes;
    });
}

/// Shows the control characters in the lines from `start` on, which have their ends.
void makeVisible(std::string& text, std::size_t start)
{
    const std::string bytes = text.substr(start);
    text.resize(start);
    for (std::string_view rest = bytes; !rest.empty();) {
        const std::size_t next = rest.find('\n') + 1;
        std::string_view line = rest.substr(0, next - 1);
        const bool isTable = line.ends_with('\r');
        line.remove_suffix(isTable ? 1 : 0);
        appendVisible(line, text);
        text += isTable ? "\r\n" : "\n";
        rest.remove_prefix(next);
    }
}

/// The name of an element made of a field's name.
std::string elementOf(std::string_view name)
{
    std::string element(name);
    for (char& byte : element) {
        const bool isLetter = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || byte == '_'
            || static_cast<unsigned char>(byte) >= 0x80;
        const bool isInner = (byte >= '0' && byte <= '9') || byte == '-' || byte == '.';
        if (!isLetter && (!isInner || &byte == element.data()))
            byte = '_';
    }
    return element.empty() ? "_" : element;
}

} // namespace

void appendVisible(std::string_view text, std::string& visible)
{
    forEachCharacter(text, [&](char32_t code, std::string_view bytes) {
        if (!isControl(code)) {
            visible += bytes;
        } else if (code == '\t') {
            visible += ' ';
        } else if (code == '\n') {
            visible += "\\n";
        } else if (code == '\r') {
            visible += "\\r";
        } else {
            char number[16];
            std::snprintf(number, sizeof number, code < 0x80 ? "\\x%02x" : "\\u%04x", static_cast<unsigned int>(code));
            visible += number;
        }
    });
}

Printer::Printer(Settings settings)
    : m_settings(std::move(settings))
{
    if (m_settings.style == Style::XML)
        m_head = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<log>\n";
    if (m_settings.style != Style::CSV)
        return;
    m_head = "kind";
    const auto add = [this](std::string_view name) {
        m_head += ',';
        appendCsv(name, m_head);
    };
    if (m_settings.fields.empty())
        std::ranges::for_each(COLUMNS, add);
    else
        std::ranges::for_each(m_settings.fields, add);
    m_head += "\r\n";
}

std::string_view Printer::getHead() const
{
    return m_head;
}

std::string_view Printer::getFoot() const
{
    return m_settings.style == Style::XML ? "</log>\n" : "";
}

void Printer::print(Record& record, std::string_view log, std::string& text)
{
    if (record.getKind() == Kind::MARKUP)
        return;
    const std::size_t start = text.size();
    switch (m_settings.style) {
    case Style::LINE:
        return printLine(record, log, text);
    case Style::PLAIN:
        printPlain(record, text);
        break;
    case Style::JSON:
        printJson(record, text);
        break;
    case Style::CSV:
        printCsv(record, text);
        break;
    case Style::XML:
        printXml(record, text);
        break;
    }
    if (m_settings.isTerminal)
        makeVisible(text, start);
}

/// Calls `visit(name, value, isText)` for each field that is wanted.
template <class Visit>
void Printer::forEachField(Record& record, Visit&& visit) const
{
    if (m_settings.fields.empty()) {
        for (const Field& field : record.getFields())
            visit(field.name, field.value, field.isText);
        return;
    }
    for (const std::string& name : m_settings.fields) {
        const std::vector<Field>& fields = record.getFields();
        const auto field = std::ranges::find(fields, std::string_view(name), &Field::name);
        if (field != fields.end())
            visit(field->name, field->value, field->isText);
    }
}

void Printer::printColoured(Colour colour, std::string_view text, std::string& output) const
{
    static constexpr std::string_view CODES[]
        = {"", "\033[35m", "\033[2m", "\033[36m", "\033[32m", "\033[2m", "\033[31m"};
    const bool isColoured = m_settings.hasColours && colour != Colour::NONE;
    if (isColoured)
        output += CODES[static_cast<std::size_t>(colour)];
    appendVisible(text, output);
    if (isColoured)
        output += "\033[0m";
}

/// Time, level, name and text first; the other fields follow with their names.
void Printer::printLine(Record& record, std::string_view log, std::string& text) const
{
    if (!log.empty()) {
        printColoured(Colour::LOG, log, text);
        text += ": ";
    }
    if (record.getKind() != Kind::ENTRY) {
        printColoured(Colour::FAULT, nameOf(record.getKind()), text);
        text += "> ";
        printColoured(Colour::NONE, withoutLineEnd(record.getBytes()), text);
        text += '\n';
        return;
    }
    const std::size_t start = text.size();
    const auto separate = [&] {
        if (text.size() > start)
            text += ' ';
    };
    if (!m_settings.fields.empty()) {
        forEachField(record, [&](std::string_view, std::string_view value, bool) {
            separate();
            printColoured(Colour::NONE, value, text);
        });
        text += '\n';
        return;
    }
    struct Part {
        std::string_view name, before, after;
        Colour colour;
    };
    static constexpr Part PARTS[] = {
        {"timestamp", "", "", Colour::TIME},
        {"level", "[", "]", Colour::LEVEL},
        {"name", "", ":", Colour::NAME},
        {"text", "", "", Colour::NONE},
    };
    for (const Part& part : PARTS) {
        if (const std::optional<std::string_view> value = record.find(part.name)) {
            separate();
            text += part.before;
            printColoured(part.colour, *value, text);
            text += part.after;
        }
    }
    for (const Field& field : record.getFields()) {
        if (std::ranges::find(PARTS, field.name, &Part::name) != std::end(PARTS))
            continue;
        separate();
        std::string pair(field.name);
        pair += '=';
        pair += field.value;
        printColoured(Colour::FIELD, pair, text);
    }
    text += '\n';
}

void Printer::printPlain(Record& record, std::string& text) const
{
    if (record.getKind() != Kind::ENTRY || (record.getForm() == Form::PLAIN && m_settings.fields.empty())) {
        text += withoutLineEnd(record.getBytes());
        text += '\n';
    } else {
        forEachField(record, [&](std::string_view name, std::string_view value, bool) {
            text += name;
            text += '=';
            text += value;
            text += '\n';
        });
        text += "-------------------------\n";
    }
}

void Printer::printJson(Record& record, std::string& text) const
{
    const bool isEntry = record.getKind() == Kind::ENTRY;
    if (isEntry && record.getForm() == Form::JSON && m_settings.fields.empty() && !m_settings.isTerminal) {
        text += withoutLineEnd(record.getBytes());
        text += '\n';
        return;
    }
    text += '{';
    const std::size_t start = text.size();
    const auto add = [&](std::string_view name, std::string_view value, bool isText) {
        if (text.size() > start)
            text += ',';
        appendJson(name, text);
        text += ':';
        if (isText)
            appendJson(value, text);
        else
            text += value;
    };
    if (isEntry) {
        const bool knowsTypes = record.getForm() == Form::JSON;
        forEachField(record, [&](std::string_view name, std::string_view value, bool isText) {
            const bool isNumber = !knowsTypes && (name == "level" || name == "sequence" || name == "thread");
            add(name, value, isText && !(isNumber && isInteger(value)));
        });
    } else {
        add(nameOf(record.getKind()), withoutLineEnd(record.getBytes()), true);
    }
    text += "}\n";
}

/// RFC 4180. What is no entry stands in the column after its kind.
void Printer::printCsv(Record& record, std::string& text) const
{
    text += nameOf(record.getKind());
    const auto add = [&](std::string_view name) {
        text += ',';
        appendCsv(record.find(name).value_or(""), text);
    };
    if (record.getKind() != Kind::ENTRY) {
        text += ',';
        appendCsv(withoutLineEnd(record.getBytes()), text);
        text.append((m_settings.fields.empty() ? std::size(COLUMNS) : m_settings.fields.size()) - 1, ',');
    } else if (m_settings.fields.empty()) {
        std::ranges::for_each(COLUMNS, add);
    } else {
        std::ranges::for_each(m_settings.fields, add);
    }
    text += "\r\n";
}

void Printer::printXml(Record& record, std::string& text) const
{
    if (record.getKind() != Kind::ENTRY) {
        const std::string element(nameOf(record.getKind()));
        text += "  <" + element + "> ";
        appendXml(withoutLineEnd(record.getBytes()), text);
        text += " </" + element + ">\n";
        return;
    }
    text += "  <entry>\n";
    forEachField(record, [&](std::string_view name, std::string_view value, bool) {
        const std::string element = elementOf(name);
        text += "    <" + element + "> ";
        appendXml(value, text);
        text += " </" + element + ">\n";
    });
    text += "  </entry>\n";
}

} // namespace vxview
