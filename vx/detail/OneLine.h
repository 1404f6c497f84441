#pragma once

#include "vx/String.h"

#include <string_view>

namespace vx::detail {

/// UTF-8 from outside the library, such as the words of another library. Each byte that is not part of a character becomes
/// U+FFFD: what tells a failure must not fail itself.
String foreignText(std::string_view bytes);

/// The text on one line of a log or a terminal: control characters and separators of lines become blanks, a lone half of a
/// surrogate pair U+FFFD. Without blanks at the end.
String onOneLine(std::u16string_view text);

} // namespace vx::detail
