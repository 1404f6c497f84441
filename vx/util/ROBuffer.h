#pragma once

#include "vx/util/AbstractByteBuffer.h"
#include "vx/util/AbstractCharBuffer.h"

namespace vx::detail {
class PlainBuffer;
}

namespace vx::util {

/// What `ROCharBuffer` and `ROByteBuffer` are: a view of units that another owner keeps alive as long as the buffer and its
/// sharers live. Writing throws ReadOnlyException; through the component view it gives RESULT_NOT_IMPLEMENTED.
template <class Abstract, class Unit>
class VX_API ROBuffer : public Abstract {
public:
    ROBuffer() noexcept = default;
    /// `capacity` means nothing here.
    ROBuffer(const Unit* data, int length, int capacity = 0) noexcept;
    /// Copies pointer and length, not the units.
    ROBuffer(const ROBuffer& other) noexcept = default;
    ROBuffer& operator=(const ROBuffer& other) noexcept = default;
    ~ROBuffer() noexcept(false) override;

    int getLength() const override;
    const Unit* getData() const override;
    const Unit* getReadLock() const override;
    void releaseReadLock() const override;
    bool isWritable() const override;
    Unit* getWriteLock(int minimumLength) override;
    Unit* ensureCapacity(int minimumLength) override;
    void releaseWriteLock(int length) override;
    void freeExtra() override;

private:
    friend class vx::detail::PlainBuffer;

    const Unit* m_data = nullptr;
    int m_length = 0;
};

extern template class VX_API ROBuffer<AbstractByteBuffer, signed char>;
extern template class VX_API ROBuffer<AbstractCharBuffer, char16_t>;

} // namespace vx::util
