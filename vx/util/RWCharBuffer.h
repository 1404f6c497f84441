#pragma once

#include "vx/util/detail/StoredBuffer.h"

namespace vx::util {

/// A character buffer that owns its storage and has no lock: one thread at a time, or several that only read. A new one has room
/// for the greater of length and capacity, which is a multiple of 16 and grows only as far as asked. If memory is exhausted,
/// operations throw std::bad_alloc and change nothing.
class VX_API RWCharBuffer : public detail::RWBuffer<AbstractCharBuffer, char16_t> {
public:
    using RWBuffer::RWBuffer;
    RWCharBuffer() noexcept = default;
    RWCharBuffer(const RWCharBuffer& other) = default;
    RWCharBuffer& operator=(const RWCharBuffer& other) = default;
    ~RWCharBuffer() noexcept(false) override;
};

} // namespace vx::util
