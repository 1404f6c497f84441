#pragma once

#include "vx/util/IniFile.h"

#include <string>
#include <string_view>

namespace vx::util::detail {

/// Reads up to the first line that is not valid. Bytes that are invalid in their encoding become U+FFFD.
IniSets parseIniText(std::string_view bytes);

/// In the default encoding. Characters that it does not have become "?".
std::string printIniText(const IniSets& sets);

} // namespace vx::util::detail
