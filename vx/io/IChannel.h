#pragma once

#include "vx/IVXUnknown.h"

namespace vx {
class String;
}

namespace vx::io {

class ByteBuffer;

// What a connection is to class code. These interfaces have no identifiers: they are held, not asked for.

/// Bytes to be read. Failures are exceptions.
class VX_API IReadChannel : public IVXUnknown {
public:
    /// Reads into what remains of `buffer`, and moves its position. Returns the number of bytes, or -1 at the end. A
    /// read-only buffer throws ReadOnlyException.
    virtual int read(ByteBuffer& buffer) = 0;

protected:
    ~IReadChannel() = default;
};

/// Takes bytes. Failures are exceptions.
class VX_API IWriteChannel : public IVXUnknown {
public:
    /// Writes what remains of `buffer`, and moves its position. Returns the number of bytes.
    virtual int write(ByteBuffer& buffer) = 0;

protected:
    ~IWriteChannel() = default;
};

/// Both directions: what a connection is.
class VX_API IChannel : public IReadChannel, public IWriteChannel {
public:
    // Either base has them; here they are one.
    std::int32_t QueryInterface(const _GUID& iid, void** out) override = 0;
    std::uint32_t AddRef() const override = 0;
    std::uint32_t Release() const override = 0;

protected:
    ~IChannel() = default;
};

/// A channel that can be named to another process.
class VX_API IInheritableChannel : public IChannel {
public:
    /// Throws ResultException RESULT_NOT_AVAILABLE for a channel without such a name.
    virtual String getInheritanceId() = 0;

protected:
    ~IInheritableChannel() = default;
};

} // namespace vx::io
