#include "vx/sync/Atomic.h"

namespace vx::sync {

Atomic::~Atomic() noexcept = default;

FakeAtomic::~FakeAtomic() noexcept = default;

} // namespace vx::sync
