#pragma once

#include "vx/IVXUnknown.h"

namespace vx {
class String;
}

namespace vx::io {

class ByteBuffer;

// Connections for class code. These interfaces have no identifiers, so they cannot be queried.

/// A source of bytes. Failures are exceptions.
class VX_API IReadChannel : public IVXUnknown {
public:
    /// Reads into the remaining part of `buffer` and advances its position. Returns the number of bytes, or -1 at the
    /// end. A read-only buffer throws ReadOnlyException.
    virtual int read(ByteBuffer& buffer) = 0;

protected:
    ~IReadChannel() = default;
};

/// A sink for bytes. Failures are exceptions.
class VX_API IWriteChannel : public IVXUnknown {
public:
    /// Writes the remaining part of `buffer` and advances its position. Returns the number of bytes.
    virtual int write(ByteBuffer& buffer) = 0;

protected:
    ~IWriteChannel() = default;
};

/// Both directions, as a connection has them.
class VX_API IChannel : public IReadChannel, public IWriteChannel {
public:
    // Both bases have them; this makes the calls unambiguous.
    std::int32_t QueryInterface(const _GUID& iid, void** out) override = 0;
    std::uint32_t AddRef() const override = 0;
    std::uint32_t Release() const override = 0;

protected:
    ~IChannel() = default;
};

/// A channel that another process can inherit by its name.
class VX_API IInheritableChannel : public IChannel {
public:
    /// Throws ResultException RESULT_NOT_AVAILABLE for a channel without such a name.
    virtual String getInheritanceId() = 0;

protected:
    ~IInheritableChannel() = default;
};

} // namespace vx::io
