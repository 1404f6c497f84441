#pragma once

#include "vx/IVXUnknown.h"

namespace vx::exec {

/// The work of a thread.
class VX_API IRunnable : public IVXUnknown {
public:
    /// Gives the thread's result. An exception that leaves it ends the thread with the result null.
    virtual void* run() = 0;

protected:
    ~IRunnable() = default;
};

} // namespace vx::exec
