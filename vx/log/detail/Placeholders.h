#pragma once

#include "vx/String.h"
#include "vx/collections/List.h"

namespace vx::log::detail {

/// `pattern` with each "{n}" replaced by the text of argument `n`. The numbers start at 0; after the first unused
/// number no placeholder is replaced. If there are more numbers than arguments, nothing is replaced. Placeholders in
/// the text of an argument are not expanded; a null argument stands for an empty text. Takes one pass over the text.
String expandPlaceholders(const String& pattern, const collections::List<Object>& arguments);

} // namespace vx::log::detail
