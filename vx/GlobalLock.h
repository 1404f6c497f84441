#pragma once

#include "vx/Api.h"

namespace vx::sync {
class LockObject;
}

/// Guards the creation and destruction of the process's singletons. It exists from the start of the library to its stop.
extern VX_API vx::sync::LockObject* g_pGlobalLock;
