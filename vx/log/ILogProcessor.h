#pragma once

#include "vx/IVXUnknown.h"

namespace vx::log {

class ILogEntry;

/// Processes entries. The common interface of the stages of a chain and of the writers at its end.
class VX_API ILogProcessor : public IVXUnknown {
public:
    /// The caller owns the entry: a processor that keeps it after the call adds a reference.
    virtual void process(const ILogEntry* entry) = 0;

protected:
    ~ILogProcessor() = default;
};

} // namespace vx::log
