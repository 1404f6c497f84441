#include "vx/net/URI.h"

#include "vx/Exception.h"
#include "vx/net/detail/QueryTable.h"
#include "vx/net/detail/QueryText.h"
#include "vx/net/detail/TextWriter.h"
#include "vxsys/Number.h"
#include "vxsys/Text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace vx::net {

namespace {

using detail::find;
using detail::TextWriter;
using View = std::u16string_view;

constexpr std::size_t NOT_FOUND = View::npos;
constexpr const char16_t* UTF_8 = u"UTF-8";

/// The bytes of the encoding UTF-8, which takes a lone trailing surrogate as a character of three bytes.
std::string utf8Of(View text)
{
    constexpr std::size_t BYTES_PER_UNIT = 3; // at most
    std::string bytes(text.size() * BYTES_PER_UNIT, '\0');
    if (bytes.size() >= static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max()))
        throwBadAllocation();
    const auto size = static_cast<std::int32_t>(bytes.size() + 1); // with the terminator that a std::string has
    const std::int32_t written = String(text).getBytes(bytes.data(), size, UTF_8);
    bytes.resize(static_cast<std::size_t>(written - 1));
    return bytes;
}

/// Empty for a start behind its end.
View slice(View text, std::size_t start, std::size_t end)
{
    return start < end ? text.substr(start, end - start) : View();
}

constexpr bool isAscii(char16_t unit) noexcept
{
    return unit < 0x80;
}

/// For each byte a bit of each class that escapes it.
constexpr auto ESCAPED_IN = [] {
    constexpr std::string_view ALWAYS = "\"#%<>[\\]^`{|}";
    constexpr std::string_view OF_CLASS[] = {"/:;?@", "/;=?", "$&+,/:;=?@"};
    constexpr unsigned char ALL = 0xFF;
    std::array<unsigned char, 256> classes {};
    for (unsigned byte = 0; byte < classes.size(); ++byte) {
        const auto character = static_cast<char>(byte);
        if (byte <= ' ' || byte >= 0x7F || ALWAYS.find(character) != ALWAYS.npos)
            classes[byte] = ALL;
        for (unsigned part = 0; part < std::size(OF_CLASS); ++part) {
            if (OF_CLASS[part].find(character) != std::string_view::npos)
                classes[byte] = static_cast<unsigned char>(classes[byte] | 1U << part);
        }
    }
    return classes;
}();

/// Two digits, upper-case; for what is no ASCII they are those of the platform's number texts.
void appendEscape(std::u16string& escaped, unsigned char byte)
{
    constexpr char16_t DIGITS[] = u"0123456789ABCDEF";
    escaped += u'%';
    if (byte < 0x80) {
        escaped += DIGITS[byte >> 4];
        escaped += DIGITS[byte & 0xF];
    } else {
        char16_t digits[33];
        escaped += VXLToStrW(byte, digits, 16);
    }
}

} // namespace

QueryKey::QueryKey(const String& key)
    : String(key)
{
}

QueryKey::~QueryKey() noexcept = default;

int QueryKey::compareTo(const Object& other) const
{
    return lowerCase().compare(other.toString(), true);
}

bool QueryKey::equals(const Object& other) const
{
    return lowerCase().equals(other.toString(), true);
}

std::uint32_t QueryKey::hashCode() const
{
    return lowerCase().hashCode();
}

const String& QueryKey::lowerCase() const
{
    if (m_lowerCase.isEmpty() && !isEmpty()) {
        m_lowerCase = static_cast<const String&>(*this);
        m_lowerCase.toLower();
    }
    return m_lowerCase;
}

URI::URI() = default;

URI::URI(const String& text)
{
    // What `setUri` does, with the parts in a copy of the whole text.
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
    URI moved(std::move(other)); // which may be this one
    std::swap(m_parts, moved.m_parts);
    m_texts.swap(moved.m_texts);
    m_query.swap(moved.m_query);
    return *this;
}

URI::~URI() noexcept = default;

String URI::toString() const
{
    return TextWriter::write(roomToPrint(), [&](TextWriter& target) {
        if (hasScheme()) {
            target.append(m_parts.texts[SCHEME]);
            target.append(u':');
        }
        if (hasSchemeSpecificPart())
            appendSchemeSpecificPart(target, false);
    });
}

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

void URI::setScheme(const String& text)
{
    take(SCHEME, text.view(), false);
}

void URI::setUser(const String& text, bool escape)
{
    take(USER, text.view(), escape);
}

void URI::setPassword(const String& text, bool escape)
{
    take(PASSWORD, text.view(), escape);
}

void URI::setHost(const String& text, bool escape)
{
    take(HOST, text.view(), escape);
}

void URI::setPath(const String& text, bool escape)
{
    take(PATH, text.view(), escape);
}

void URI::setPort(int port)
{
    m_parts.port = port;
    m_parts.hasPort = true;
}

void URI::setQuery(const String& text, bool escape)
{
    detail::QueryReader each(text.view());
    if (m_query != nullptr && find(text.view(), u'&') == NOT_FOUND && each.next())
        takePair(each.key(), each.value(), escape); // needs no copy of the table to be undone
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
    return give(SCHEME, false);
}

String URI::getUser(bool unescape) const
{
    return give(USER, unescape);
}

String URI::getPassword(bool unescape) const
{
    return give(PASSWORD, unescape);
}

String URI::getHost(bool unescape) const
{
    return give(HOST, unescape);
}

String URI::getPath(bool unescape) const
{
    return give(PATH, unescape);
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
    return TextWriter::write(roomToPrint(), [&](TextWriter& target) { appendUserInfo(target, unescape); });
}

String URI::getAuthority(bool unescape) const
{
    if (!hasAuthority())
        throw Exception();
    return TextWriter::write(roomToPrint(), [&](TextWriter& target) { appendAuthority(target, unescape); });
}

String URI::getQuery(bool unescape) const
{
    return TextWriter::write(roomToPrint(), [&](TextWriter& target) { appendQuery(target, unescape); });
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
    return TextWriter::write(roomToPrint(), [&](TextWriter& target) { appendSchemeSpecificPart(target, unescape); });
}

String URI::getFragment() const
{
    return String();
}

bool URI::hasScheme() const
{
    return m_parts.has[SCHEME];
}

bool URI::hasUser() const
{
    return m_parts.has[USER];
}

bool URI::hasPassword() const
{
    return m_parts.has[PASSWORD];
}

bool URI::hasHost() const
{
    return m_parts.has[HOST];
}

bool URI::hasPath() const
{
    return m_parts.has[PATH];
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

void URI::removeUser()
{
    remove(USER);
}

void URI::removePassword()
{
    remove(PASSWORD);
}

void URI::removeHost()
{
    remove(HOST);
}

void URI::removePath()
{
    remove(PATH);
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
        readQuery()->clear(); // the buckets that many parameters need are there for later ones too
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

std::u16string URI::getEscapedString(View text, ESCAPE_PART part)
{
    const auto isKept = [&](char16_t unit) { return isAscii(unit) && (ESCAPED_IN[unit] & 1U << part) == 0; };
    std::u16string escaped;
    escaped.reserve(text.size());
    for (auto place = text.begin(); place != text.end();) {
        auto end = std::find_if_not(place, text.end(), isKept);
        escaped.append(place, end);
        for (; end != text.end() && isAscii(*end) && !isKept(*end); ++end)
            appendEscape(escaped, static_cast<unsigned char>(*end));
        place = std::find_if(end, text.end(), isAscii);
        if (place != end) {
            for (const char byte : utf8Of(View(end, place)))
                appendEscape(escaped, static_cast<unsigned char>(byte));
        }
    }
    return escaped;
}

String URI::getUnescapedString(View text)
{
    constexpr std::size_t DIGITS = 2;
    if (std::ranges::all_of(text, [](char16_t unit) { return isAscii(unit) && unit != u'%'; }))
        return String(text);
    std::string bytes = utf8Of(text);
    std::size_t end = 0;
    for (std::size_t index = 0; index < bytes.size(); ++index) {
        if (bytes[index] != '%') {
            bytes[end++] = bytes[index];
            continue;
        }
        if (bytes.size() - index <= DIGITS)
            throw Exception();
        const char16_t digits[DIGITS + 1]
            = {static_cast<unsigned char>(bytes[index + 1]), static_cast<unsigned char>(bytes[index + 2]), 0};
        bytes[end++] = static_cast<char>(VXStrToULW(digits, nullptr, 16) & 0xFF);
        index += DIGITS;
    }
    return String(bytes.data(), static_cast<int>(end), UTF_8);
}

void URI::Parts::set(Part part, View text)
{
    texts[part] = text;
    has[part] = true;
}

void URI::parseUri(View text, bool hasScheme, Parts& parts)
{
    const std::size_t colon = find(text, u':');
    if (colon == NOT_FOUND)
        return parseSchemeSpecificPart(text, hasScheme, parts);
    parts.set(SCHEME, text.substr(0, colon));
    parseSchemeSpecificPart(text.substr(colon + 1), true, parts);
}

void URI::parseSchemeSpecificPart(View text, bool hasScheme, Parts& parts)
{
    if (hasScheme && !text.starts_with(u'/'))
        return parts.set(OPAQUE_PART, text);
    std::size_t query = NOT_FOUND;
    std::size_t start = NOT_FOUND; // of the slash in front of the path
    if (text.starts_with(u"//")) {
        constexpr std::size_t AUTHORITY = 2;
        query = find(text, u'?', AUTHORITY);
        start = find(text, u'/', AUTHORITY);
        if (start == NOT_FOUND)
            start = std::min(query, text.size());
        parseAuthority(slice(text, AUTHORITY, start), parts);
    } else {
        query = find(text, u'?');
        start = text.starts_with(u'/') ? 0 : NOT_FOUND;
    }

    std::size_t end = start;
    if (query != 0 && start != text.size() && (query == NOT_FOUND || start != query)) {
        end = std::min(query, text.size());
        parts.set(PATH, slice(text, start + 1, end));
    }
    if (query != NOT_FOUND)
        parts.set(QUERY, text.substr(end + 1));
}

void URI::parseAuthority(View text, Parts& parts)
{
    if (const std::size_t at = find(text, u'@'); at != NOT_FOUND) {
        parseUserInfo(text.substr(0, at), parts);
        text.remove_prefix(at + 1);
    }
    if (const std::size_t colon = find(text, u':'); colon != NOT_FOUND) {
        parts.port = VXStrToIW(std::u16string(text.substr(colon + 1)).c_str());
        parts.hasPort = true;
        text = text.substr(0, colon);
    }
    if (!text.empty())
        parts.set(HOST, text);
}

void URI::parseUserInfo(View text, Parts& parts)
{
    const std::size_t colon = find(text, u':');
    parts.set(USER, text.substr(0, colon));
    if (colon != NOT_FOUND)
        parts.set(PASSWORD, text.substr(colon + 1));
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

String URI::give(Part part, bool unescape) const
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
    constexpr std::size_t SHORT = 1024; // a longer text is looked through once
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

std::size_t URI::roomToPrint() const
{
    constexpr std::size_t SIGNS = 20; // and the port
    std::size_t room = SIGNS;
    for (const View text : m_parts.texts)
        room += text.size();
    return room;
}

void URI::append(TextWriter& target, View stored, bool unescape)
{
    if (unescape)
        target.append(getUnescapedString(stored));
    else
        target.append(stored);
}

void URI::appendUserInfo(TextWriter& target, bool unescape) const
{
    append(target, m_parts.texts[USER], unescape);
    if (hasPassword()) {
        target.append(u':');
        target.append(m_parts.texts[PASSWORD]);
    }
}

void URI::appendAuthority(TextWriter& target, bool unescape) const
{
    if (hasUser()) {
        appendUserInfo(target, unescape);
        target.append(u'@');
    }
    if (hasHost())
        append(target, m_parts.texts[HOST], unescape);
    if (hasPort()) {
        char16_t digits[33];
        target.append(u':');
        target.append(VXLToStrW(m_parts.port, digits, 10));
    }
}

void URI::appendQuery(TextWriter& target, bool unescape) const
{
    bool isFirst = true;
    const auto appendPair = [&](View key, View value) {
        if (!std::exchange(isFirst, false))
            target.append(u'&');
        target.append(key);
        target.append(u'=');
        append(target, value, unescape);
    };
    detail::ShortQuery few;
    if (m_query == nullptr && few.read(m_parts.texts[QUERY]))
        few.forEach(appendPair);
    else if (detail::QueryTable* query = readQuery())
        query->forEach(appendPair);
}

void URI::appendSchemeSpecificPart(TextWriter& target, bool unescape) const
{
    if (isOpaque()) {
        target.append(m_parts.texts[OPAQUE_PART]);
        return;
    }
    if (hasAuthority()) {
        target.append(u"//");
        appendAuthority(target, unescape);
    }
    if (hasPath()) {
        target.append(u'/');
        append(target, m_parts.texts[PATH], unescape);
    }
    if (hasQuery()) {
        target.append(u'?');
        appendQuery(target, unescape);
    }
}

} // namespace vx::net
