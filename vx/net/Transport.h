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

    /// A new transport by its ProgID; null if memory is exhausted. Throws ResultException if it cannot be created.
    static Reference<ITransport> get(const String& progId);
};

} // namespace vx::net
