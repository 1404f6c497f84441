#include "vx/util/IniDocument.h"

#include "vx/Exception.h"
#include "vx/Occasion.h"
#include "vx/Result.h"
#include "vx/TerminatedText.h"
#include "vx/util/detail/FileBytes.h"
#include "vxsys/File.h"

#include <algorithm>
#include <iterator>
#include <unordered_set>

namespace vx::util {

namespace {

constexpr std::size_t NONE = std::string::npos;
constexpr std::string_view UTF8_MARKER = "\xEF\xBB\xBF";
constexpr std::string_view COMMENT_SIGNS = "#;:";
constexpr std::string_view WHITE_SPACE = " \t\n\v\f\r";
constexpr std::string_view TRIMMED = " \t\r\n";

char lower(char byte)
{
    return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte - 'A' + 'a') : byte;
}

std::string inLowerCase(std::string_view text)
{
    std::string changed(text);
    std::ranges::transform(changed, changed.begin(), lower);
    return changed;
}

bool isSameName(std::string_view left, std::string_view right)
{
    return std::ranges::equal(left, right, {}, lower, lower);
}

bool isIn(std::string_view set, char byte)
{
    return set.find(byte) != set.npos;
}

void require(bool condition, const char16_t* what)
{
    if (!condition)
        throw ResultException(RESULT_INVALID_ARGUMENT, String(u"an INI file cannot hold this ") + what);
}

enum class Kind { NOTHING, SET, ENTRY, STRANGE };

} // namespace

struct IniDocument::Line {
    std::string_view name() const { return std::string_view(text).substr(nameStart, nameLength); }
    std::string_view value() const { return std::string_view(text).substr(valueStart, valueLength); }

    std::string text; ///< with its end
    Kind kind = Kind::NOTHING;
    std::size_t nameStart = 0;
    std::size_t nameLength = 0;
    std::size_t valueStart = 0;
    std::size_t valueLength = 0;
};

struct IniDocument::Content {
    std::string marker; ///< the UTF-8 marker, if the text begins with it
    std::vector<Line> lines;
};

IniDocument::IniDocument()
    : m_content(std::make_unique<Content>())
{
}

IniDocument::IniDocument(const IniDocument& other)
    : m_content(std::make_unique<Content>(*other.m_content))
{
}

IniDocument::IniDocument(IniDocument&& other)
    : IniDocument()
{
    m_content.swap(other.m_content);
}

IniDocument& IniDocument::operator=(IniDocument other) noexcept
{
    m_content.swap(other.m_content);
    return *this;
}

IniDocument::~IniDocument() = default;

IniDocument IniDocument::parse(std::string_view text)
{
    IniDocument document;
    if (text.starts_with(UTF8_MARKER)) {
        document.m_content->marker = UTF8_MARKER;
        text.remove_prefix(UTF8_MARKER.size());
    }
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size() - 1) + 1;
        document.m_content->lines.push_back(lineOf(std::string(text.substr(0, end))));
        text.remove_prefix(end);
    }
    return document;
}

IniDocument IniDocument::load(const String& path)
{
    std::string bytes;
    throwIfFailed(detail::readFile(SystemName(path), bytes), u"open", path);
    return parse(bytes);
}

std::int32_t IniDocument::save(const String& path) const
{
    constexpr std::int32_t ACCESS = 0666;
    if (!SystemName::isValid(path))
        return RESULT_INVALID_NAME;
    const std::string text = getText();
    return VXFileReplace(TerminatedText(path), text.data(), static_cast<std::int64_t>(text.size()), ACCESS, nullptr);
}

std::string IniDocument::getText() const
{
    std::string text = m_content->marker;
    for (const Line& line : m_content->lines)
        text += line.text;
    return text;
}

bool IniDocument::hasSet(std::string_view set) const
{
    return placeIn(set) != NONE;
}

std::vector<std::string> IniDocument::getSets() const
{
    std::vector<std::string> names;
    std::unordered_set<std::string> known;
    for (const Line& line : m_content->lines) {
        if (line.kind == Kind::SET && known.insert(inLowerCase(line.name())).second)
            names.emplace_back(line.name());
    }
    return names;
}

std::vector<IniDocument::Entry> IniDocument::getEntries() const
{
    std::vector<Entry> entries;
    forEach([&](std::size_t index, std::string_view set) {
        const Line& line = m_content->lines[index];
        if (line.kind == Kind::ENTRY)
            entries.push_back({std::string(set), std::string(line.name()), std::string(line.value()), index + 1});
    });
    return entries;
}

std::vector<IniDocument::StrangeLine> IniDocument::getStrangeLines() const
{
    std::vector<StrangeLine> lines;
    for (std::size_t index = 0; index < m_content->lines.size(); ++index) {
        const Line& line = m_content->lines[index];
        const std::string text = line.text.substr(0, line.text.find_last_not_of("\r\n") + 1);
        const std::size_t rest = text.find_first_not_of(WHITE_SPACE, line.nameStart + line.nameLength + 1);
        const bool hasRest = line.kind == Kind::SET && rest != NONE && !isIn(COMMENT_SIGNS, text[rest]);
        if (line.kind == Kind::STRANGE || hasRest || isIn(text, '\r'))
            lines.push_back({text, index + 1});
    }
    return lines;
}

std::optional<IniDocument::Entry> IniDocument::find(std::string_view set, std::string_view name) const
{
    const std::size_t index = indexOf(set, name);
    if (index == NONE)
        return std::nullopt;
    const Line& line = m_content->lines[index];
    return Entry {std::string(set), std::string(line.name()), std::string(line.value()), index + 1};
}

std::optional<std::string> IniDocument::get(std::string_view set, std::string_view name) const
{
    const std::size_t index = indexOf(set, name);
    return index != NONE ? std::optional<std::string>(m_content->lines[index].value()) : std::nullopt;
}

void IniDocument::set(std::string_view set, std::string_view name, std::string_view value)
{
    // A line that is made of the texts tells whether they would be read back.
    const Line entry = lineOf(std::string(name) + " = " + std::string(value));
    require(entry.kind == Kind::ENTRY && entry.name() == name && !isIn(name, '\n'), u"name");
    require(entry.value() == value && !isIn(value, '\n'), u"value");
    const Line head = lineOf('[' + std::string(set) + ']');
    require(head.kind == Kind::SET && !isIn(set, '\n'), u"set");

    if (const std::size_t index = indexOf(set, name); index != NONE) {
        std::string text = m_content->lines[index].text;
        const std::size_t start = m_content->lines[index].valueStart;
        const bool needsBlank = text[start - 1] == '=' && start > 1 && text[start - 2] == ' ';
        text.replace(start, m_content->lines[index].valueLength, std::string(needsBlank ? " " : "").append(value));
        m_content->lines[index] = lineOf(std::move(text));
        return;
    }
    std::string added;
    bool isTight = false; // "name=value", as the entry before is written
    std::size_t place = placeIn(set);
    if (place == NONE && set.empty()) {
        const auto isHead = [](const Line& line) { return line.kind == Kind::SET; };
        place = static_cast<std::size_t>(std::ranges::find_if(m_content->lines, isHead) - m_content->lines.begin());
    } else if (place == NONE) {
        place = m_content->lines.size();
        if (place > 0 && m_content->lines.back().text.find_first_not_of(WHITE_SPACE) != NONE)
            added += '\n';
        added.append("[").append(set).append("]\n");
    } else if (const Line& before = m_content->lines[place - 1]; before.kind == Kind::ENTRY) {
        isTight = before.text[before.nameStart + before.nameLength] == '=';
    }
    insert(place, added.append(name).append(isTight ? "=" : " = ").append(value));
}

bool IniDocument::remove(std::string_view set, std::string_view name)
{
    std::vector<Line> kept;
    forEach([&](std::size_t index, std::string_view ofLine) {
        const Line& line = m_content->lines[index];
        if (line.kind != Kind::ENTRY || !isSameName(ofLine, set) || !isSameName(line.name(), name))
            kept.push_back(line);
    });
    m_content->lines.swap(kept);
    return m_content->lines.size() != kept.size();
}

bool IniDocument::removeSet(std::string_view set)
{
    std::vector<Line> kept;
    forEach([&](std::size_t index, std::string_view ofLine) {
        if (!isSameName(ofLine, set))
            kept.push_back(m_content->lines[index]);
    });
    m_content->lines.swap(kept);
    return m_content->lines.size() != kept.size();
}

IniDocument::Line IniDocument::lineOf(std::string text)
{
    Line line;
    line.text = std::move(text);
    const std::string_view whole = line.text;
    const std::size_t start
        = whole.starts_with(UTF8_MARKER) ? UTF8_MARKER.size() : 0; // which IniFile skips on any line
    const std::size_t first = whole.find_first_not_of(WHITE_SPACE, start);
    if (first == NONE || isIn(COMMENT_SIGNS, whole[first]))
        return line;
    line.kind = Kind::STRANGE;
    if (first != start || isIn(whole, '\0'))
        return line;
    if (whole[start] == '[') {
        if (const std::size_t bracket = whole.rfind(']'); bracket != NONE) {
            line.kind = Kind::SET;
            line.nameStart = start + 1;
            line.nameLength = bracket - line.nameStart;
        }
    } else if (const std::size_t sign = whole.find('='); sign != NONE) {
        line.kind = Kind::ENTRY;
        line.nameStart = start;
        line.nameLength = whole.substr(start, sign - start).find_last_not_of(TRIMMED) + 1;
        line.valueStart = sign + 1;
        if (const std::size_t value = whole.find_first_not_of(TRIMMED, sign + 1); value != NONE) {
            line.valueStart = value;
            line.valueLength = whole.find_last_not_of(TRIMMED) + 1 - value;
        }
    }
    return line;
}

void IniDocument::insert(std::size_t index, std::string_view text)
{
    const std::string_view end = !m_content->lines.empty() && m_content->lines.front().text.ends_with("\r\n")
        ? std::string_view("\r\n")
        : "\n";
    std::vector<Line> added;
    for (bool isLast = false; !isLast;) {
        const std::size_t feed = std::min(text.find('\n'), text.size());
        added.push_back(lineOf(std::string(text.substr(0, feed)).append(end)));
        isLast = feed == text.size();
        text.remove_prefix(isLast ? feed : feed + 1);
    }
    std::string before = index > 0 ? m_content->lines[index - 1].text : "\n";
    if (!before.ends_with('\n'))
        before += end;
    if (m_content->lines.capacity() - m_content->lines.size() < added.size())
        m_content->lines.reserve(2 * m_content->lines.size() + added.size());
    // Nothing fails from here on, so that a failure leaves the document as it was.
    if (index > 0)
        m_content->lines[index - 1].text.swap(before);
    m_content->lines.insert(m_content->lines.begin() + static_cast<std::ptrdiff_t>(index),
        std::make_move_iterator(added.begin()), std::make_move_iterator(added.end()));
}

template <class Work>
void IniDocument::forEach(Work work) const
{
    std::string_view set;
    for (std::size_t index = 0; index < m_content->lines.size(); ++index) {
        if (m_content->lines[index].kind == Kind::SET)
            set = m_content->lines[index].name();
        work(index, set);
    }
}

std::size_t IniDocument::indexOf(std::string_view set, std::string_view name) const
{
    std::size_t last = NONE;
    forEach([&](std::size_t index, std::string_view ofLine) {
        if (m_content->lines[index].kind == Kind::ENTRY && isSameName(ofLine, set)
            && isSameName(m_content->lines[index].name(), name))
            last = index;
    });
    return last;
}

std::size_t IniDocument::placeIn(std::string_view set) const
{
    std::size_t place = NONE;
    forEach([&](std::size_t index, std::string_view ofLine) {
        const Kind kind = m_content->lines[index].kind;
        if ((kind == Kind::SET || kind == Kind::ENTRY) && isSameName(ofLine, set))
            place = index + 1;
    });
    return place;
}

} // namespace vx::util
