#include "vx/sync/LockObject.h"

namespace vx::sync {

LockObject::~LockObject() noexcept(false) = default;

} // namespace vx::sync
