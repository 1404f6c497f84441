#pragma once

#include "vx/util/AbstractByteBuffer.h"
#include "vx/util/AbstractCharBuffer.h"
#include "vx/util/BufferStorage.h"

namespace vx::detail {
class PlainBuffer;
}

namespace vx::util {

/// What `RWCharBuffer` and `RWByteBuffer` are: a buffer that owns its storage and locks nothing, for one thread at a time, or
/// for several that only read. The capacity is a multiple of 16 units and never grows beyond what is asked. Exhaustion throws
/// std::bad_alloc and changes nothing.
template <class Abstract, class Unit>
class VX_API RWBuffer : public Abstract {
public:
    RWBuffer() noexcept = default;
    explicit RWBuffer(int capacity);
    /// Copies `length` units into room for the greater of `length` and `capacity`.
    RWBuffer(const Unit* data, int length, int capacity = 0);
    RWBuffer(const RWBuffer& other);
    RWBuffer& operator=(const RWBuffer& other);
    ~RWBuffer() noexcept(false) override;

    int getLength() const override;
    const Unit* getData() const override;
    const Unit* getReadLock() const override;
    void releaseReadLock() const override;
    bool isWritable() const override;
    Unit* getWriteLock(int minimumLength) override;
    Unit* ensureCapacity(int minimumLength) override;
    void releaseWriteLock(int length) override;
    void freeExtra() override;

protected:
    void allocBuffer(int capacity);
    void reallocBuffer(int capacity);
    void freeBuffer();
    static int adjustCapacity(int n);

private:
    friend class vx::detail::PlainBuffer;

    /// Tells storage at a given place from text to copy.
    struct Placed { };

    RWBuffer(Placed, Unit* place, int units) noexcept;

    BufferStorage<Unit> m_storage;
};

extern template class VX_API RWBuffer<AbstractByteBuffer, signed char>;
extern template class VX_API RWBuffer<AbstractCharBuffer, char16_t>;

} // namespace vx::util
