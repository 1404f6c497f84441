#pragma once

#include "vx/util/detail/StoredBuffer.h"

namespace vx::util {

/// A byte buffer that owns its storage and has no lock: one thread at a time, or several that only read. A new one has room
/// for the greater of length and capacity, which is a multiple of 16 and grows only as far as asked. If memory is exhausted,
/// operations throw std::bad_alloc and change nothing.
class VX_API RWByteBuffer : public detail::RWBuffer<AbstractByteBuffer, signed char> {
public:
    using RWBuffer::RWBuffer;
    RWByteBuffer() noexcept = default;
    RWByteBuffer(const RWByteBuffer& other) = default;
    RWByteBuffer& operator=(const RWByteBuffer& other) = default;
    ~RWByteBuffer() noexcept(false) override;
};

} // namespace vx::util
