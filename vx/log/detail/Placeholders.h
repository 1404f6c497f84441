#pragma once

#include "vx/String.h"
#include "vx/collections/List.h"

namespace vx::log::detail {

/// `pattern` with each "{n}" replaced by the text of argument `n`. The numbers count from 0 without a gap: those after a gap
/// stay. Where there are more numbers than arguments, nothing is replaced. The text of an argument is not expanded again; a
/// null argument has none. The time is that of one pass over the text.
String expandPlaceholders(const String& pattern, const collections::List<Object>& arguments);

} // namespace vx::log::detail
