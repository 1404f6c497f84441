#pragma once

#include "vx/IVXUnknown.h"

namespace vx::exec {

/// The work of a thread.
class VX_API IRunnable : public IVXUnknown {
public:
    /// Returns the thread's result. If it throws, the thread ends with the result null.
    virtual void* run() = 0;

protected:
    ~IRunnable() = default;
};

} // namespace vx::exec
