#pragma once

#include "vx/Object.h"
#include "vx/util/IByteBuffer.h"
#include "vx/util/detail/BufferFace.h"

namespace vx::util {

class AbstractByteBuffer;

extern template class VX_API detail::BufferFace<IVXByteBuffer, AbstractByteBuffer, signed char>;

/// Base of byte buffers: the class operations, which throw, and the component view over them.
class VX_API AbstractByteBuffer : public Object,
                                  public detail::BufferFace<IVXByteBuffer, AbstractByteBuffer, signed char> {
public:
    AbstractByteBuffer() noexcept = default;
    AbstractByteBuffer(const AbstractByteBuffer& other) noexcept = default;
    AbstractByteBuffer& operator=(const AbstractByteBuffer&) noexcept { return *this; }
    ~AbstractByteBuffer() noexcept(false) override;

    VX_OBJECT_UNKNOWN(Object)
    static const vorb::InterfaceData* GetComIntfMap();

    virtual int getLength() const = 0;
    virtual const signed char* getData() const = 0;
    virtual const signed char* getReadLock() const = 0;
    virtual void releaseReadLock() const = 0;
    virtual bool isWritable() const = 0;
    /// Makes room for at least `minimumLength` bytes. A read-only buffer throws ReadOnlyException.
    virtual signed char* getWriteLock(int minimumLength) = 0;
    virtual signed char* ensureCapacity(int minimumLength) = 0;
    /// A negative `length` keeps the length. The length is not checked against the capacity.
    virtual void releaseWriteLock(int length) = 0;
    virtual void freeExtra() = 0;

    bool isEmpty() const { return getLength() <= 0; }
};

} // namespace vx::util
