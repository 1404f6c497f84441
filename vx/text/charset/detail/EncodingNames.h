#pragma once

#include "vx/String.h"

namespace vx::text::charset::detail {

/// The encoding of which `alias`, in upper case, is a name in the IANA registry and in none of the other tables. Empty if
/// there is none.
String encodingOf(std::u16string_view alias);

} // namespace vx::text::charset::detail
