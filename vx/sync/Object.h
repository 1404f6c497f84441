#pragma once

#include "vx/Object.h"

namespace vx::sync {

/// Anything that one can wait on. Failures of the platform are ResultExceptions with its code; a failed try is `false`,
/// whatever its cause.
class VX_API Object : public vx::Object {
public:
    ~Object() noexcept(false) override;

    /// Blocks for as long as it takes.
    virtual void wait() = 0;
    /// Does not block and does not throw.
    virtual bool tryWait() = 0;

protected:
    Object() noexcept = default;
    Object(const Object&) noexcept = default;
    Object& operator=(const Object&) noexcept { return *this; }
};

} // namespace vx::sync
