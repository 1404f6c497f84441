#pragma once

#include "vx/util/AbstractByteBuffer.h"

namespace vx::util {

/// A view of bytes that somebody else owns, for as long as the buffer and its sharers live. Writing throws
/// ReadOnlyException; through the component view it gives RESULT_NOT_IMPLEMENTED.
class VX_API ROByteBuffer : public AbstractByteBuffer {
public:
    ROByteBuffer() noexcept = default;
    /// `capacity` means nothing here.
    ROByteBuffer(const signed char* data, int length, int capacity = 0) noexcept;
    /// Copies pointer and length, not the bytes.
    ROByteBuffer(const ROByteBuffer& other) noexcept;
    ROByteBuffer& operator=(const ROByteBuffer& other) noexcept;
    ~ROByteBuffer() noexcept(false) override;

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

    // IVXByteBuffer
    std::int32_t GetWriteLock(int minimumLength, signed char** out) override;
    std::int32_t EnsureCapacity(int minimumLength, signed char** out) override;
    std::int32_t ReleaseWriteLock(int length) override;

private:
    const signed char* m_data = nullptr;
    int m_length = 0;
};

} // namespace vx::util
