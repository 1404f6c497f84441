#pragma once

#include "vx/util/RWBuffer.h"

namespace vx::util {

/// A character buffer that owns its storage and locks nothing.
class VX_API RWCharBuffer : public RWBuffer<AbstractCharBuffer, char16_t> {
public:
    using RWBuffer::RWBuffer;
    RWCharBuffer() noexcept = default;
    RWCharBuffer(const RWCharBuffer& other) = default;
    RWCharBuffer& operator=(const RWCharBuffer& other) = default;
    ~RWCharBuffer() noexcept(false) override;
};

} // namespace vx::util
