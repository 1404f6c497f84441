#pragma once

#include "vx/Reference.h"
#include "vx/io/IChannel.h"

namespace vx::util {
class PropertySet;
}

namespace vx::net {

// A way to reach another party, as class code sees it. Failures are exceptions.

/// Waits for a party.
class VX_API IAcceptor : public IVXUnknown {
public:
    /// Blocks until a party comes.
    virtual Reference<io::IChannel> accept() = 0;

protected:
    ~IAcceptor() = default;
};

/// Goes to a party.
class VX_API IConnector : public IVXUnknown {
public:
    virtual Reference<io::IChannel> connect() = 0;

protected:
    ~IConnector() = default;
};

/// Makes both from properties, whose keys are the transport's own.
class VX_API ITransport : public IVXUnknown {
public:
    virtual Reference<IConnector> createConnector(const util::PropertySet& properties) = 0;
    virtual Reference<IAcceptor> createAcceptor(const util::PropertySet& properties) = 0;

protected:
    ~ITransport() = default;
};

} // namespace vx::net
