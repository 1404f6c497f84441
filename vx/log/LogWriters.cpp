#include "vx/Exception.h"
#include "vx/Result.h"
#include "vx/String.h"
#include "vx/collections/Set.h"
#include "vx/detail/ReleaseReport.h"
#include "vx/detail/StringLocks.h"
#include "vx/detail/TextBuilder.h"
#include "vx/log/BasicLogWriter.h"
#include "vx/log/LogEntry.h"
#include "vx/log/XmlLogWriter.h"
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

using detail::FieldOrder;
using text::charset::detail::REPLACEMENT;
using vx::detail::ShortTextBuilder;
using vx::detail::TextBuilder;
using vxsys::isLoneSurrogate;
using vxsys::isSurrogate;

/// Calls `take(name, printValue)` with each field of `entry`, in the order of its names; `printValue` appends the value's
/// text to a builder. The entries of other classes than ours have only the operations of their interface.
template <class Take>
void forEachField(const ILogEntry& entry, Take take)
{
    const auto* const own = vx::detail::isExactly<LogEntry>(entry) ? static_cast<const LogEntry*>(&entry)
                                                                   : dynamic_cast<const LogEntry*>(&entry);
    if (own != nullptr) {
        const FieldOrder order(*own);
        for (const FieldOrder::Field* field : order)
            take(order.nameOf(*field), [&](TextBuilder& text) { order.print(*field, text); });
        return;
    }
    const Reference<const collections::Set<String>> names = entry.getFieldNames();
    for (const Reference<String>& name : *names) {
        const String value = entry.getField(*name)->toString();
        take(name->view(), [&](TextBuilder& text) { text.append(value.view()); });
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

/// Whether there is a unit from U+8000 up. Looks at four in one step: most entries have none, and so no surrogate.
bool hasHighUnits(std::u16string_view text) noexcept
{
    constexpr std::uint64_t HIGH = 0x8000'8000'8000'8000;
    std::uint64_t all = 0;
    std::size_t index = 0;
    for (; text.size() - index >= 4; index += 4) {
        std::uint64_t four;
        std::memcpy(&four, text.data() + index, sizeof four);
        all |= four;
    }
    for (; index < text.size(); ++index)
        all |= text[index];
    return (all & HIGH) != 0;
}

/// Puts U+FFFD in the place of each half of a surrogate pair: one of them must not keep its entry out of the log.
void replaceHalves(TextBuilder& text) noexcept
{
    if (!hasHighUnits(text.view()))
        return;
    char16_t* const units = text.data();
    for (std::int32_t index = 0; index < text.length(); ++index) {
        if (isSurrogate(units[index]) && isLoneSurrogate(text.view(), static_cast<std::size_t>(index)))
            units[index] = REPLACEMENT;
    }
}

void escape(std::u16string_view text, TextBuilder& escaped)
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
    ShortTextBuilder<> text;
    print(*entry, text);
    replaceHalves(text);
    self.m_writer->write(text.data(), text.length());
    self.flush();
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
    ShortTextBuilder<> text;
    print(*entry, text);
    return text.toString();
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
    return AbstractLogWriter::format(entry);
}

void BasicLogWriter::print(const ILogEntry& entry, TextBuilder& text)
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
    : AbstractLogWriter(writer)
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
    return AbstractLogWriter::format(entry);
}

void XmlLogWriter::print(const ILogEntry& entry, TextBuilder& text)
{
    text.append(u"  <entry>\n"sv);
    forEachField(entry, [&](std::u16string_view name, auto printValue) {
        text.append(u"    <"sv);
        text.append(name);
        text.append(u"> "sv);
        if (m_values == Values::ESCAPED) {
            ShortTextBuilder<> value;
            printValue(value);
            escape(value.view(), text);
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
