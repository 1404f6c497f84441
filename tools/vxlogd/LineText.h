#pragma once

#include <vx/String.h>

#include <string_view>

namespace vxlogd {

/// The text of a line, safe to show: invalid bytes become U+FFFD. Characters that could forge an entry or control a
/// terminal become visible ones: control characters except the tab, line and paragraph separators, changes of
/// direction.
vx::String readableText(std::string_view bytes);

} // namespace vxlogd
