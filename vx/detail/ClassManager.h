#pragma once

#include "vx/ClassManagerBase.h"
#include "vx/GlobalLock.h"
#include "vx/util/Singleton.h"

namespace vx {

using ClassManager = util::Singleton<ClassManagerBase, &g_pGlobalLock>;

} // namespace vx
