#pragma once

#include "vx/String.h"
#include "vx/collections/List.h"

namespace vx::log::detail {

/// `pattern` with each "{n}" replaced by the text of argument `n`. The numbers count from 0 without a gap: those behind a
/// gap stay. Where there are more numbers than arguments, nothing is replaced. What an argument brings in is not expanded;
/// a null one brings nothing.
String expandPlaceholders(const String& pattern, const collections::List<Object>& arguments);

} // namespace vx::log::detail
