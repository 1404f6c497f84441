#pragma once

#include "vx/util/detail/MTBuffer.h"

namespace vx::util {

/// A byte buffer for many readers or one writer. Its read and write locks are those of a reader-writer lock, held from each
/// `get...Lock` to the matching release. A reader must not ask for the write lock, and a failure leaves the lock free. Length
/// and data may be read without a lock; they may then change at any moment. Copying takes no lock on the source: the caller
/// keeps writers away from it.
class VX_API MTByteBuffer : public detail::MTBuffer<RWByteBuffer, signed char> {
public:
    using MTBuffer::MTBuffer;
    MTByteBuffer() = default;
    MTByteBuffer(const MTByteBuffer& other) = default;
    MTByteBuffer& operator=(const MTByteBuffer& other) = default;
    ~MTByteBuffer() noexcept(false) override;
};

} // namespace vx::util
