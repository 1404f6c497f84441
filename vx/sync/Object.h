#pragma once

#include "vx/Object.h"

namespace vx::sync {

/// Anything that a thread can wait for. A failure of the platform throws ResultException with its code; a failed try
/// returns `false`, whatever the cause.
class VX_API Object : public vx::Object {
public:
    ~Object() noexcept(false) override;

    /// Blocks without a limit.
    virtual void wait() = 0;
    /// Does not block and does not throw.
    virtual bool tryWait() = 0;

protected:
    Object() noexcept = default;
    Object(const Object&) noexcept = default;
    Object& operator=(const Object&) noexcept { return *this; }
};

} // namespace vx::sync
