#pragma once

#include "vx/IVXUnknown.h"

namespace vx::log {

class ILogEntry;

/// Consumes entries: the one interface between loggers, the stages of a chain and the writers at its end.
class VX_API ILogProcessor : public IVXUnknown {
public:
    /// The entry belongs to the caller: who keeps it beyond the call counts it.
    virtual void process(const ILogEntry* entry) = 0;

protected:
    ~ILogProcessor() = default;
};

} // namespace vx::log
