#include "vx/sync/Object.h"

namespace vx::sync {

Object::~Object() noexcept(false) = default;

} // namespace vx::sync
