#pragma once

#include <vx/Reference.h>
#include <vx/String.h>
#include <vx/collections/StringHashMap.h>

namespace vx::components {

/// The texts of a UTF-8 file, by key: a line "key = text" each, with blanks around either side left out. A line that begins
/// with "#", and an empty one, says nothing. In a text "\n" and "\t" stand for a new line and a tab, "\" before anything else
/// for that. Of several texts of one key the last one stands. Throws Exception with the number of a line without "=" and what
/// the streams throw, also for bytes that are no UTF-8.
Reference<collections::StringHashMap> readTexts(const String& path);

} // namespace vx::components
