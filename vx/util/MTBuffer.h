#pragma once

#include "vx/sync/ReaderWriterLock.h"
#include "vx/util/RWByteBuffer.h"
#include "vx/util/RWCharBuffer.h"

namespace vx::util {

/// What `MTCharBuffer` and `MTByteBuffer` are: a buffer for many readers or one writer. Its read and write locks are those of
/// a reader-writer lock, held from each `get...Lock` to the matching release. A reader must not ask for the write lock.
/// Length and data may be read without a lock; they may then change at any moment.
template <class RW, class Unit>
class VX_API MTBuffer : public RW {
public:
    MTBuffer() = default;
    explicit MTBuffer(int capacity);
    MTBuffer(const Unit* data, int length, int capacity = 0);
    /// Takes no lock on the source: the caller keeps writers away from it.
    MTBuffer(const MTBuffer& other);
    MTBuffer& operator=(const MTBuffer& other);
    ~MTBuffer() noexcept(false) override;

    const Unit* getReadLock() const override VX_NO_THREAD_SAFETY_ANALYSIS;
    void releaseReadLock() const override VX_NO_THREAD_SAFETY_ANALYSIS;
    /// A failure leaves the lock free.
    Unit* getWriteLock(int minimumLength) override VX_NO_THREAD_SAFETY_ANALYSIS;
    void releaseWriteLock(int length) override VX_NO_THREAD_SAFETY_ANALYSIS;
    void freeExtra() override;

private:
    mutable sync::ReaderWriterLock m_lock;
};

extern template class VX_API MTBuffer<RWByteBuffer, signed char>;
extern template class VX_API MTBuffer<RWCharBuffer, char16_t>;

} // namespace vx::util
