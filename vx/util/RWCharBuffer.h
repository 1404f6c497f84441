#pragma once

#include "vx/util/AbstractCharBuffer.h"
#include "vx/util/BufferStorage.h"

namespace vx::detail {
class PlainBuffer;
}

namespace vx::util {

/// A character buffer that owns its storage and locks nothing: one thread at a time, or several that read. The capacity
/// is a multiple of 16 units and never grows beyond what is asked. Exhaustion throws std::bad_alloc and changes nothing.
class VX_API RWCharBuffer : public AbstractCharBuffer {
public:
    RWCharBuffer() noexcept = default;
    explicit RWCharBuffer(int capacity);
    /// Copies `length` units into room for the greater of `length` and `capacity`.
    RWCharBuffer(const char16_t* data, int length, int capacity = 0);
    RWCharBuffer(const RWCharBuffer& other);
    RWCharBuffer& operator=(const RWCharBuffer& other);
    ~RWCharBuffer() noexcept(false) override;

    // AbstractCharBuffer
    int getLength() const override;
    const char16_t* getData() const override;
    const char16_t* getReadLock() const override;
    void releaseReadLock() const override;
    bool isWritable() const override;
    char16_t* getWriteLock(int minimumLength) override;
    char16_t* ensureCapacity(int minimumLength) override;
    void releaseWriteLock(int length) override;
    void freeExtra() override;

protected:
    void allocBuffer(int capacity);
    void reallocBuffer(int capacity);
    void freeBuffer();
    static int adjustCapacity(int n);

private:
    friend class vx::detail::PlainBuffer;

    RWCharBuffer(char16_t* place, int units) noexcept;

    BufferStorage<char16_t> m_storage;
};

} // namespace vx::util
