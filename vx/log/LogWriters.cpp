#include "vx/Exception.h"
#include "vx/Result.h"
#include "vx/String.h"
#include "vx/detail/ReleaseReport.h"
#include "vx/detail/TextBuilder.h"
#include "vx/io/OutputStreamWriter.h"
#include "vx/log/BasicLogWriter.h"
#include "vx/log/JsonLogWriter.h"
#include "vx/log/XmlLogWriter.h"
#include "vx/log/detail/EntryFields.h"
#include "vx/log/detail/WholeText.h"
#include "vx/text/charset/detail/Unicode.h"
#include "vxsys/Surrogate.h"

#include <cstddef>
#include <iterator>
#include <string_view>

namespace vx::log {

namespace {

using namespace std::string_view_literals;

using detail::appendWhole;
using detail::FieldOrder;
using detail::forEachField;
using text::charset::detail::REPLACEMENT;
using vx::detail::Label;
using vx::detail::ShortTextBuilder;
using vx::detail::TextBuilder;
using vxsys::isLoneSurrogate;

/// The text before and after the value of a logger's field.
struct Frame {
    Label line;
    Label openElement;
    Label closeElement;
};
constexpr Frame FRAMES[] = {
    {u"sequence=", u"    <sequence> ", u" </sequence>\n"},
    {u"thread=", u"    <thread> ", u" </thread>\n"},
    {u"name=", u"    <name> ", u" </name>\n"},
    {u"timestamp=", u"    <timestamp> ", u" </timestamp>\n"},
    {u"level=", u"    <level> ", u" </level>\n"},
    {u"text=", u"    <text> ", u" </text>\n"},
};
static_assert(std::size(FRAMES) == FieldOrder::LOGGER_FIELDS);

constexpr Label OPEN_ENTRY(u"  <entry>\n");
constexpr Label CLOSE_ENTRY(u"  </entry>\n");

/// Null for a field that no logger sets.
const Frame* frameOf(std::size_t loggerField) noexcept
{
    return loggerField < std::size(FRAMES) ? &FRAMES[loggerField] : nullptr;
}

/// The replacement of a unit in the text of a document; empty if it stays as it is.
constexpr std::u16string_view escapeOf(char16_t unit) noexcept
{
    switch (unit) {
    case u'<':
        return u"&lt;";
    case u'>':
        return u"&gt;";
    case u'&':
        return u"&amp;";
    case u'\r': // a parser would turn it into a line feed
        return u"&#13;";
    default:
        return {};
    }
}

/// Whether XML 1.0 forbids the unit at `index`: controls, lone halves of surrogate pairs and two non-characters.
constexpr bool isForbidden(std::u16string_view text, std::size_t index) noexcept
{
    const char16_t unit = text[index];
    return (unit < u' ' && unit != u'\t' && unit != u'\n' && unit != u'\r') || unit >= 0xFFFE
        || isLoneSurrogate(text, index);
}

template <class Builder>
void escape(std::u16string_view text, Builder& escaped)
{
    std::size_t done = 0;
    const auto put = [&](std::size_t index, std::u16string_view instead) {
        escaped.append(text.substr(done, index - done));
        escaped.append(instead);
        done = index + 1;
    };
    for (std::size_t index = 0; index < text.size(); ++index) {
        if (const std::u16string_view instead = escapeOf(text[index]); !instead.empty())
            put(index, instead);
        else if (isForbidden(text, index))
            put(index, {&REPLACEMENT, 1});
    }
    escaped.append(text.substr(done));
}

template <class Builder>
void printLines(const ILogEntry& entry, Builder& text)
{
    forEachField(entry, [&](std::size_t loggerField, std::u16string_view name, const auto& value) {
        const Frame* const frame = frameOf(loggerField);
        if (frame != nullptr) {
            text.appendLabel(frame->line);
        } else {
            appendWhole(text, name);
            text.append(u'=');
        }
        value.print(text);
        text.append(u'\n');
    });
    text.append(u"-------------------------\n"sv);
}

template <class Builder>
void printElements(const ILogEntry& entry, XmlLogWriter::Values values, Builder& text)
{
    text.appendLabel(OPEN_ENTRY);
    forEachField(entry, [&](std::size_t loggerField, std::u16string_view name, const auto& value) {
        const Frame* const frame = frameOf(loggerField);
        if (frame != nullptr) {
            text.appendLabel(frame->openElement);
        } else {
            text.append(u"    <"sv);
            appendWhole(text, name);
            text.append(u"> "sv);
        }
        if (values == XmlLogWriter::Values::ESCAPED) {
            ShortTextBuilder<> units;
            value.print(units);
            escape(units.view(), text);
        } else {
            value.print(text);
        }
        if (frame != nullptr) {
            text.appendLabel(frame->closeElement);
        } else {
            text.append(u" </"sv);
            appendWhole(text, name.substr(0, name.find(u' ')));
            text.append(u">\n"sv);
        }
    });
    text.appendLabel(CLOSE_ENTRY);
}

} // namespace

namespace detail {

void LogWriterFace::process(const ILogEntry* entry)
{
    if (entry == nullptr)
        throwResult(RESULT_INVALID_ARGUMENT);
    auto& self = static_cast<AbstractLogWriter&>(*this);
    if (!writeUtf8(*entry)) {
        ShortTextBuilder<> text;
        print(*entry, text);
        if (self.m_form == AbstractLogWriter::Form::OTHER && hasHighUnits(text.view()))
            replaceHalves(text, 0);
        self.m_writer->write(text.data(), text.length());
    }
    self.flush();
}

bool LogWriterFace::writeUtf8(const ILogEntry& entry)
{
    using Form = AbstractLogWriter::Form;
    auto& self = static_cast<AbstractLogWriter&>(*this);
    const LogEntry* const own = ownEntry(entry);
    if (self.m_form == Form::OTHER || own == nullptr || !FieldOrder::isPlain(*own)
        || !vx::detail::isExactly<io::OutputStreamWriter>(*self.m_writer))
        return false;
    auto& writer = static_cast<io::OutputStreamWriter&>(*self.m_writer);
    Utf8Builder text(writer.roomForUtf8());
    if (self.m_form == Form::LINES)
        printLines(entry, text);
    else if (self.m_form == Form::XML)
        printElements(entry, static_cast<XmlLogWriter&>(self).m_values, text);
    else
        JsonLogWriter::printUtf8(entry, text);
    if (text.fits())
        writer.takeUtf8(text.bytes(), text.units());
    return text.fits();
}

void LogWriterFace::print(const ILogEntry& entry, TextBuilder& text)
{
    text.append(static_cast<AbstractLogWriter&>(*this).format(&entry).view());
}

} // namespace detail

AbstractLogWriter::AbstractLogWriter(io::Writer* writer)
    : m_writer(writer)
{
    if (writer == nullptr)
        throwResult(RESULT_INVALID_ARGUMENT);
}

AbstractLogWriter::~AbstractLogWriter() noexcept(false) = default;

void AbstractLogWriter::flush()
{
    m_writer->flush();
}

String AbstractLogWriter::format(const ILogEntry* entry)
{
    return vx::detail::builtText([&](TextBuilder& text) { print(*entry, text); });
}

BasicLogWriter::BasicLogWriter(io::Writer* writer)
    : AbstractLogWriter(writer)
{
    m_form = Form::LINES;
}

BasicLogWriter::~BasicLogWriter() noexcept(false) = default;

Reference<ILogProcessor> BasicLogWriter::create(io::Writer* writer)
{
    return new BasicLogWriter(writer);
}

String BasicLogWriter::format(const ILogEntry* entry)
{
    return AbstractLogWriter::format(entry);
}

void BasicLogWriter::print(const ILogEntry& entry, TextBuilder& text)
{
    printLines(entry, text);
}

XmlLogWriter::XmlLogWriter(io::Writer* writer, Values values)
    : AbstractLogWriter(writer)
    , m_values(values)
{
    m_form = Form::XML;
    getWriter().write(u"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");
    getWriter().write(u"<log>\n");
}

XmlLogWriter::~XmlLogWriter() noexcept(false)
{
    vx::detail::ReleaseReport::ofDestructor().run([this] {
        getWriter().write(u"</log>\n");
        getWriter().flush();
    });
}

Reference<ILogProcessor> XmlLogWriter::create(io::Writer* writer, Values values)
{
    return new XmlLogWriter(writer, values);
}

String XmlLogWriter::format(const ILogEntry* entry)
{
    return AbstractLogWriter::format(entry);
}

void XmlLogWriter::print(const ILogEntry& entry, TextBuilder& text)
{
    printElements(entry, m_values, text);
}

} // namespace vx::log
