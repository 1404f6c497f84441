#pragma once

#include "vx/Object.h"

namespace vx::sync {

/// Listed in the class registry by name. It has no operations.
class VX_API Atomic : public vx::Object {
public:
    ~Atomic() noexcept override;
};

/// Listed in the class registry by name. It has no operations.
class VX_API FakeAtomic : public vx::Object {
public:
    ~FakeAtomic() noexcept override;
};

} // namespace vx::sync
