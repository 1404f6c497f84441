#pragma once

#include "vx/sync/ReaderWriterLock.h"
#include "vx/util/RWByteBuffer.h"
#include "vx/util/RWCharBuffer.h"

namespace vx::util::detail {

/// Base of `MTCharBuffer` and `MTByteBuffer`.
template <class RW, class Unit>
class VX_API MTBuffer : public RW {
public:
    MTBuffer() = default;
    explicit MTBuffer(int capacity);
    MTBuffer(const Unit* data, int length, int capacity = 0);
    MTBuffer(const MTBuffer& other);
    MTBuffer& operator=(const MTBuffer& other);
    ~MTBuffer() noexcept(false) override;

    const Unit* getReadLock() const override VX_NO_THREAD_SAFETY_ANALYSIS;
    void releaseReadLock() const override VX_NO_THREAD_SAFETY_ANALYSIS;
    Unit* getWriteLock(int minimumLength) override VX_NO_THREAD_SAFETY_ANALYSIS;
    void releaseWriteLock(int length) override VX_NO_THREAD_SAFETY_ANALYSIS;
    void freeExtra() override;

private:
    mutable sync::ReaderWriterLock m_lock;
};

extern template class VX_API MTBuffer<RWByteBuffer, signed char>;
extern template class VX_API MTBuffer<RWCharBuffer, char16_t>;

} // namespace vx::util::detail
