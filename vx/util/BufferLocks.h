#pragma once

#include "vx/Exception.h"
#include "vx/detail/ReleaseReport.h"
#include "vx/util/IByteBuffer.h"
#include "vx/util/ICharBuffer.h"

#include <cstdint>

namespace vx::util {

/// A buffer's length and text under its read lock, to the end of the block. Adds no reference: the buffer outlives the guard.
/// A failed release throws, unless another exception is already in flight.
template <class Buffer, class Unit>
class [[nodiscard]] BufferReadLock {
public:
    explicit BufferReadLock(const Buffer& buffer)
        : m_buffer(buffer)
        , m_length(buffer.GetLength())
    {
        throwIfFailed(m_buffer.GetReadLock(&m_data));
        m_length = buffer.GetLength(); // a writer may have changed it before the lock was granted
    }
    ~BufferReadLock() noexcept(false) { m_report.report(m_buffer.ReleaseReadLock()); }
    BufferReadLock(const BufferReadLock&) = delete;
    BufferReadLock& operator=(const BufferReadLock&) = delete;

    const Unit* data() const noexcept { return m_data; }
    int length() const noexcept { return m_length; }

private:
    const Buffer& m_buffer;
    const Unit* m_data = nullptr;
    int m_length;
    const vx::detail::ReleaseReport m_report;
};

/// A buffer's storage under its write lock. At the end of the block the buffer gets the length that `setLength` was given
/// last; without a call it keeps the length it had.
template <class Buffer, class Unit>
class [[nodiscard]] BufferWriteLock {
public:
    BufferWriteLock(Buffer& buffer, int minimumLength)
        : m_buffer(buffer)
        , m_length(buffer.GetLength())
    {
        throwIfFailed(m_buffer.GetWriteLock(minimumLength, &m_data));
        m_length = buffer.GetLength();
    }
    ~BufferWriteLock() noexcept(false) { m_report.report(m_buffer.ReleaseWriteLock(m_length)); }
    BufferWriteLock(const BufferWriteLock&) = delete;
    BufferWriteLock& operator=(const BufferWriteLock&) = delete;

    Unit* data() const noexcept { return m_data; }
    int length() const noexcept { return m_length; }
    void setLength(int length) noexcept { m_length = length; }
    /// Makes room. Earlier pointers become invalid. A failure leaves the storage as it was.
    void ensureCapacity(int minimumLength)
    {
        Unit* moved = nullptr;
        throwIfFailed(m_buffer.EnsureCapacity(minimumLength, &moved));
        m_data = moved;
    }

private:
    Buffer& m_buffer;
    Unit* m_data = nullptr;
    int m_length;
    const vx::detail::ReleaseReport m_report;
};

using CharReadLock = BufferReadLock<ICharBuffer, char16_t>;
using CharWriteLock = BufferWriteLock<ICharBuffer, char16_t>;
using ByteReadLock = BufferReadLock<IByteBuffer, signed char>;
using ByteWriteLock = BufferWriteLock<IByteBuffer, signed char>;

} // namespace vx::util
