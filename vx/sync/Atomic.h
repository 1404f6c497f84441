#pragma once

#include "vx/Object.h"

namespace vx::sync {

/// The class registry knows its name. It has no operations.
class VX_API Atomic : public vx::Object {
public:
    ~Atomic() noexcept override;
};

/// The class registry knows its name. It has no operations.
class VX_API FakeAtomic : public vx::Object {
public:
    ~FakeAtomic() noexcept override;
};

} // namespace vx::sync
