#pragma once

#include <vx/String.h>

#include <string_view>

namespace vxlogd {

/// The text of a line as a person may read it: bytes that are no text become U+FFFD, and what could forge an entry or steer
/// a terminal (control characters but the tab, line and paragraph separators, changes of direction) something visible.
vx::String readableText(std::string_view bytes);

} // namespace vxlogd
