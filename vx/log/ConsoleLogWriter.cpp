#include "vx/log/ConsoleLogWriter.h"

#include "vx/Exception.h"
#include "vx/Result.h"
#include "vx/log/detail/EntryFields.h"
#include "vxsys/Console.h"
#include "vxsys/File.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <string>
#include <string_view>
#include <utility>

namespace vx::log {

namespace {

using vx::detail::ShortTextBuilder;

constexpr std::u16string_view NAMES[] = {u"sequence", u"thread", u"name", u"timestamp", u"level", u"text"};
enum Place { SEQUENCE, THREAD, NAME, TIMESTAMP, LEVEL, TEXT, OTHER };
static_assert(std::size(NAMES) == OTHER && OTHER == detail::FieldOrder::LOGGER_FIELDS);

bool mayColour(std::uint32_t handle)
{
    const char* const noColour = std::getenv("NO_COLOR");
    const char* const terminal = std::getenv("TERM");
    return (noColour == nullptr || *noColour == '\0') && (terminal == nullptr || std::string_view(terminal) != "dumb")
        && VXConsoleIsTerminal(handle) == RESULT_OK;
}

void appendVisible(std::u16string& line, std::u16string_view text)
{
    constexpr char16_t PICTURES = 0x2400, DELETE = 0x7F, PICTURE_OF_DELETE = 0x2421, REPLACEMENT = 0xFFFD;
    constexpr char16_t END_OF_CONTROLS = 0xA0;
    for (const char16_t unit : text) {
        if (unit == u'\n')
            line += u"\n    ";
        else if (unit < u' ' && unit != u'\t')
            line += static_cast<char16_t>(PICTURES + unit);
        else if (unit == DELETE)
            line += PICTURE_OF_DELETE;
        else
            line += unit > DELETE && unit < END_OF_CONTROLS ? REPLACEMENT : unit;
    }
}

} // namespace

ConsoleLogWriter::ConsoleLogWriter(std::uint32_t handle, bool isColoured)
    : m_handle(handle)
    , m_isColoured(isColoured)
    , m_bands {{2, "1;31"}, {3, "31"}, {4, "33"}, {5, "1"}, {6, ""}, {std::numeric_limits<std::int32_t>::max(), "2"}}
{
}

ConsoleLogWriter::~ConsoleLogWriter() noexcept = default;

Reference<ConsoleLogWriter> ConsoleLogWriter::create(std::uint32_t handle, Colours colours)
{
    const bool isColoured = colours == Colours::ALWAYS || (colours == Colours::ON_A_TERMINAL && mayColour(handle));
    return new ConsoleLogWriter(handle, isColoured);
}

void ConsoleLogWriter::setBands(std::vector<Band> bands)
{
    m_bands = std::move(bands);
}

void ConsoleLogWriter::process(const ILogEntry* entry)
{
    if (entry == nullptr)
        throwResult(RESULT_INVALID_ARGUMENT);
    std::u16string parts[OTHER];
    std::u16string others;
    detail::forEachField(*entry, [&](std::size_t place, std::u16string_view name, const auto& value) {
        if (place == OTHER) // an entry of another class
            place = static_cast<std::size_t>(std::ranges::find(NAMES, name) - NAMES);
        ShortTextBuilder<> text;
        if (!value.isNull())
            value.print(text);
        if (place > THREAD && place < OTHER)
            return appendVisible(parts[place], text.view());
        others += u' ';
        appendVisible(others, name);
        others += u'=';
        appendVisible(others, text.view());
    });
    std::u16string line;
    for (const Place place : {TIMESTAMP, LEVEL, NAME}) {
        if (!parts[place].empty())
            line.append(parts[place]).append(place == NAME ? u": " : u" ");
    }
    line.append(parts[TEXT]).append(others);

    const auto band = std::ranges::find_if(
        m_bands, [level = detail::levelOf(*entry)](const Band& each) { return level <= each.highest; });
    std::string bytes = String(std::u16string_view(line)).toUtf8();
    if (m_isColoured && band != m_bands.end() && !band->codes.empty())
        bytes = "\x1b[" + band->codes + "m" + bytes + "\x1b[0m";
    bytes += '\n';
    for (std::string_view rest = bytes; !rest.empty();) {
        std::int32_t done = 0;
        throwIfFailed(VXFileWrite(m_handle, rest.data(), static_cast<std::int32_t>(rest.size()), &done));
        rest.remove_prefix(static_cast<std::size_t>(done));
    }
}

} // namespace vx::log
