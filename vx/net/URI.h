#pragma once

#include "vx/String.h"
#include "vx/net/QueryKey.h"

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace vx::net {

namespace detail {
class QueryTable;
class TextWriter;
} // namespace detail

/// The parts of one URI (RFC 3986) in their escaped form: scheme, user, password, host, port, path and query. A container
/// and no validator: any text is taken apart, and each part can be set, read and removed alone. A part may be present and
/// empty.
///
/// A setter is told whether its text is still to be escaped, a getter whether to unescape; both work on the UTF-8 bytes, and
/// text that has none there or is none throws InvalidCharacterException. A setter that throws changes nothing. The getter of a part that is not there throws a
/// bare Exception, and so does unescaping an escape that is cut short. Query parameters are found in any case of letters,
/// and printed in the order of a hash map. Fragments are not known: a "#" is a character like others. One thread at a time,
/// also for the constant operations.
class VX_API URI : public Object {
public:
    URI();
    URI(const String& text);
    /// A copy shares nothing with the other. What is moved from has no parts.
    URI(const URI& other);
    URI(URI&& other) noexcept;
    URI& operator=(const URI& other);
    URI& operator=(URI&& other) noexcept;
    ~URI() noexcept override;

    // Object
    String toString() const override;

    /// The text before the first ":" is the scheme. Behind a scheme, what does not begin with "/" is opaque: one part.
    void setUri(const String& text, bool escape);
    void setSchemeSpecificPart(const String& text, bool escape);
    /// "user:password@host:port". A port that is no number is 0.
    void setAuthority(const String& text, bool escape);
    void setUserInfo(const String& text, bool escape);
    void setScheme(const String& text);
    void setUser(const String& text, bool escape);
    void setPassword(const String& text, bool escape);
    void setHost(const String& text, bool escape);
    /// Without the slash between authority and path. To be escaped, it is one segment: slashes are escaped too.
    void setPath(const String& text, bool escape);
    void setPort(int port);
    /// Adds the parameters of "key=value&key=value" to those that are there. One without "=" is its own value.
    void setQuery(const String& text, bool escape);
    /// Replaces the value of a key that is there.
    void setQueryPair(const String& key, const String& value, bool escape);
    void setFragment(const String& text);

    String getScheme() const;
    String getUser(bool unescape) const;
    String getPassword(bool unescape) const;
    String getHost(bool unescape) const;
    String getPath(bool unescape) const;
    int getPort() const;
    /// The password stays escaped.
    String getUserInfo(bool unescape) const;
    String getAuthority(bool unescape) const;
    /// Keys stay escaped. Empty where there is none.
    String getQuery(bool unescape) const;
    /// `key` in the form in which it is stored.
    String getQueryValue(const String& key, bool unescape) const;
    String getSchemeSpecificPart(bool unescape) const;
    String getFragment() const;

    bool hasScheme() const;
    bool hasUser() const;
    bool hasPassword() const;
    bool hasHost() const;
    bool hasPath() const;
    bool hasPort() const;
    bool hasQuery() const;
    bool hasUserInfo() const;
    /// A host or a user; a port alone does not count.
    bool hasAuthority() const;
    bool hasSchemeSpecificPart() const;
    bool hasQueryValue(const String& key) const;
    bool hasFragment() const;
    bool isOpaque() const;

    void removeScheme();
    void removeUser();
    void removePassword();
    void removeHost();
    void removePath();
    void removePort();
    void removeUserInfo();
    void removeAuthority();
    void removeQuery();
    void removeQueryPair(const String& key);
    /// The opaque part stays.
    void removeSchemeSpecificPart();
    void removeAll();

private:
    /// What is escaped beside what always is.
    enum ESCAPE_PART { ESCAPE_AUTHORITY = 0, ESCAPE_PATH = 1, ESCAPE_QUERY = 2 };

    /// What is a text.
    enum Part { SCHEME, USER, PASSWORD, HOST, PATH, OPAQUE_PART, QUERY };

    /// What there is of a URI. The texts stand elsewhere; where there is none, it is empty.
    struct Parts {
        void set(Part part, std::u16string_view text);

        std::array<std::u16string_view, QUERY + 1> texts;
        std::array<bool, QUERY + 1> has {};
        bool hasPort = false;
        int port = -1;
    };

    static std::u16string getEscapedString(std::u16string_view text, ESCAPE_PART part);
    static String getUnescapedString(std::u16string_view text);

    static void parseUri(std::u16string_view text, bool hasScheme, Parts& parts);
    static void parseSchemeSpecificPart(std::u16string_view text, bool hasScheme, Parts& parts);
    static void parseAuthority(std::u16string_view text, Parts& parts);
    static void parseUserInfo(std::u16string_view text, Parts& parts);

    /// Stores what a setter is given: parameters are added, other parts replaced.
    void take(Parts given, bool escape);
    void take(Part part, std::u16string_view text, bool escape);
    void takePair(std::u16string_view key, std::u16string_view value, bool escape);
    static void put(detail::QueryTable& query, std::u16string_view key, std::u16string_view value, bool escape);
    /// Copies parts that are in their stored form, and those that they do not replace. What fails changes nothing.
    void store(const Parts& given);
    /// What a getter answers.
    String give(Part part, bool unescape) const;
    void remove(Part part);
    /// The value of a parameter in its stored form.
    std::optional<std::u16string_view> valueOf(const String& key) const;
    /// The parameters as a table; null where there are none.
    detail::QueryTable* readQuery() const;

    std::size_t roomToPrint() const;
    static void append(detail::TextWriter& target, std::u16string_view stored, bool unescape);
    void appendUserInfo(detail::TextWriter& target, bool unescape) const;
    void appendAuthority(detail::TextWriter& target, bool unescape) const;
    void appendQuery(detail::TextWriter& target, bool unescape) const;
    void appendSchemeSpecificPart(detail::TextWriter& target, bool unescape) const;

    Parts m_parts;
    std::unique_ptr<char16_t[]> m_texts;
    // Most URIs are only parsed and printed, for which the text of their parameters will do. A table, once made, has them.
    mutable std::unique_ptr<detail::QueryTable> m_query;
};

} // namespace vx::net
