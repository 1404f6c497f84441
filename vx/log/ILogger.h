#pragma once

#include "vx/IVXUnknown.h"

namespace vx {
class String;
}

namespace vx::log {

/// Takes text to be logged, at a level that the logger chooses.
class VX_API ILogger : public IVXUnknown {
public:
    virtual void log(const String& text) = 0;

protected:
    ~ILogger() = default;
};

} // namespace vx::log
