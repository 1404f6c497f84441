#pragma once

#include "vx/sync/ReaderWriterLock.h"
#include "vx/util/RWByteBuffer.h"

namespace vx::util {

/// A byte buffer for many readers or one writer: its read and write locks are those of a reader-writer lock, held
/// from each getting to the matching release. A reader must not ask for the write lock. Length and data may be asked
/// without a lock, and then tell a moment.
class VX_API MTByteBuffer : public RWByteBuffer {
public:
    MTByteBuffer() = default;
    explicit MTByteBuffer(int capacity);
    MTByteBuffer(const signed char* data, int length, int capacity = 0);
    /// Takes no lock on the source: who copies a buffer that others write holds it still.
    MTByteBuffer(const MTByteBuffer& other);
    MTByteBuffer& operator=(const MTByteBuffer& other);
    ~MTByteBuffer() noexcept(false) override;

    // RWByteBuffer
    const signed char* getReadLock() const override VX_NO_THREAD_SAFETY_ANALYSIS;
    void releaseReadLock() const override VX_NO_THREAD_SAFETY_ANALYSIS;
    /// A failure leaves the lock free.
    signed char* getWriteLock(int minimumLength) override VX_NO_THREAD_SAFETY_ANALYSIS;
    void releaseWriteLock(int length) override VX_NO_THREAD_SAFETY_ANALYSIS;
    void freeExtra() override;

private:
    mutable sync::ReaderWriterLock m_lock;
};

} // namespace vx::util
