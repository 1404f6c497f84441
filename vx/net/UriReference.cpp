#include "vx/net/UriReference.h"

#include "vx/net/detail/UriGrammar.h"

#include <algorithm>
#include <charconv>
#include <tuple>

namespace vx::net {

using namespace detail;

namespace {

/// RFC 3986, 5.2.4. The output is built as a text whose last segment can be dropped.
std::string withoutDotSegments(std::string_view input)
{
    std::string output;
    const auto drop = [&] {
        const std::size_t slash = output.rfind('/');
        output.resize(slash != output.npos ? slash : 0);
    };
    while (!input.empty()) {
        if (input.starts_with("../")) {
            input.remove_prefix(3);
        } else if (input.starts_with("./") || input.starts_with("/./")) {
            input.remove_prefix(2);
        } else if (input == "/.") {
            input = "/";
        } else if (input.starts_with("/../")) {
            input.remove_prefix(3);
            drop();
        } else if (input == "/..") {
            input = "/";
            drop();
        } else if (input == "." || input == "..") {
            input = {};
        } else {
            const std::size_t end = std::min(input.find('/', 1), input.size());
            output += input.substr(0, end);
            input.remove_prefix(end);
        }
    }
    return output;
}

/// A path that begins with two slashes would be parsed as an authority. The added segment has no effect.
std::string guarded(const std::string& path, bool hasAuthority)
{
    return !hasAuthority && path.starts_with("//") ? "/." + path : path;
}

/// Writes escapes with capital digits, and only those that are necessary.
std::string withPlainEscapes(std::string_view text)
{
    std::string plain;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] != '%') {
            plain += text[at];
            continue;
        }
        const char byte = byteOf(text[at + 1], text[at + 2]);
        plain += isUnreserved(byte) ? std::string(1, byte) : escaped(byte);
        at += 2;
    }
    return plain;
}

/// In lower case, except for escapes.
std::string inLowerCase(std::string text)
{
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == '%')
            at += 2;
        else
            text[at] = lower(text[at]);
    }
    return text;
}

std::optional<std::string> copyOf(std::optional<std::string_view> text)
{
    return text ? std::optional<std::string>(*text) : std::nullopt;
}

std::optional<std::string> plainCopyOf(std::optional<std::string_view> text)
{
    return text ? std::optional<std::string>(withPlainEscapes(*text)) : std::nullopt;
}

/// For a text whose escapes are known to be complete.
std::string unescaped(std::string_view text, UriReference::Plus plus = UriReference::Plus::IS_PLUS)
{
    std::string bytes(text);
    if (plus == UriReference::Plus::IS_BLANK)
        std::replace(bytes.begin(), bytes.end(), '+', ' ');
    return *UriReference::unescape(bytes);
}

template <class Add>
void split(std::string_view text, char separator, Add add)
{
    for (;;) {
        const std::size_t end = text.find(separator);
        add(text.substr(0, end));
        if (end == text.npos)
            return;
        text.remove_prefix(end + 1);
    }
}

} // namespace

/// Finds the components by their separators (RFC 3986, appendix B), and checks each against the grammar.
class UriReference::Parser {
public:
    explicit Parser(UriReference& uri)
        : m_uri(uri)
        , m_text(uri.m_text)
    {
    }

    bool parse()
    {
        const std::size_t colon = m_text.find_first_of(":/?#");
        if (colon != m_text.npos && m_text[colon] == ':') {
            m_uri.m_scheme = {0, colon};
            m_at = colon + 1;
            if (!isScheme(m_text.substr(0, colon)))
                return false;
        }
        if (m_text.substr(m_at).starts_with("//")) {
            m_at += 2;
            m_uri.m_authority = take("/?#");
            if (!parseAuthority())
                return false;
        }
        m_uri.m_path = take("?#");
        if (!consistsOf(m_uri.getPath(), "/:@"))
            return false;
        if (isAt('?')) {
            ++m_at;
            m_uri.m_query = take("#");
        }
        if (isAt('#')) {
            ++m_at;
            m_uri.m_fragment = take("");
        }
        return consistsOf(m_uri.getQuery().value_or(""), "/:@?")
            && consistsOf(m_uri.getFragment().value_or(""), "/:@?");
    }

private:
    bool isAt(char sign) const { return m_at < m_text.size() && m_text[m_at] == sign; }

    /// Reads up to one of `ends`, or to the end of the text.
    Range take(std::string_view ends)
    {
        const std::size_t start = m_at;
        m_at = std::min(m_text.find_first_of(ends, start), m_text.size());
        return {start, m_at - start};
    }

    bool parseAuthority()
    {
        const std::string_view text = *m_uri.getAuthority();
        const std::size_t base = m_uri.m_authority.start;
        const std::size_t sign = text.find('@');
        std::size_t start = 0;
        if (sign != text.npos) {
            m_uri.m_userInfo = {base, sign};
            start = sign + 1;
        }
        // The colons of an address are inside brackets.
        const std::size_t bracket = text.find(']', start);
        const std::size_t colon = text.find(':', bracket != text.npos ? bracket : start);
        m_uri.m_host = {base + start, std::min(colon, text.size()) - start};
        if (colon != text.npos)
            m_uri.m_port = {base + colon + 1, text.size() - colon - 1};
        return consistsOf(m_uri.getUserInfo().value_or(""), ":") && isHost(*m_uri.getHost())
            && std::ranges::all_of(m_uri.getPortText().value_or(""), isDigit);
    }

    UriReference& m_uri;
    const std::string_view m_text;
    std::size_t m_at = 0;
};

UriReference::UriReference(UriReference&& other) noexcept
    : UriReference()
{
    swap(other);
}

UriReference& UriReference::operator=(UriReference other) noexcept
{
    swap(other);
    return *this;
}

std::optional<UriReference> UriReference::parse(std::string_view text)
{
    UriReference uri;
    uri.m_text = text;
    return Parser(uri).parse() ? std::optional(std::move(uri)) : std::nullopt;
}

std::optional<UriReference> UriReference::parse(std::u16string_view text)
{
    if (std::ranges::any_of(text, [](char16_t unit) { return unit > 0x7E; }))
        return std::nullopt;
    return parse(std::string(text.begin(), text.end()));
}

std::optional<UriReference> UriReference::compose(const Components& components)
{
    std::string text;
    const auto add = [&](std::string_view before, const std::optional<std::string>& component, std::string_view after) {
        if (component)
            text.append(before).append(*component).append(after);
    };
    add("", components.scheme, ":");
    add("//", components.host ? std::optional<std::string>("") : std::nullopt, "");
    add("", components.userInfo, "@");
    add("", components.host, "");
    add(":", components.port, "");
    text += components.path;
    add("?", components.query, "");
    add("#", components.fragment, "");
    std::optional<UriReference> uri = parse(std::string_view(text));
    if (!uri)
        return std::nullopt;
    const Components found = uri->getComponents();
    const bool isSame = found.scheme == components.scheme && found.userInfo == components.userInfo
        && found.host == components.host && found.port == components.port && found.path == components.path
        && found.query == components.query && found.fragment == components.fragment;
    return isSame ? uri : std::nullopt;
}

String UriReference::toString() const
{
    return String(std::string_view(m_text));
}

UriReference::Components UriReference::getComponents() const
{
    return {copyOf(getScheme()), copyOf(getUserInfo()), copyOf(getHost()), copyOf(getPortText()),
        std::string(getPath()), copyOf(getQuery()), copyOf(getFragment())};
}

std::string UriReference::getHostName() const
{
    const std::string_view host = getHost().value_or("");
    return host.starts_with('[') ? std::string(host.substr(1, host.size() - 2)) : unescaped(host);
}

std::optional<std::uint16_t> UriReference::getPort() const
{
    const std::string_view text = getPortText().value_or("");
    std::uint16_t port = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
    return error == std::errc() ? std::optional(port) : std::nullopt;
}

std::vector<std::string> UriReference::getSegments() const
{
    std::vector<std::string> segments;
    std::string_view path = getPath();
    if (path.starts_with('/'))
        path.remove_prefix(1);
    else if (path.empty())
        return segments;
    split(path, '/', [&](std::string_view segment) { segments.push_back(unescaped(segment)); });
    return segments;
}

std::vector<UriReference::Parameter> UriReference::getParameters(Plus plus) const
{
    std::vector<Parameter> parameters;
    split(getQuery().value_or(""), '&', [&](std::string_view pair) {
        if (pair.empty())
            return;
        const std::size_t sign = std::min(pair.find('='), pair.size());
        const std::string_view value = pair.substr(std::min(sign + 1, pair.size()));
        parameters.push_back({unescaped(pair.substr(0, sign), plus), unescaped(value, plus)});
    });
    return parameters;
}

std::optional<std::string> UriReference::getParameter(std::string_view name, Plus plus) const
{
    for (Parameter& parameter : getParameters(plus)) {
        if (parameter.name == name)
            return std::move(parameter.value);
    }
    return std::nullopt;
}

std::optional<UriReference> UriReference::resolve(const UriReference& reference) const
{
    if (!getScheme())
        return std::nullopt;
    Components target = reference.getComponents();
    const std::string_view path = reference.getPath();
    const auto takeAuthority = [&](const UriReference& from) {
        target.userInfo = copyOf(from.getUserInfo());
        target.host = copyOf(from.getHost());
        target.port = copyOf(from.getPortText());
    };
    if (reference.getScheme() || reference.getHost()) {
        target.path = withoutDotSegments(path);
    } else {
        takeAuthority(*this);
        if (path.empty()) {
            target.path = getPath();
            if (!reference.getQuery())
                target.query = copyOf(getQuery());
        } else if (path.starts_with('/')) {
            target.path = withoutDotSegments(path);
        } else { // 5.2.3
            const std::string_view base = getHost() && getPath().empty() ? "/" : getPath();
            const std::size_t end = base.rfind('/');
            const std::string_view folder = end != base.npos ? base.substr(0, end + 1) : std::string_view();
            target.path = withoutDotSegments(std::string(folder) + std::string(path));
        }
    }
    if (!reference.getScheme())
        target.scheme = copyOf(getScheme());
    target.path = guarded(target.path, target.host.has_value());
    return compose(target);
}

UriReference UriReference::normalized() const
{
    Components normal {plainCopyOf(getScheme()), plainCopyOf(getUserInfo()), plainCopyOf(getHost()),
        plainCopyOf(getPortText()), withPlainEscapes(getPath()), plainCopyOf(getQuery()), plainCopyOf(getFragment())};
    if (normal.scheme)
        normal.scheme = inLowerCase(*std::move(normal.scheme));
    if (normal.host)
        normal.host = inLowerCase(*std::move(normal.host));
    if (normal.scheme || normal.path.starts_with('/'))
        normal.path = guarded(withoutDotSegments(normal.path), normal.host.has_value());
    return *compose(normal);
}

std::string UriReference::escape(std::string_view bytes, std::string_view kept)
{
    std::string text;
    for (const char byte : bytes)
        text += isUnreserved(byte) || kept.find(byte) != kept.npos ? std::string(1, byte) : escaped(byte);
    return text;
}

std::optional<std::string> UriReference::unescape(std::string_view text)
{
    std::string bytes;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] != '%') {
            bytes += text[at];
            continue;
        }
        if (text.size() - at < 3 || !isHexDigit(text[at + 1]) || !isHexDigit(text[at + 2]))
            return std::nullopt;
        bytes += byteOf(text[at + 1], text[at + 2]);
        at += 2;
    }
    return bytes;
}

std::string UriReference::queryOf(const std::vector<Parameter>& parameters)
{
    std::string query;
    for (const Parameter& each : parameters)
        query.append(query.empty() ? "" : "&").append(escape(each.name)).append("=").append(escape(each.value));
    return query;
}

std::optional<std::string_view> UriReference::textOf(const Range& range) const
{
    return range.length != std::string::npos ? std::optional(std::string_view(m_text).substr(range.start, range.length))
                                             : std::nullopt;
}

void UriReference::swap(UriReference& other) noexcept
{
    const auto all = [](UriReference& uri) {
        return std::tie(uri.m_text, uri.m_scheme, uri.m_authority, uri.m_userInfo, uri.m_host, uri.m_port, uri.m_path,
            uri.m_query, uri.m_fragment);
    };
    auto others = all(other);
    all(*this).swap(others);
}

} // namespace vx::net
