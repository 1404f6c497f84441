#include "vx/net/URI.h"

#include "vx/Exception.h"
#include "vx/detail/TextHash.h"
#include "vx/detail/TextScan.h"
#include "vx/net/detail/QueryTable.h"
#include "vxsys/Number.h"
#include "vxsys/Text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory_resource>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace vx::net {

namespace {

using View = std::u16string_view;

constexpr int NOT_FOUND = -1;

int indexOf(View text, char16_t unit, int from = 0)
{
    const int found = vx::detail::findUnit(text.data() + from, static_cast<int>(text.size()) - from, unit);
    return found != NOT_FOUND ? from + found : NOT_FOUND;
}

/// From `start` to `end` or, where that is -1, to the end of the text; empty for a start behind its end.
View slice(View text, int start, int end = -1)
{
    const std::size_t last = std::min(static_cast<std::size_t>(end), text.size());
    const std::size_t first = std::min(static_cast<std::size_t>(start), last);
    return text.substr(first, last - first);
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

String stringOf(View text)
{
    return String(text);
}

/// Room for a text that is put together, on the stack where it is none of the long ones.
class Room {
public:
    std::pmr::memory_resource* get() noexcept { return &m_resource; }

private:
    std::array<std::byte, 512> m_bytes;
    std::pmr::monotonic_buffer_resource m_resource {m_bytes.data(), m_bytes.size()};
};

/// Calls `take(key, value)` for each piece of a query. One without "=" is both.
template <class Take>
void forEachPair(View text, Take take)
{
    for (int end = 0; end != NOT_FOUND; text = slice(text, end + 1)) {
        end = indexOf(text, u'&');
        const View piece = slice(text, 0, end);
        const int sign = indexOf(piece, u'=');
        take(slice(piece, 0, sign), sign != NOT_FOUND ? slice(piece, sign + 1) : piece);
    }
}

constexpr std::size_t ROOM_FOR_SIGNS = 20; ///< and for the port

/// Few parameters in the order in which their table walks: from the last bucket down, the newest of a bucket first.
class PairOrder {
public:
    /// False where the table might have grown, and for a key whose hash only the table knows.
    bool add(View key, View value)
    {
        if (key.find(u'\0') != View::npos)
            return false;
        const std::uint32_t hash = vx::detail::hashText(key.data(), static_cast<int>(key.size()), true);
        for (Pair& pair : std::span(m_pairs).first(m_count)) {
            if (pair.hash == hash && isSame(pair.key, key)) {
                pair.value = value;
                return true;
            }
        }
        if (m_count == m_pairs.size())
            return false;
        m_pairs[m_count++] = {key, value, hash};
        return true;
    }

    void append(std::pmr::u16string& target)
    {
        const std::span<Pair> pairs = std::span(m_pairs).first(m_count);
        for (auto place = pairs.begin(); place != pairs.end(); ++place) {
            const auto later = std::find_if(
                pairs.begin(), place, [&](const Pair& pair) { return pair.bucket() <= place->bucket(); });
            std::rotate(later, place, place + 1);
        }
        for (const Pair& pair : pairs) {
            if (&pair != pairs.data())
                target += u'&';
            target.append(pair.key).append(1, u'=').append(pair.value);
        }
    }

private:
    struct Pair {
        View key;
        View value;
        std::uint32_t hash = 0;

        std::uint32_t bucket() const noexcept
        {
            return hash % static_cast<std::uint32_t>(detail::QueryTable::FIRST_BUCKETS);
        }
    };

    static bool isSame(View left, View right)
    {
        return left.size() == right.size()
            && VXStrNICmpW(left.data(), right.data(), static_cast<std::int32_t>(left.size())) == 0;
    }

    static constexpr std::size_t MOST = 16;
    static_assert(MOST < detail::QueryTable::thresholdOf(detail::QueryTable::FIRST_BUCKETS));

    std::array<Pair, MOST> m_pairs;
    std::size_t m_count = 0;
};

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
    setUri(text, false);
}

URI::~URI() noexcept = default;

String URI::toString() const
{
    Room room;
    Text text(room.get());
    text.reserve(m_scheme.size() + m_user.size() + m_password.size() + m_host.size() + m_path.size()
        + m_opaquePart.size() + m_unreadQuery.size() + ROOM_FOR_SIGNS);
    if (m_hasScheme) {
        text += m_scheme;
        text += u':';
    }
    if (hasSchemeSpecificPart())
        appendSchemeSpecificPart(text, false);
    return stringOf(text);
}

void URI::setUri(const String& text, bool escape)
{
    const View all = text.view();
    const int colon = indexOf(all, u':');
    if (colon != NOT_FOUND) {
        m_scheme = slice(all, 0, colon);
        m_hasScheme = true;
    }
    parseSchemeSpecificPart(slice(all, colon + 1), escape);
}

void URI::setSchemeSpecificPart(const String& text, bool escape)
{
    parseSchemeSpecificPart(text.view(), escape);
}

void URI::setAuthority(const String& text, bool escape)
{
    parseAuthority(text.view(), escape);
}

void URI::setUserInfo(const String& text, bool escape)
{
    parseUserInfo(text.view(), escape);
}

void URI::setScheme(const String& text)
{
    m_scheme = text.view();
    m_hasScheme = true;
}

void URI::setUser(const String& text, bool escape)
{
    storeUser(text.view(), escape);
}

void URI::setPassword(const String& text, bool escape)
{
    storePassword(text.view(), escape);
}

void URI::setHost(const String& text, bool escape)
{
    storeHost(text.view(), escape);
}

void URI::setPath(const String& text, bool escape)
{
    storePath(text.view(), escape);
}

void URI::setPort(int port)
{
    m_port = port;
    m_hasPort = true;
}

void URI::setQuery(const String& text, bool escape)
{
    parseQuery(text.view(), escape);
}

void URI::setQueryPair(const String& key, const String& value, bool escape)
{
    storeQueryPair(key.view(), value.view(), escape);
}

void URI::setFragment(const String&) { }

String URI::getScheme() const
{
    return stringOf(give(m_scheme, m_hasScheme, false));
}

String URI::getUser(bool unescape) const
{
    return stringOf(give(m_user, m_hasUser, unescape));
}

String URI::getPassword(bool unescape) const
{
    return stringOf(give(m_password, m_hasPassword, unescape));
}

String URI::getHost(bool unescape) const
{
    return stringOf(give(m_host, m_hasHost, unescape));
}

String URI::getPath(bool unescape) const
{
    return stringOf(give(m_path, m_hasPath, unescape));
}

int URI::getPort() const
{
    if (!m_hasPort)
        throw Exception();
    return m_port;
}

String URI::getUserInfo(bool unescape) const
{
    if (!m_hasUser)
        throw Exception();
    Room room;
    Text text(room.get());
    appendUserInfo(text, unescape);
    return stringOf(text);
}

String URI::getAuthority(bool unescape) const
{
    if (!hasAuthority())
        throw Exception();
    Room room;
    Text text(room.get());
    appendAuthority(text, unescape);
    return stringOf(text);
}

String URI::getQuery(bool unescape) const
{
    Room room;
    Text text(room.get());
    appendQuery(text, unescape);
    return stringOf(text);
}

String URI::getQueryValue(const String& key, bool unescape) const
{
    const detail::QueryTable* query = readQuery();
    const String* value = query != nullptr ? query->get(QueryKey(key)) : nullptr;
    if (value == nullptr)
        throw Exception();
    return stringOf(give(value->view(), true, unescape));
}

String URI::getSchemeSpecificPart(bool unescape) const
{
    Room room;
    Text text(room.get());
    appendSchemeSpecificPart(text, unescape);
    return stringOf(text);
}

String URI::getFragment() const
{
    return String();
}

bool URI::hasScheme() const
{
    return m_hasScheme;
}

bool URI::hasUser() const
{
    return m_hasUser;
}

bool URI::hasPassword() const
{
    return m_hasPassword;
}

bool URI::hasHost() const
{
    return m_hasHost;
}

bool URI::hasPath() const
{
    return m_hasPath;
}

bool URI::hasPort() const
{
    return m_hasPort;
}

bool URI::hasQuery() const
{
    return m_hasQuery;
}

bool URI::hasUserInfo() const
{
    return m_hasUser;
}

bool URI::hasAuthority() const
{
    return m_hasHost || m_hasUser;
}

bool URI::hasSchemeSpecificPart() const
{
    return m_hasHost || m_hasUser || m_hasPath || m_hasQuery || m_isOpaque;
}

bool URI::hasQueryValue(const String& key) const
{
    const detail::QueryTable* query = readQuery();
    return query != nullptr && query->get(QueryKey(key)) != nullptr;
}

bool URI::hasFragment() const
{
    return false;
}

bool URI::isOpaque() const
{
    return m_isOpaque;
}

void URI::removeScheme()
{
    m_scheme.clear();
    m_hasScheme = false;
}

void URI::removeUser()
{
    m_user.clear();
    m_hasUser = false;
}

void URI::removePassword()
{
    m_password.clear();
    m_hasPassword = false;
}

void URI::removeHost()
{
    m_host.clear();
    m_hasHost = false;
}

void URI::removePath()
{
    m_path.clear();
    m_hasPath = false;
}

void URI::removePort()
{
    m_port = -1;
    m_hasPort = false;
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
    if (detail::QueryTable* query = readQuery())
        query->clear(); // the buckets that many parameters need are there for later ones too
    m_hasQuery = false;
}

void URI::removeQueryPair(const String& key)
{
    detail::QueryTable* query = readQuery();
    if (query != nullptr)
        query->remove(QueryKey(key));
    if (query == nullptr || query->isEmpty())
        m_hasQuery = false;
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
    const std::string bytes = String(text).toUtf8();
    std::u16string escaped;
    escaped.reserve(bytes.size());
    for (const char character : bytes) {
        const auto byte = static_cast<unsigned char>(character);
        if ((ESCAPED_IN[byte] & 1U << part) != 0)
            appendEscape(escaped, byte);
        else
            escaped += static_cast<char16_t>(byte);
    }
    return escaped;
}

std::u16string URI::getUnescapedString(View text)
{
    constexpr std::size_t DIGITS = 2;
    if (indexOf(text, u'%') == NOT_FOUND)
        return std::u16string(text);
    const std::string bytes = String(text).toUtf8();
    std::string unescaped;
    unescaped.reserve(bytes.size());
    for (std::size_t index = 0; index < bytes.size(); ++index) {
        if (bytes[index] != '%') {
            unescaped += bytes[index];
            continue;
        }
        if (bytes.size() - index <= DIGITS)
            throw Exception();
        const char16_t digits[DIGITS + 1]
            = {static_cast<unsigned char>(bytes[index + 1]), static_cast<unsigned char>(bytes[index + 2]), 0};
        unescaped += static_cast<char>(VXStrToULW(digits, nullptr, 16) & 0xFF);
        index += DIGITS;
    }
    return std::u16string(String(std::string_view(unescaped)).view());
}

std::u16string URI::take(View text, bool escape, ESCAPE_PART part)
{
    return escape ? getEscapedString(text, part) : std::u16string(text);
}

std::u16string URI::give(View stored, bool isPresent, bool unescape)
{
    if (!isPresent)
        throw Exception();
    return unescape ? getUnescapedString(stored) : std::u16string(stored);
}

void URI::parseSchemeSpecificPart(View text, bool escape)
{
    if (m_hasScheme && !text.starts_with(u'/')) {
        m_isOpaque = true;
        m_opaquePart = text;
        return;
    }
    const int length = static_cast<int>(text.size());
    int query = NOT_FOUND;
    int start = NOT_FOUND; // of the slash in front of the path
    if (text.starts_with(u"//")) {
        constexpr int AUTHORITY = 2;
        query = indexOf(text, u'?', AUTHORITY);
        start = indexOf(text, u'/', AUTHORITY);
        if (start == NOT_FOUND)
            start = query != NOT_FOUND ? query : length;
        parseAuthority(slice(text, AUTHORITY, start), escape);
    } else {
        query = indexOf(text, u'?');
        start = text.starts_with(u'/') ? 0 : NOT_FOUND;
    }

    int end = start;
    if (query != 0 && start != length && (query == NOT_FOUND || start != query)) {
        end = query != NOT_FOUND ? query : length;
        storePath(slice(text, start + 1, end), escape);
    }
    if (query != NOT_FOUND)
        parseQuery(slice(text, end + 1), escape);
}

void URI::parseAuthority(View text, bool escape)
{
    if (const int at = indexOf(text, u'@'); at != NOT_FOUND) {
        parseUserInfo(slice(text, 0, at), escape);
        text = slice(text, at + 1);
    }
    if (const int colon = indexOf(text, u':'); colon != NOT_FOUND) {
        setPort(VXStrToIW(std::u16string(slice(text, colon + 1)).c_str()));
        text = slice(text, 0, colon);
    }
    if (!text.empty())
        storeHost(text, escape);
}

void URI::parseUserInfo(View text, bool escape)
{
    const int colon = indexOf(text, u':');
    storeUser(slice(text, 0, colon), escape);
    if (colon != NOT_FOUND)
        storePassword(slice(text, colon + 1), escape);
}

void URI::parseQuery(View text, bool escape)
{
    if (!text.empty() && !escape && m_query == nullptr) {
        if (!m_unreadQuery.empty())
            m_unreadQuery += u'&';
        m_unreadQuery += text;
    } else if (!text.empty()) {
        forEachPair(text, [&](View key, View value) { storeQueryPair(key, value, escape); });
    }
    m_hasQuery = true;
}

void URI::storeUser(View text, bool escape)
{
    m_user = take(text, escape, ESCAPE_AUTHORITY);
    m_hasUser = true;
}

void URI::storePassword(View text, bool escape)
{
    m_password = take(text, escape, ESCAPE_AUTHORITY);
    m_hasPassword = true;
}

void URI::storeHost(View text, bool escape)
{
    m_host = take(text, escape, ESCAPE_AUTHORITY);
    m_hasHost = true;
}

void URI::storePath(View text, bool escape)
{
    m_path = take(text, escape, ESCAPE_PATH);
    m_hasPath = true;
}

void URI::storeQueryPair(View key, View value, bool escape)
{
    readQuery();
    if (m_query == nullptr)
        m_query = std::make_unique<detail::QueryTable>();
    const QueryKey storedKey(stringOf(take(key, escape, ESCAPE_QUERY)));
    m_query->put(storedKey, stringOf(take(value, escape, ESCAPE_QUERY)));
    m_hasQuery = true;
}

detail::QueryTable* URI::readQuery() const
{
    if (!m_unreadQuery.empty()) {
        auto query = std::make_unique<detail::QueryTable>();
        forEachPair(m_unreadQuery, [&](View key, View value) { query->put(QueryKey(String(key)), String(value)); });
        m_query = std::move(query);
        m_unreadQuery.clear();
    }
    return m_query.get();
}

void URI::appendPart(Text& target, View stored, bool unescape)
{
    if (unescape)
        target += getUnescapedString(stored);
    else
        target += stored;
}

void URI::appendUserInfo(Text& target, bool unescape) const
{
    appendPart(target, m_user, unescape);
    if (m_hasPassword) {
        target += u':';
        target += m_password;
    }
}

void URI::appendAuthority(Text& target, bool unescape) const
{
    if (m_hasUser) {
        appendUserInfo(target, unescape);
        target += u'@';
    }
    if (m_hasHost)
        appendPart(target, m_host, unescape);
    if (m_hasPort) {
        char16_t digits[33];
        target += u':';
        target += VXLToStrW(m_port, digits, 10);
    }
}

void URI::appendQuery(Text& target, bool unescape) const
{
    if (!unescape && appendUnreadQuery(target))
        return;
    detail::QueryTable* query = readQuery();
    if (query == nullptr)
        return;
    bool isFirst = true;
    query->forEach([&](View key, View value) {
        if (!std::exchange(isFirst, false))
            target += u'&';
        target.append(key).append(1, u'=');
        appendPart(target, value, unescape);
    });
}

bool URI::appendUnreadQuery(Text& target) const
{
    if (m_unreadQuery.empty())
        return false;
    PairOrder order;
    bool isWhole = true;
    forEachPair(m_unreadQuery, [&](View key, View value) { isWhole = isWhole && order.add(key, value); });
    if (isWhole)
        order.append(target);
    return isWhole;
}

void URI::appendSchemeSpecificPart(Text& target, bool unescape) const
{
    if (m_isOpaque) {
        target += m_opaquePart;
        return;
    }
    if (hasAuthority()) {
        target += u"//";
        appendAuthority(target, unescape);
    }
    if (m_hasPath) {
        target += u'/';
        appendPart(target, m_path, unescape);
    }
    if (m_hasQuery) {
        target += u'?';
        appendQuery(target, unescape);
    }
}

} // namespace vx::net
