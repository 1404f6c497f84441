#pragma once

#include "vx/util/IniFile.h"

#include <string>
#include <string_view>

namespace vx::util::detail {

/// Reads up to the first line that makes no sense. Bytes that are no text in their encoding become U+FFFD.
IniSets parseIniText(std::string_view bytes);

/// In the default encoding. What has no place in it becomes "?".
std::string printIniText(const IniSets& sets);

} // namespace vx::util::detail
