#include "vx/net/URI.h"

#include "vx/Exception.h"
#include "vx/detail/TextBuilder.h"
#include "vx/net/detail/QueryTable.h"
#include "vx/net/detail/QueryText.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace vx::net {

namespace {

using vx::detail::builtText;
using vx::detail::TextBuilder;
using View = std::u16string_view;

} // namespace

URI::URI() = default;

URI::URI(const String& text)
{
    // Does what `setUri` does, but copies the whole text at once and keeps the parts in it.
    const View given = text.view();
    m_texts = std::make_unique_for_overwrite<char16_t[]>(given.size());
    std::copy(given.begin(), given.end(), m_texts.get());
    parseUri(View(m_texts.get(), given.size()), false, m_parts);
}

URI::URI(const URI& other)
    : Object(other)
    , m_query(other.m_query != nullptr ? std::make_unique<detail::QueryTable>(*other.m_query) : nullptr)
{
    store(other.m_parts);
}

URI::URI(URI&& other) noexcept
    : m_parts(std::exchange(other.m_parts, Parts()))
    , m_texts(std::move(other.m_texts))
    , m_query(std::move(other.m_query))
{
}

URI& URI::operator=(const URI& other)
{
    return *this = URI(other);
}

URI& URI::operator=(URI&& other) noexcept
{
    URI moved(std::move(other)); // which may be this object
    std::swap(m_parts, moved.m_parts);
    m_texts.swap(moved.m_texts);
    m_query.swap(moved.m_query);
    return *this;
}

URI::~URI() noexcept = default;

void URI::setUri(const String& text, bool escape)
{
    Parts parts;
    parseUri(text.view(), hasScheme(), parts);
    take(parts, escape);
}

void URI::setSchemeSpecificPart(const String& text, bool escape)
{
    Parts parts;
    parseSchemeSpecificPart(text.view(), hasScheme(), parts);
    take(parts, escape);
}

void URI::setAuthority(const String& text, bool escape)
{
    Parts parts;
    parseAuthority(text.view(), parts);
    take(parts, escape);
}

void URI::setUserInfo(const String& text, bool escape)
{
    Parts parts;
    parseUserInfo(text.view(), parts);
    take(parts, escape);
}

// The operations of the parts that are written and read alike.
#define VX_URI_PART(Name, PART)                                                                                        \
    void URI::set##Name(const String& text, bool escape)                                                               \
    {                                                                                                                  \
        take(PART, text.view(), escape);                                                                               \
    }                                                                                                                  \
                                                                                                                       \
    String URI::get##Name(bool unescape) const                                                                         \
    {                                                                                                                  \
        return textOf(PART, unescape);                                                                                 \
    }                                                                                                                  \
                                                                                                                       \
    bool URI::has##Name() const                                                                                        \
    {                                                                                                                  \
        return m_parts.has[PART];                                                                                      \
    }                                                                                                                  \
                                                                                                                       \
    void URI::remove##Name()                                                                                           \
    {                                                                                                                  \
        remove(PART);                                                                                                  \
    }

VX_URI_PART(User, USER)
VX_URI_PART(Password, PASSWORD)
VX_URI_PART(Host, HOST)
VX_URI_PART(Path, PATH)

void URI::setScheme(const String& text)
{
    take(SCHEME, text.view(), false);
}

void URI::setPort(int port)
{
    m_parts.port = port;
    m_parts.hasPort = true;
}

void URI::setQuery(const String& text, bool escape)
{
    detail::QueryReader each(text.view());
    if (m_query != nullptr && detail::find(text.view(), u'&') == View::npos && each.next())
        takePair(each.key(), each.value(), escape); // a failure leaves the table as it was, so no copy is needed
    else
        take(QUERY, text.view(), escape);
}

void URI::setQueryPair(const String& key, const String& value, bool escape)
{
    takePair(key.view(), value.view(), escape);
}

void URI::setFragment(const String&) { }

String URI::getScheme() const
{
    return textOf(SCHEME, false);
}

int URI::getPort() const
{
    if (!hasPort())
        throw Exception();
    return m_parts.port;
}

String URI::getUserInfo(bool unescape) const
{
    if (!hasUser())
        throw Exception();
    return builtText([&](TextBuilder& target) { appendUserInfo(target, unescape); });
}

String URI::getAuthority(bool unescape) const
{
    if (!hasAuthority())
        throw Exception();
    return builtText([&](TextBuilder& target) { appendAuthority(target, unescape); });
}

String URI::getQuery(bool unescape) const
{
    return builtText([&](TextBuilder& target) { appendQuery(target, unescape); });
}

String URI::getQueryValue(const String& key, bool unescape) const
{
    const std::optional<View> value = valueOf(key);
    if (!value)
        throw Exception();
    return unescape ? getUnescapedString(*value) : String(*value);
}

String URI::getSchemeSpecificPart(bool unescape) const
{
    return builtText([&](TextBuilder& target) { appendSchemeSpecificPart(target, unescape); });
}

String URI::getFragment() const
{
    return String();
}

bool URI::hasScheme() const
{
    return m_parts.has[SCHEME];
}

bool URI::hasPort() const
{
    return m_parts.hasPort;
}

bool URI::hasQuery() const
{
    return m_parts.has[QUERY];
}

bool URI::hasUserInfo() const
{
    return m_parts.has[USER];
}

bool URI::hasAuthority() const
{
    return hasHost() || hasUser();
}

bool URI::hasSchemeSpecificPart() const
{
    return hasAuthority() || hasPath() || hasQuery() || isOpaque();
}

bool URI::hasQueryValue(const String& key) const
{
    return valueOf(key).has_value();
}

bool URI::hasFragment() const
{
    return false;
}

bool URI::isOpaque() const
{
    return m_parts.has[OPAQUE_PART];
}

void URI::removeScheme()
{
    remove(SCHEME);
}

void URI::removePort()
{
    m_parts.port = -1;
    m_parts.hasPort = false;
}

void URI::removeUserInfo()
{
    removeUser();
    removePassword();
}

void URI::removeAuthority()
{
    removeUserInfo();
    removeHost();
    removePort();
}

void URI::removeQuery()
{
    if (m_query != nullptr || !detail::ShortQuery().read(m_parts.texts[QUERY]))
        readQuery()->clear(); // keeps the capacity, which decides the order of later parameters
    remove(QUERY);
}

void URI::removeQueryPair(const String& key)
{
    detail::QueryTable* query = readQuery();
    if (query != nullptr)
        query->remove(key);
    if (query == nullptr || query->isEmpty())
        m_parts.has[QUERY] = false;
}

void URI::removeSchemeSpecificPart()
{
    removeAuthority();
    removePath();
    removeQuery();
}

void URI::removeAll()
{
    removeScheme();
    removeSchemeSpecificPart();
}

void URI::take(Parts given, bool escape)
{
    std::unique_ptr<detail::QueryTable> query;
    if (given.has[QUERY] && (escape || m_query != nullptr || !m_parts.texts[QUERY].empty())) {
        const detail::QueryTable* held = readQuery();
        query = held != nullptr ? std::make_unique<detail::QueryTable>(*held) : std::make_unique<detail::QueryTable>();
        for (detail::QueryReader each(given.texts[QUERY]); each.next();)
            put(*query, each.key(), each.value(), escape);
        given.texts[QUERY] = m_parts.texts[QUERY];
    }
    std::array<std::u16string, PATH + 1> escaped;
    for (const Part part : {USER, PASSWORD, HOST, PATH}) {
        if (escape && given.has[part]) {
            escaped[part] = getEscapedString(given.texts[part], part == PATH ? ESCAPE_PATH : ESCAPE_AUTHORITY);
            given.texts[part] = escaped[part];
        }
    }
    store(given);
    if (query != nullptr)
        m_query = std::move(query);
}

void URI::take(Part part, View text, bool escape)
{
    Parts parts;
    parts.set(part, text);
    take(parts, escape);
}

void URI::takePair(View key, View value, bool escape)
{
    if (readQuery() == nullptr)
        m_query = std::make_unique<detail::QueryTable>();
    put(*m_query, key, value, escape);
    m_parts.has[QUERY] = true;
}

void URI::put(detail::QueryTable& query, View key, View value, bool escape)
{
    const auto stored = [&](View text) { return escape ? String(getEscapedString(text, ESCAPE_QUERY)) : String(text); };
    const String storedKey = stored(key);
    query.put(storedKey, stored(value));
}

void URI::store(const Parts& given)
{
    Parts parts = given;
    std::size_t size = 0;
    for (std::size_t part = 0; part < parts.texts.size(); ++part) {
        if (!given.has[part])
            parts.texts[part] = m_parts.texts[part];
        parts.has[part] = given.has[part] || m_parts.has[part];
        size += parts.texts[part].size();
    }
    if (!given.hasPort) {
        parts.port = m_parts.port;
        parts.hasPort = m_parts.hasPort;
    }

    auto texts = std::make_unique_for_overwrite<char16_t[]>(size);
    char16_t* end = texts.get();
    for (View& text : parts.texts) {
        char16_t* begin = std::exchange(end, std::copy(text.begin(), text.end(), end));
        text = View(begin, text.size());
    }
    m_parts = parts;
    m_texts = std::move(texts);
}

String URI::textOf(Part part, bool unescape) const
{
    if (!m_parts.has[part])
        throw Exception();
    const View text = m_parts.texts[part];
    return unescape ? getUnescapedString(text) : String(text);
}

void URI::remove(Part part)
{
    m_parts.texts[part] = View();
    m_parts.has[part] = false;
}

std::optional<View> URI::valueOf(const String& key) const
{
    constexpr std::size_t SHORT = 1024; // a longer text is parsed into a table
    const View text = m_parts.texts[QUERY];
    if (detail::ShortQuery few; m_query == nullptr && text.size() <= SHORT && few.read(text))
        return few.get(key.view());
    const String* value = readQuery()->get(key);
    return value != nullptr ? std::optional(value->view()) : std::nullopt;
}

detail::QueryTable* URI::readQuery() const
{
    if (m_query == nullptr && !m_parts.texts[QUERY].empty()) {
        auto query = std::make_unique<detail::QueryTable>();
        for (detail::QueryReader each(m_parts.texts[QUERY]); each.next();)
            query->put(String(each.key()), String(each.value()));
        m_query = std::move(query);
    }
    return m_query.get();
}

} // namespace vx::net
