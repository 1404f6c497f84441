#pragma once

#include "vx/IVXUnknown.h"

#include <cstdint>

namespace vx::log::vorb {

class ILogEntry;

/// A processor as a component. The library itself implements none.
class VX_API ILogProcessor : public IVXUnknown {
public:
    using InterfaceType = ILogProcessor;
    static constexpr _GUID IID {0x85B221C7, 0x0ED6, 0x4AFA, {0xA7, 0xB7, 0x2E, 0xFC, 0xBE, 0x5B, 0x9C, 0xD7}};

    /// The caller owns the entry: a processor that keeps it after the call adds a reference. A negative result is a
    /// failure.
    virtual std::int32_t Process(ILogEntry* entry) = 0;

protected:
    ~ILogProcessor() = default;
};

} // namespace vx::log::vorb
