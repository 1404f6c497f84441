#pragma once

#include "vx/String.h"

#include <compare>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vx::net {

/// A URI, or a reference relative to one, by the letter of RFC 3986. A value class that cannot be changed: each operation
/// gives a new one. Its text is ASCII, and so all texts here are bytes.
///
/// A component that is missing and one that is empty are two things: "a:b?" has an empty query, "a:b" has none. The path is
/// never missing.
///
/// @code
/// const auto uri = net::UriReference::parse("http://[::1]:8080/a/b?x=1&x=2&q=bread%20%26%20butter#top");
/// assert(uri && uri->getHostName() == "::1" && uri->getPort() == 8080 && uri->getFragment() == "top");
/// assert(uri->getParameters().size() == 3 && uri->getParameter("q") == "bread & butter");
/// assert(uri->resolve(*net::UriReference::parse("../c"))->getText() == "http://[::1]:8080/c");
/// assert(!net::UriReference::parse("http://a b/"));
/// @endcode
class VX_API UriReference {
public:
    /// The components, escaped, without the signs that separate them.
    struct Components {
        std::optional<std::string> scheme = std::nullopt;
        std::optional<std::string> userInfo = std::nullopt; ///< only with a host
        std::optional<std::string> host = std::nullopt; ///< an IPv6 address in its brackets
        std::optional<std::string> port = std::nullopt; ///< only with a host
        std::string path = {};
        std::optional<std::string> query = std::nullopt;
        std::optional<std::string> fragment = std::nullopt;
    };

    struct Parameter {
        std::string name;
        std::string value; ///< empty if there is no "="

        bool operator==(const Parameter&) const = default;
    };
    /// What "+" means in a query. Forms of web pages write a blank so; the RFC knows nothing of it.
    enum class Plus { IS_PLUS, IS_BLANK };

    /// The empty reference, which leads to the document that it stands in.
    UriReference() = default;
    /// Nothing for a text that is no URI reference by the grammar. Blanks and other characters that need an escape are not
    /// accepted.
    static std::optional<UriReference> parse(std::string_view text);
    static std::optional<UriReference> parse(std::u16string_view text);
    /// Nothing for components that cannot be, or that would be read as others: a path of "//x" without a host, for instance.
    static std::optional<UriReference> compose(const Components& components);

    const std::string& getText() const { return m_text; }
    String toString() const;
    Components getComponents() const;

    /// All in their escaped form. They are valid as long as this object.
    std::optional<std::string_view> getScheme() const { return textOf(m_scheme); }
    std::optional<std::string_view> getAuthority() const { return textOf(m_authority); }
    std::optional<std::string_view> getUserInfo() const { return textOf(m_userInfo); }
    std::optional<std::string_view> getHost() const { return textOf(m_host); }
    std::optional<std::string_view> getPortText() const { return textOf(m_port); }
    std::string_view getPath() const { return *textOf(m_path); }
    std::optional<std::string_view> getQuery() const { return textOf(m_query); }
    std::optional<std::string_view> getFragment() const { return textOf(m_fragment); }

    /// The host as a name service or the sockets take it: unescaped, an IPv6 address without its brackets. Empty if there is
    /// none.
    std::string getHostName() const;
    /// Nothing if it is missing, empty or above 65535.
    std::optional<std::uint16_t> getPort() const;
    /// The segments of the path, unescaped: "/a/b%2Fc" has "a" and "b/c", "/" has one that is empty.
    std::vector<std::string> getSegments() const;
    /// The query as name=value pairs between "&", unescaped, in their order; a name may be there more than once.
    std::vector<Parameter> getParameters(Plus plus = Plus::IS_PLUS) const;
    /// The first value of that name.
    std::optional<std::string> getParameter(std::string_view name, Plus plus = Plus::IS_PLUS) const;

    /// The target of `reference` in a document at this URI (RFC 3986, 5.2.2, strict). Nothing if this one has no scheme.
    std::optional<UriReference> resolve(const UriReference& reference) const;
    /// The normal form of RFC 3986, 6.2.2: letter case, needless escapes and, unless it is a relative path, dot segments.
    UriReference normalized() const;
    /// Whether the normal forms are equal. `==` compares the texts.
    bool isEquivalentTo(const UriReference& other) const { return normalized() == other.normalized(); }

    friend bool operator==(const UriReference& left, const UriReference& right) { return left.m_text == right.m_text; }
    friend std::strong_ordering operator<=>(const UriReference& left, const UriReference& right)
    {
        return left.m_text <=> right.m_text;
    }

    /// Escapes all bytes but letters, digits, "-", ".", "_", "~" and those in `kept`.
    static std::string escape(std::string_view bytes, std::string_view kept = {});
    /// Nothing if a "%" is not followed by two hexadecimal digits.
    static std::optional<std::string> unescape(std::string_view text);
    /// "name=value&name=value", escaped.
    static std::string queryOf(const std::vector<Parameter>& parameters);

private:
    struct Range {
        std::size_t start = 0;
        std::size_t length = std::string::npos; ///< npos: missing
    };
    class Parser;

    std::optional<std::string_view> textOf(const Range& range) const;

    std::string m_text;
    Range m_scheme;
    Range m_authority;
    Range m_userInfo;
    Range m_host;
    Range m_port;
    Range m_path {0, 0};
    Range m_query;
    Range m_fragment;
};

} // namespace vx::net
