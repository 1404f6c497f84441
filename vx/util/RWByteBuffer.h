#pragma once

#include "vx/util/AbstractByteBuffer.h"
#include "vx/util/BufferStorage.h"

namespace vx::util {

/// A byte buffer that owns its storage and locks nothing: one thread at a time, or several that read. The capacity
/// is a multiple of 16 bytes and never grows beyond what is asked. Exhaustion throws std::bad_alloc and changes nothing.
class VX_API RWByteBuffer : public AbstractByteBuffer {
public:
    RWByteBuffer() noexcept = default;
    explicit RWByteBuffer(int capacity);
    /// Copies `length` bytes into room for the greater of `length` and `capacity`.
    RWByteBuffer(const signed char* data, int length, int capacity = 0);
    RWByteBuffer(const RWByteBuffer& other);
    RWByteBuffer& operator=(const RWByteBuffer& other);
    ~RWByteBuffer() noexcept(false) override;

    // AbstractByteBuffer
    int getLength() const override;
    const signed char* getData() const override;
    const signed char* getReadLock() const override;
    void releaseReadLock() const override;
    bool isWritable() const override;
    signed char* getWriteLock(int minimumLength) override;
    signed char* ensureCapacity(int minimumLength) override;
    void releaseWriteLock(int length) override;
    void freeExtra() override;

protected:
    void allocBuffer(int capacity);
    void reallocBuffer(int capacity);
    void freeBuffer();
    static int adjustCapacity(int n);

private:
    BufferStorage<signed char> m_storage;
};

} // namespace vx::util
