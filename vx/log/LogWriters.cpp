#include "vx/Exception.h"
#include "vx/Result.h"
#include "vx/String.h"
#include "vx/collections/Set.h"
#include "vx/detail/ReleaseReport.h"
#include "vx/detail/TextRange.h"
#include "vx/log/BasicLogWriter.h"
#include "vx/log/ILogEntry.h"
#include "vx/log/XmlLogWriter.h"
#include "vx/log/detail/EntryText.h"
#include "vx/log/detail/FieldOrder.h"
#include "vx/text/charset/detail/Unicode.h"
#include "vxsys/Surrogate.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace vx::log {

namespace {

using namespace std::string_view_literals;

using detail::EntryText;
using detail::FieldOrder;
using text::charset::detail::REPLACEMENT;
using vxsys::isLoneSurrogate;
using vxsys::isSurrogate;

/// Calls `take(name, printValue)` with each field of `entry`, in the order of its names; `printValue` appends the value's
/// text to an `EntryText`.
template <class Take>
void forEachField(const ILogEntry& entry, Take take)
{
    if (const FieldOrder order(entry); order.isKnown()) {
        for (const FieldOrder::Row& row : order) {
            if (order.has(row))
                take(std::u16string_view(row.name, row.length), [&](EntryText& text) { order.print(row, text); });
        }
        return;
    }
    const Reference<const collections::Set<String>> names = entry.getFieldNames();
    const Reference<collections::ConstIterator<String>> each = names->createConstIterator();
    while (each->hasNext()) {
        const Reference<String> name = each->next();
        const String value = entry.getField(*name)->toString();
        take(name->view(), [&](EntryText& text) { text.append(value.view()); });
    }
}

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

/// Whether XML 1.0 has no place for the unit at `index`: controls, halves of pairs and two non-characters.
constexpr bool isForbidden(std::u16string_view text, std::size_t index) noexcept
{
    const char16_t unit = text[index];
    return (unit < u' ' && unit != u'\t' && unit != u'\n' && unit != u'\r') || unit >= 0xFFFE
        || isLoneSurrogate(text, index);
}

/// Looks at four units in one step: hardly any entry has a surrogate.
bool hasSurrogates(std::u16string_view text) noexcept
{
    constexpr std::uint64_t EACH = 0x0001'0001'0001'0001;
    std::size_t index = 0;
    for (; text.size() - index >= 4; index += 4) {
        std::uint64_t four;
        std::memcpy(&four, text.data() + index, sizeof four);
        const std::uint64_t others = (four & EACH * 0xF800) ^ EACH * 0xD800; // 0 in the place of a surrogate
        if (((others - EACH) & ~others & EACH * 0x8000) != 0)
            return true;
    }
    return std::any_of(text.begin() + static_cast<std::ptrdiff_t>(index), text.end(), isSurrogate<char16_t>);
}

/// Puts U+FFFD in the place of each half of a surrogate pair: one of them must not keep its entry out of the log.
void replaceHalves(char16_t* text, std::size_t length) noexcept
{
    if (!hasSurrogates({text, length}))
        return;
    for (std::size_t index = 0; index < length; ++index) {
        if (isLoneSurrogate({text, length}, index))
            text[index] = REPLACEMENT;
    }
}

void escape(std::u16string_view text, EntryText& escaped)
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

} // namespace

namespace detail {

void LogWriterFace::process(const ILogEntry* entry)
{
    if (entry == nullptr)
        throwResult(RESULT_INVALID_ARGUMENT);
    auto& self = static_cast<AbstractLogWriter&>(*this);
    EntryText text;
    if (self.m_print != nullptr)
        self.m_print(self, *entry, text);
    else
        text.append(self.format(entry).view());
    replaceHalves(text.data(), static_cast<std::size_t>(text.length()));
    self.m_writer->write(text.data(), text.length());
    self.flush();
}

void EntryText::grow(std::int64_t needed)
{
    if (needed > vx::detail::LONGEST_TEXT)
        throwBadAllocation();
    const std::int64_t capacity = std::max(needed, 2 * m_capacity);
    vx::detail::RawArray<char16_t> larger = vx::detail::makeRawArray<char16_t>(capacity);
    std::copy_n(m_data, m_length, larger.get());
    m_long = std::move(larger);
    m_data = m_long.get();
    m_capacity = capacity;
}

} // namespace detail

AbstractLogWriter::AbstractLogWriter(io::Writer* writer)
    : AbstractLogWriter(writer, nullptr)
{
}

AbstractLogWriter::AbstractLogWriter(io::Writer* writer, Print print)
    : m_writer(writer)
    , m_print(print)
{
    if (writer == nullptr)
        throwResult(RESULT_INVALID_ARGUMENT);
}

AbstractLogWriter::~AbstractLogWriter() noexcept(false) = default;

void AbstractLogWriter::flush()
{
    m_writer->flush();
}

String AbstractLogWriter::formatByPrint(const ILogEntry* entry) const
{
    EntryText text;
    m_print(*this, *entry, text);
    return text.toString();
}

BasicLogWriter::BasicLogWriter(io::Writer* writer)
    : AbstractLogWriter(writer, &print)
{
}

BasicLogWriter::~BasicLogWriter() noexcept(false) = default;

Reference<ILogProcessor> BasicLogWriter::create(io::Writer* writer)
{
    return new BasicLogWriter(writer);
}

String BasicLogWriter::format(const ILogEntry* entry)
{
    return formatByPrint(entry);
}

void BasicLogWriter::print(const AbstractLogWriter&, const ILogEntry& entry, EntryText& text)
{
    forEachField(entry, [&](std::u16string_view name, auto printValue) {
        text.append(name);
        text.append(u'=');
        printValue(text);
        text.append(u'\n');
    });
    text.append(u"-------------------------\n"sv);
}

XmlLogWriter::XmlLogWriter(io::Writer* writer, Values values)
    : AbstractLogWriter(writer, &print)
    , m_values(values)
{
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
    return formatByPrint(entry);
}

void XmlLogWriter::print(const AbstractLogWriter& self, const ILogEntry& entry, EntryText& text)
{
    const bool isEscaped = static_cast<const XmlLogWriter&>(self).m_values == Values::ESCAPED;
    text.append(u"  <entry>\n"sv);
    forEachField(entry, [&](std::u16string_view name, auto printValue) {
        text.append(u"    <"sv);
        text.append(name);
        text.append(u"> "sv);
        if (isEscaped) {
            EntryText value;
            printValue(value);
            escape({value.data(), static_cast<std::size_t>(value.length())}, text);
        } else {
            printValue(text);
        }
        text.append(u" </"sv);
        text.append(name.substr(0, name.find(u' ')));
        text.append(u">\n"sv);
    });
    text.append(u"  </entry>\n"sv);
}

} // namespace vx::log
