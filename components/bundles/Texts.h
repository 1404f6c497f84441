#pragma once

#include <vx/Reference.h>
#include <vx/String.h>
#include <vx/collections/StringHashMap.h>

namespace vx::components {

/// The texts of a UTF-8 file by key. Each line is "key = text"; blanks around both are removed. A line that begins with
/// "#" and an empty line are ignored. In a text "\n" means a new line and "\t" a tab; "\" before any other character
/// means that character. If a key has several texts, the last one is used. Throws Exception with the number of a line
/// without "=", and what the streams throw, also for bytes that are no UTF-8.
Reference<collections::StringHashMap> readTexts(const String& path);

} // namespace vx::components
