#include "Law.h"
#include "vx/net/URI.h"
#include "vx/text/charset/CharsetException.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace {

using vx::String;
using vx::net::URI;

/// What the getter of a part gives, nothing where it throws.
template <class Get>
std::optional<String> got(Get get)
{
    try {
        return get();
    } catch (const vx::Exception&) {
        return std::nullopt;
    }
}

void checkParts(const URI& uri)
{
    VX_LAW(got([&] { return uri.getScheme(); }).has_value() == uri.hasScheme());
    VX_LAW(got([&] { return uri.getUser(false); }).has_value() == uri.hasUser());
    VX_LAW(got([&] { return uri.getPassword(false); }).has_value() == uri.hasPassword());
    VX_LAW(got([&] { return uri.getHost(false); }).has_value() == uri.hasHost());
    VX_LAW(got([&] { return uri.getPath(false); }).has_value() == uri.hasPath());
    VX_LAW(got([&] { return uri.getAuthority(false); }).has_value() == uri.hasAuthority());
    VX_LAW(!uri.getQuery(false).isEmpty() <= uri.hasQuery());
    got([&] { return uri.getSchemeSpecificPart(true); }); // may throw, and no more
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const String text(reinterpret_cast<const char*>(data), static_cast<int>(size), u"ISO8859_1");
    const URI uri(text);
    checkParts(uri);
    if (uri.hasScheme() && uri.isOpaque())
        VX_LAW(uri.toString().equals(text));
    const String printed = uri.toString();
    const URI again(printed);
    checkParts(again);

    // What is escaped comes back, also through the whole text.
    URI escaped;
    escaped.setScheme(u"s");
    escaped.setHost(text, true);
    escaped.setUser(text, true);
    escaped.setPath(text, true);
    escaped.setQueryPair(u"k", text, true);
    const URI parsed(escaped.toString());
    VX_LAW(parsed.getUser(true).equals(text) && parsed.getPath(true).equals(text));
    VX_LAW(parsed.getQueryValue(u"K", true).equals(text));
    VX_LAW(text.isEmpty() || parsed.getHost(true).equals(text));
    return 0;
}
