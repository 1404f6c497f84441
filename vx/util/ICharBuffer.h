#pragma once

#include "vx/IVXUnknown.h"

namespace vx::util {

/// Text that is passed between components: a caller passes a buffer, and the callee that returns text fills it. It does
/// not matter which of them owns the memory. Lengths count 16-bit units. A buffer does not treat terminators specially.
///
/// A reader gets the read lock and the length, reads, and releases the lock. A writer gets the write lock for a length,
/// may need more room with EnsureCapacity (the old pointer is then invalid), and releases the lock with the new length.
class VX_API ICharBuffer : public IVXUnknown {
public:
    virtual int GetLength() const = 0;
    /// The storage without a lock. The pointer is valid until the next write.
    virtual const char16_t* GetData() const = 0;
    virtual std::int32_t GetReadLock(const char16_t** out) const = 0;
    virtual std::int32_t ReleaseReadLock() const = 0;
    /// 1 or 0.
    virtual std::int16_t IsWritable() const = 0;
    /// Makes room for at least `minimumLength` units; 0 means the storage as it is. RESULT_NOT_IMPLEMENTED if the
    /// buffer is read-only.
    virtual std::int32_t GetWriteLock(int minimumLength, char16_t** out) = 0;
    /// For use while the write lock is held.
    virtual std::int32_t EnsureCapacity(int minimumLength, char16_t** out) = 0;
    /// `length` becomes the length of the buffer. A negative one keeps the old length.
    virtual std::int32_t ReleaseWriteLock(int length) = 0;
    /// Frees storage that the text does not need.
    virtual std::int32_t FreeExtra() = 0;

protected:
    ~ICharBuffer() = default;
};

} // namespace vx::util

/// The buffer interface with its identifier.
class VX_API IVXCharBuffer : public vx::util::ICharBuffer {
public:
    using InterfaceType = IVXCharBuffer;
    static constexpr _GUID IID {0x1F2639A2, 0x1EBC, 0x4E20, {0x85, 0x60, 0x0A, 0xA5, 0x9F, 0x8A, 0xCB, 0x39}};

protected:
    ~IVXCharBuffer() = default;
};
