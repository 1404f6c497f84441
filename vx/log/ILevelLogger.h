#pragma once

#include "vx/IVXUnknown.h"

namespace vx {
class String;
}

namespace vx::log {

/// Takes text to be logged at a level. The meaning of the levels is the caller's choice: the library defines none.
class VX_API ILevelLogger : public IVXUnknown {
public:
    virtual void log(int level, const String& text) = 0;

protected:
    ~ILevelLogger() = default;
};

} // namespace vx::log
