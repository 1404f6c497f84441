#pragma once

#include "vx/String.h"
#include "vx/net/QueryKey.h"

#include <array>
#include <compare>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace vx::detail {
class TextBuilder;
} // namespace vx::detail

namespace vx::net {

namespace detail {
class QueryTable;
} // namespace detail

/// The parts of one URI (RFC 3986) in their escaped form: scheme, user, password, host, port, path and query. A
/// container, not a validator: any text is split into parts, and each part can be set, read and removed on its own. A
/// part may be present and empty.
///
/// A setter has an argument that says whether to escape its text, a getter one that says whether to unescape. Both work
/// on UTF-8 bytes. Text that UTF-8 cannot encode, and escapes that are no UTF-8, throw InvalidCharacterException. A
/// setter that throws changes nothing. The getter of a missing part throws an Exception without a message, and so does
/// unescaping an incomplete escape. Query parameters are found without regard to case, and printed in the order of a
/// hash map. Fragments are not supported: "#" is an ordinary character. One thread at a time, also for constant
/// operations.
class VX_API URI : public Object {
public:
    URI();
    URI(const String& text);
    /// A copy shares nothing with the original. An object that was moved from has no parts.
    URI(const URI& other);
    URI(URI&& other) noexcept;
    URI& operator=(const URI& other);
    URI& operator=(URI&& other) noexcept;
    ~URI() noexcept override;

    // Object
    String toString() const override;

    /// The text before the first ":" is the scheme. If there is a scheme and the rest does not begin with "/", the rest
    /// is one opaque part.
    void setUri(const String& text, bool escape);
    void setSchemeSpecificPart(const String& text, bool escape);
    /// "user:password@host:port". If the port is not a number, it is 0.
    void setAuthority(const String& text, bool escape);
    void setUserInfo(const String& text, bool escape);
    void setScheme(const String& text);
    void setUser(const String& text, bool escape);
    void setPassword(const String& text, bool escape);
    void setHost(const String& text, bool escape);
    /// Without the slash between authority and path. With `escape`, the text is one segment: its slashes are escaped
    /// too.
    void setPath(const String& text, bool escape);
    void setPort(int port);
    /// Adds the parameters of "key=value&key=value" to the present ones. A parameter without "=" is key and value.
    void setQuery(const String& text, bool escape);
    /// Replaces the value of an existing key.
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
    /// Keys stay escaped. Empty if there is no query.
    String getQuery(bool unescape) const;
    /// `key` is in its stored form.
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

    /// By the text that both print. `equals` is that of `Object`: it compares the objects, not their texts.
    friend bool operator==(const URI& left, const URI& right) { return left.toString() == right.toString(); }
    friend std::strong_ordering operator<=>(const URI& left, const URI& right)
    {
        return left.toString() <=> right.toString();
    }

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
    /// Keeps the opaque part.
    void removeSchemeSpecificPart();
    void removeAll();

private:
    /// Which characters are escaped, apart from those that always are.
    enum ESCAPE_PART { ESCAPE_AUTHORITY = 0, ESCAPE_PATH = 1, ESCAPE_QUERY = 2 };

    /// The parts that are texts.
    enum Part { SCHEME, USER, PASSWORD, HOST, PATH, OPAQUE_PART, QUERY };

    /// The parts of a URI. The texts are views of other storage; a missing one is empty.
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

    /// Stores the arguments of a setter: parameters are added, other parts replaced.
    void take(Parts given, bool escape);
    void take(Part part, std::u16string_view text, bool escape);
    void takePair(std::u16string_view key, std::u16string_view value, bool escape);
    static void put(detail::QueryTable& query, std::u16string_view key, std::u16string_view value, bool escape);
    /// Copies the parts in `given`, which are in their stored form, and the present parts that they do not replace. A
    /// failure changes nothing.
    void store(const Parts& given);
    /// The result of a getter.
    String textOf(Part part, bool unescape) const;
    void remove(Part part);
    /// The value of a parameter in its stored form.
    std::optional<std::u16string_view> valueOf(const String& key) const;
    /// The parameters as a table; null if there are none.
    detail::QueryTable* readQuery() const;

    static void append(vx::detail::TextBuilder& target, std::u16string_view stored, bool unescape);
    void appendUserInfo(vx::detail::TextBuilder& target, bool unescape) const;
    void appendAuthority(vx::detail::TextBuilder& target, bool unescape) const;
    void appendQuery(vx::detail::TextBuilder& target, bool unescape) const;
    void appendSchemeSpecificPart(vx::detail::TextBuilder& target, bool unescape) const;

    Parts m_parts;
    std::unique_ptr<char16_t[]> m_texts;
    // Null until a table of the parameters is needed: most URIs are only parsed and printed, for which the text is
    // enough. After that, the table has them.
    mutable std::unique_ptr<detail::QueryTable> m_query;
};

} // namespace vx::net

template <>
struct std::hash<vx::net::URI> {
    std::size_t operator()(const vx::net::URI& value) const { return value.toString().hashCode(); }
};
