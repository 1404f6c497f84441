#pragma once

#include "vx/util/MTBuffer.h"

namespace vx::util {

/// A byte buffer for many readers or one writer.
class VX_API MTByteBuffer : public MTBuffer<RWByteBuffer, signed char> {
public:
    using MTBuffer::MTBuffer;
    MTByteBuffer() = default;
    MTByteBuffer(const MTByteBuffer& other) = default;
    MTByteBuffer& operator=(const MTByteBuffer& other) = default;
    ~MTByteBuffer() noexcept(false) override;
};

} // namespace vx::util
