#pragma once

#include "vx/Object.h"

namespace vx::sync {

/// Known to the class registry by name; it offers nothing.
class VX_API Atomic : public vx::Object {
public:
    ~Atomic() noexcept override;
};

/// Known to the class registry by name; it offers nothing.
class VX_API FakeAtomic : public vx::Object {
public:
    ~FakeAtomic() noexcept override;
};

} // namespace vx::sync
