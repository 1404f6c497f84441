#pragma once

#include "vx/util/MTBuffer.h"

namespace vx::util {

/// A character buffer for many readers or one writer.
class VX_API MTCharBuffer : public MTBuffer<RWCharBuffer, char16_t> {
public:
    using MTBuffer::MTBuffer;
    MTCharBuffer() = default;
    MTCharBuffer(const MTCharBuffer& other) = default;
    MTCharBuffer& operator=(const MTCharBuffer& other) = default;
    ~MTCharBuffer() noexcept(false) override;
};

} // namespace vx::util
