#pragma once

#include "vx/IVXUnknown.h"

namespace vx::util {

/// Bytes that are passed between components, with the protocol of `ICharBuffer`. Lengths count bytes.
class VX_API IByteBuffer : public IVXUnknown {
public:
    virtual int GetLength() const = 0;
    /// The storage without a lock. The pointer is valid until the next write.
    virtual const signed char* GetData() const = 0;
    virtual std::int32_t GetReadLock(const signed char** out) const = 0;
    virtual std::int32_t ReleaseReadLock() const = 0;
    /// 1 or 0.
    virtual std::int16_t IsWritable() const = 0;
    /// Makes room for at least `minimumLength` bytes; 0 means the storage as it is. RESULT_NOT_IMPLEMENTED if the
    /// buffer is read-only.
    virtual std::int32_t GetWriteLock(int minimumLength, signed char** out) = 0;
    /// For use while the write lock is held.
    virtual std::int32_t EnsureCapacity(int minimumLength, signed char** out) = 0;
    /// `length` becomes the length of the buffer. A negative one keeps the old length.
    virtual std::int32_t ReleaseWriteLock(int length) = 0;
    /// Frees storage that the bytes do not need.
    virtual std::int32_t FreeExtra() = 0;

protected:
    ~IByteBuffer() = default;
};

} // namespace vx::util

/// The buffer interface with its identifier.
class VX_API IVXByteBuffer : public vx::util::IByteBuffer {
public:
    using InterfaceType = IVXByteBuffer;
    static constexpr _GUID IID {0xBD454BEB, 0xD847, 0x40F3, {0xAA, 0xBF, 0x30, 0x83, 0xAC, 0x2A, 0xC5, 0x4B}};

protected:
    ~IVXByteBuffer() = default;
};
