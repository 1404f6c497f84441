#pragma once

#include <string>
#include <string_view>

namespace vxlogd {

/// The text of a line in UTF-8, safe to show: invalid bytes become U+FFFD. Characters that could forge an entry or
/// control a terminal become visible ones: control characters except the tab, line and paragraph separators, changes of
/// direction. The result refers to `bytes` or to `converted`.
std::string_view readableText(std::string_view bytes, std::string& converted);
/// As above; the result owns its text.
inline std::string readableText(std::string_view bytes)
{
    std::string converted;
    return std::string(readableText(bytes, converted));
}

} // namespace vxlogd
