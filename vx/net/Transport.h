#pragma once

#include "vx/net/ITransport.h"

namespace vx {
class String;
}

namespace vx::net {

/// Finds transports, which are components.
class VX_API Transport {
public:
    Transport() = delete;

    /// A new transport by its ProgID; null when memory is exhausted. Throws ResultException where it cannot be had.
    static Reference<ITransport> get(const String& progId);
};

} // namespace vx::net
