#pragma once

#include "vxsys/Surrogate.h"

#include <cstdint>

namespace vx::text::charset::detail {

inline constexpr char16_t REPLACEMENT = u'\uFFFD';

using vxsys::codePoint;
using vxsys::isLead;
using vxsys::isSurrogate;
using vxsys::isTrail;
using vxsys::LAST_CODE_POINT;
using vxsys::leadOf;
using vxsys::trailOf;

} // namespace vx::text::charset::detail
