#pragma once

#include "vx/util/AbstractCharBuffer.h"

namespace vx::detail {
class PlainBuffer;
}

namespace vx::util {

/// A view of text that somebody else owns, for as long as the buffer and its sharers live. Writing throws
/// ReadOnlyException; through the component view it gives RESULT_NOT_IMPLEMENTED.
class VX_API ROCharBuffer : public AbstractCharBuffer {
public:
    ROCharBuffer() noexcept = default;
    /// `capacity` means nothing here.
    ROCharBuffer(const char16_t* data, int length, int capacity = 0) noexcept;
    /// Copies pointer and length, not the text.
    ROCharBuffer(const ROCharBuffer& other) noexcept;
    ROCharBuffer& operator=(const ROCharBuffer& other) noexcept;
    ~ROCharBuffer() noexcept(false) override;

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

    // IVXCharBuffer
    std::int32_t GetWriteLock(int minimumLength, char16_t** out) override;
    std::int32_t EnsureCapacity(int minimumLength, char16_t** out) override;
    std::int32_t ReleaseWriteLock(int length) override;

private:
    friend class vx::detail::PlainBuffer;

    const char16_t* m_data = nullptr;
    int m_length = 0;
};

} // namespace vx::util
