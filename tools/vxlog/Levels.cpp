#include "Levels.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <iterator>
#include <string_view>

namespace vxlog {

namespace {

constexpr std::string_view PREFIX = "prefix";
constexpr std::string_view JSON = "json:";

/// The names that services use, and the levels that the system's journal gives them.
struct LevelName {
    std::string_view name;
    int level;
};
constexpr LevelName NAMES[]
    = {{"emerg", 0}, {"emergency", 0}, {"panic", 0}, {"alert", 1}, {"crit", 2}, {"critical", 2}, {"fatal", 2},
        {"err", 3}, {"error", 3}, {"warn", 4}, {"warning", 4}, {"notice", 5}, {"info", 6}, {"debug", 7}, {"trace", 7}};

std::optional<int> levelNamed(std::u16string_view text)
{
    std::string name;
    for (const char16_t unit : text)
        name += unit < 0x80 ? static_cast<char>(std::tolower(static_cast<int>(unit))) : '?';
    int level = 0;
    const auto [stop, error] = std::from_chars(name.data(), name.data() + name.size(), level);
    if (error == std::errc() && stop == name.data() + name.size())
        return level;
    const auto row = std::ranges::find(NAMES, name, &LevelName::name);
    return row != std::end(NAMES) ? std::optional(row->level) : std::nullopt;
}

/// Reads the first level of an object of JSON. It need not find every fault: a line that is no JSON is logged as well.
class Members {
public:
    explicit Members(std::u16string_view text)
        : m_rest(text)
    {
    }

    /// The value of a member as text; of a string what is between its quotes.
    std::optional<std::u16string_view> find(std::u16string_view name)
    {
        if (!take(u'{'))
            return std::nullopt;
        do {
            const std::optional<std::u16string_view> found = string();
            if (!found || !take(u':'))
                return std::nullopt;
            const std::optional<std::u16string_view> value = this->value();
            if (!value || *found == name)
                return value;
        } while (take(u','));
        return std::nullopt;
    }

private:
    void skipBlanks() { m_rest.remove_prefix(std::min(m_rest.find_first_not_of(u" \t\r\n"), m_rest.size())); }

    bool take(char16_t unit)
    {
        skipBlanks();
        const bool isThere = m_rest.starts_with(unit);
        m_rest.remove_prefix(isThere ? 1 : 0);
        return isThere;
    }

    std::optional<std::u16string_view> string()
    {
        if (!take(u'"'))
            return std::nullopt;
        for (std::size_t index = 0; index < m_rest.size(); ++index) {
            if (m_rest[index] == u'\\') {
                ++index;
            } else if (m_rest[index] == u'"') {
                const std::u16string_view text = m_rest.substr(0, index);
                m_rest.remove_prefix(index + 1);
                return text;
            }
        }
        return std::nullopt;
    }

    std::optional<std::u16string_view> value()
    {
        skipBlanks();
        if (m_rest.starts_with(u'"'))
            return string();
        const std::u16string_view start = m_rest;
        for (int depth = 0; !m_rest.empty();) {
            const char16_t unit = m_rest.front();
            const bool isClosing = unit == u'}' || unit == u']';
            if (depth == 0 && (isClosing || unit == u','))
                break;
            if (unit == u'"') {
                if (!string())
                    return std::nullopt;
                continue;
            }
            depth += unit == u'{' || unit == u'[' ? 1 : isClosing ? -1 : 0;
            m_rest.remove_prefix(1);
        }
        const std::u16string_view value = start.substr(0, start.size() - m_rest.size());
        return value.substr(0, value.find_last_not_of(u" \t\r\n") + 1);
    }

    std::u16string_view m_rest;
};

} // namespace

Levels::Levels(const std::string& form, int otherwise)
    : m_hasPrefix(form == PREFIX)
    , m_otherwise(otherwise)
{
    if (form.starts_with(JSON))
        m_field = std::u16string(vx::String(form.substr(JSON.size())).view());
}

bool Levels::isForm(const std::string& form)
{
    return form == PREFIX || (form.starts_with(JSON) && form.size() > JSON.size());
}

int Levels::takeFrom(vx::String& line) const
{
    const std::u16string_view text = line.view();
    if (m_field) {
        const std::optional<std::u16string_view> value = Members(text).find(*m_field);
        return value ? levelNamed(*value).value_or(m_otherwise) : m_otherwise;
    }
    constexpr std::size_t LENGTH = 3; // "<3>"
    const bool isThere = m_hasPrefix && text.size() >= LENGTH && text[0] == u'<' && text[1] >= u'0' && text[1] <= u'7'
        && text[2] == u'>';
    if (!isThere)
        return m_otherwise;
    const int level = text[1] - u'0';
    line = vx::String(std::u16string(text.substr(LENGTH)));
    return level;
}

} // namespace vxlog
