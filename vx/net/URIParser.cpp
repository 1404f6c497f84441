#include "vx/net/URI.h"
#include "vx/net/detail/QueryText.h"
#include "vxsys/Number.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

namespace vx::net {

namespace {

using detail::find;
using View = std::u16string_view;

constexpr std::size_t NOT_FOUND = View::npos;

/// Empty if `start` is after `end`.
View slice(View text, std::size_t start, std::size_t end)
{
    return start < end ? text.substr(start, end - start) : View();
}

} // namespace

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
    std::size_t start = NOT_FOUND; // of the slash before the path
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

} // namespace vx::net
