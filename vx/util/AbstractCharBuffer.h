#pragma once

#include "vx/Object.h"
#include "vx/util/ICharBuffer.h"
#include "vx/util/detail/BufferFace.h"

namespace vx::util {

class AbstractCharBuffer;

extern template class VX_API detail::BufferFace<IVXCharBuffer, AbstractCharBuffer, char16_t>;

/// Base of character buffers: the class operations, which throw, and the component view over them.
class VX_API AbstractCharBuffer : public Object,
                                  public detail::BufferFace<IVXCharBuffer, AbstractCharBuffer, char16_t> {
public:
    AbstractCharBuffer() noexcept = default;
    AbstractCharBuffer(const AbstractCharBuffer& other) noexcept = default;
    AbstractCharBuffer& operator=(const AbstractCharBuffer&) noexcept { return *this; }
    ~AbstractCharBuffer() noexcept(false) override;

    VX_OBJECT_UNKNOWN(Object)
    static const vorb::InterfaceData* GetComIntfMap();

    virtual int getLength() const = 0;
    virtual const char16_t* getData() const = 0;
    virtual const char16_t* getReadLock() const = 0;
    virtual void releaseReadLock() const = 0;
    virtual bool isWritable() const = 0;
    /// Makes room for at least `minimumLength` units. A read-only buffer throws ReadOnlyException.
    virtual char16_t* getWriteLock(int minimumLength) = 0;
    virtual char16_t* ensureCapacity(int minimumLength) = 0;
    /// A negative `length` keeps the length. The length is not checked against the capacity.
    virtual void releaseWriteLock(int length) = 0;
    virtual void freeExtra() = 0;

    bool isEmpty() const { return getLength() <= 0; }
};

} // namespace vx::util
