#pragma once

#include "vxsys/Result.h"

namespace vx {

using namespace vxsys::results;

} // namespace vx
