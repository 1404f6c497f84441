#pragma once

#include "vx/IVXUnknown.h"

namespace vx {
class String;
}

namespace vx::log {

/// Takes text to be logged at a level. What a level means is the caller's choice: the library knows none.
class VX_API ILevelLogger : public IVXUnknown {
public:
    virtual void log(int level, const String& text) = 0;

protected:
    ~ILevelLogger() = default;
};

} // namespace vx::log
