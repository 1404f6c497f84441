#pragma once

#include "vx/util/RWBuffer.h"

namespace vx::util {

/// A byte buffer that owns its storage and locks nothing.
class VX_API RWByteBuffer : public RWBuffer<AbstractByteBuffer, signed char> {
public:
    using RWBuffer::RWBuffer;
    RWByteBuffer() noexcept = default;
    RWByteBuffer(const RWByteBuffer& other) = default;
    RWByteBuffer& operator=(const RWByteBuffer& other) = default;
    ~RWByteBuffer() noexcept(false) override;
};

} // namespace vx::util
