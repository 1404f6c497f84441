#pragma once

#include "vx/Reference.h"
#include "vx/io/IChannel.h"

namespace vx::util {
class PropertySet;
}

namespace vx::net {

// Connections to another party, as interfaces for class code. Failures are exceptions.

/// Waits for a party to connect.
class VX_API IAcceptor : public IVXUnknown {
public:
    /// Blocks until a party connects.
    virtual Reference<io::IChannel> accept() = 0;

protected:
    ~IAcceptor() = default;
};

/// Connects to a party.
class VX_API IConnector : public IVXUnknown {
public:
    virtual Reference<io::IChannel> connect() = 0;

protected:
    ~IConnector() = default;
};

/// Creates both from properties. Each transport has its own keys.
class VX_API ITransport : public IVXUnknown {
public:
    virtual Reference<IConnector> createConnector(const util::PropertySet& properties) = 0;
    virtual Reference<IAcceptor> createAcceptor(const util::PropertySet& properties) = 0;

protected:
    ~ITransport() = default;
};

} // namespace vx::net
