#pragma once

#include "vx/String.h"

#include <typeinfo>

namespace vx::detail {

/// The name of a type as C++ writes it.
String readableName(const std::type_info& type);

} // namespace vx::detail
