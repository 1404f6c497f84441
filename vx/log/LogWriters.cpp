#include "vx/Exception.h"
#include "vx/Result.h"
#include "vx/String.h"
#include "vx/collections/Set.h"
#include "vx/log/BasicLogWriter.h"
#include "vx/log/ILogEntry.h"
#include "vx/log/XmlLogWriter.h"
#include "vx/log/detail/FieldOrder.h"

#include <exception>
#include <string_view>

namespace vx::log {

namespace {

/// Calls `take(name, value)` with each field of `entry`, in the order of its names.
template <class Take>
void forEachField(const ILogEntry& entry, Take take)
{
    if (const detail::FieldOrder order(entry); order.isKnown()) {
        for (const detail::FieldOrder::Row& row : order) {
            if (row.value == nullptr)
                throwResult(RESULT_END_OF_FILE); // as `getField` does
            take(*row.name, row.value->toString());
        }
        return;
    }
    const Reference<const collections::Set<String>> names = entry.getFieldNames();
    const Reference<collections::ConstIterator<String>> each = names->createConstIterator();
    while (each->hasNext()) {
        const Reference<String> name = each->next();
        take(*name, entry.getField(*name)->toString());
    }
}

/// Holds most entries without growing, in units.
constexpr int ENTRY_CAPACITY = 512;

constexpr char16_t REPLACEMENT = 0xFFFD;

/// What stands for a unit in the text of a document; empty for itself.
constexpr std::u16string_view escapeOf(char16_t unit) noexcept
{
    switch (unit) {
    case u'<':
        return u"&lt;";
    case u'>':
        return u"&gt;";
    case u'&':
        return u"&amp;";
    case u'\r': // a parser would read a line feed
        return u"&#13;";
    default:
        return {};
    }
}

constexpr bool isLead(char16_t unit) noexcept
{
    return (unit & 0xFC00) == 0xD800;
}

constexpr bool isTrail(char16_t unit) noexcept
{
    return (unit & 0xFC00) == 0xDC00;
}

/// Whether XML 1.0 has no place for the unit at `index`: controls, lone surrogates and two non-characters.
constexpr bool isForbidden(std::u16string_view text, std::size_t index) noexcept
{
    const char16_t unit = text[index];
    if (isLead(unit))
        return index + 1 == text.size() || !isTrail(text[index + 1]);
    if (isTrail(unit))
        return index == 0 || !isLead(text[index - 1]);
    return (unit < u' ' && unit != u'\t' && unit != u'\n' && unit != u'\r') || unit >= 0xFFFE;
}

String escape(const String& value)
{
    const std::u16string_view text = value.view();
    String escaped(static_cast<int>(text.size()));
    std::size_t done = 0;
    const auto put = [&](std::size_t index, std::u16string_view instead) {
        escaped.append(text.data() + done, static_cast<int>(index - done));
        escaped.append(instead.data(), static_cast<int>(instead.size()));
        done = index + 1;
    };
    for (std::size_t index = 0; index < text.size(); ++index) {
        if (const std::u16string_view instead = escapeOf(text[index]); !instead.empty())
            put(index, instead);
        else if (isForbidden(text, index))
            put(index, {&REPLACEMENT, 1});
    }
    escaped.append(text.data() + done, static_cast<int>(text.size() - done));
    return escaped;
}

} // namespace

namespace detail {

void LogWriterFace::process(const ILogEntry* entry)
{
    if (entry == nullptr)
        throwResult(RESULT_INVALID_ARGUMENT);
    auto& self = static_cast<AbstractLogWriter&>(*this);
    const String text = self.format(entry);
    self.m_writer->write(text.view().data(), text.getLength());
    self.flush();
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

BasicLogWriter::BasicLogWriter(io::Writer* writer)
    : AbstractLogWriter(writer)
{
}

BasicLogWriter::~BasicLogWriter() noexcept(false) = default;

Reference<ILogProcessor> BasicLogWriter::create(io::Writer* writer)
{
    return new BasicLogWriter(writer);
}

String BasicLogWriter::format(const ILogEntry* entry)
{
    String text(ENTRY_CAPACITY);
    forEachField(*entry, [&](const String& name, const String& value) {
        text.append(name);
        text.append(u'=');
        text.append(value);
        text.append(u'\n');
    });
    text.append(u"-------------------------\n");
    return text;
}

XmlLogWriter::XmlLogWriter(io::Writer* writer, Values values)
    : AbstractLogWriter(writer)
    , m_values(values)
{
    getWriter().write(u"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");
    getWriter().write(u"<log>\n");
}

XmlLogWriter::~XmlLogWriter() noexcept(false)
{
    const bool isUnwinding = std::uncaught_exceptions() > 0;
    try {
        getWriter().write(u"</log>\n");
        getWriter().flush();
    } catch (...) {
        if (!isUnwinding)
            throw;
    }
}

Reference<ILogProcessor> XmlLogWriter::create(io::Writer* writer, Values values)
{
    return new XmlLogWriter(writer, values);
}

String XmlLogWriter::format(const ILogEntry* entry)
{
    String text(ENTRY_CAPACITY);
    text.append(u"  <entry>\n");
    forEachField(*entry, [&](const String& name, const String& value) {
        const int blank = name.indexOf(u' ');
        const std::u16string_view closing = name.view().substr(0, static_cast<std::size_t>(blank)); // -1: all of it
        text.append(u"    <");
        text.append(name);
        text.append(u"> ");
        text.append(m_values == Values::ESCAPED ? escape(value) : value);
        text.append(u" </");
        text.append(closing.data(), static_cast<int>(closing.size()));
        text.append(u">\n");
    });
    text.append(u"  </entry>\n");
    return text;
}

} // namespace vx::log
