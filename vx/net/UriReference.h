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

/// A URI, or a reference relative to one, by the rules of RFC 3986. A value class that does not change: operations
/// return new objects. Its text is ASCII, so all texts here are bytes.
///
/// A missing component and an empty one are different: "a:b?" has an empty query, "a:b" has none. The path is never
/// missing.
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
    /// The components in their escaped form, without the characters that separate them.
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
    /// The meaning of "+" in a query. Forms of web pages write a blank as "+"; the RFC does not define that.
    enum class Plus { IS_PLUS, IS_BLANK };

    /// The empty reference, which refers to the document that contains it.
    UriReference() = default;
    UriReference(const UriReference& other) = default;
    /// `other` becomes the empty reference.
    UriReference(UriReference&& other) noexcept;
    UriReference& operator=(UriReference other) noexcept;

    /// Empty for a text that is not a URI reference. Blanks and other characters that need an escape are not accepted.
    static std::optional<UriReference> parse(std::string_view text);
    static std::optional<UriReference> parse(std::u16string_view text);
    /// Empty for components that are invalid, or that would be parsed as others: for example a path of "//x" without a
    /// host.
    static std::optional<UriReference> compose(const Components& components);

    const std::string& getText() const { return m_text; }
    String toString() const;
    Components getComponents() const;

    /// All in their escaped form. They are valid as long as this object exists.
    std::optional<std::string_view> getScheme() const { return textOf(m_scheme); }
    std::optional<std::string_view> getAuthority() const { return textOf(m_authority); }
    std::optional<std::string_view> getUserInfo() const { return textOf(m_userInfo); }
    std::optional<std::string_view> getHost() const { return textOf(m_host); }
    std::optional<std::string_view> getPortText() const { return textOf(m_port); }
    std::string_view getPath() const { return *textOf(m_path); }
    std::optional<std::string_view> getQuery() const { return textOf(m_query); }
    std::optional<std::string_view> getFragment() const { return textOf(m_fragment); }

    /// The host for a name service or a socket: unescaped, and an IPv6 address without its brackets. Empty if there is
    /// none.
    std::string getHostName() const;
    /// Empty if the port is missing, empty or above 65535.
    std::optional<std::uint16_t> getPort() const;
    /// The segments of the path, unescaped: "/a/b%2Fc" has "a" and "b/c", and "/" has an empty one.
    std::vector<std::string> getSegments() const;
    /// The query as name=value pairs between "&", unescaped and in their order. A name may occur several times.
    std::vector<Parameter> getParameters(Plus plus = Plus::IS_PLUS) const;
    /// The first value of that name.
    std::optional<std::string> getParameter(std::string_view name, Plus plus = Plus::IS_PLUS) const;

    /// The target of `reference` in a document at this URI (RFC 3986, 5.2.2, strict). Empty if this one has no scheme.
    std::optional<UriReference> resolve(const UriReference& reference) const;
    /// The normal form of RFC 3986, 6.2.2. It changes letter case, removes unnecessary escapes and, unless the path is
    /// relative, dot segments.
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
    /// Empty if a "%" is not followed by two hexadecimal digits.
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
    void swap(UriReference& other) noexcept;

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
