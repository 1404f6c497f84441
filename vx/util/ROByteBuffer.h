#pragma once

#include "vx/util/ROBuffer.h"

namespace vx::util {

/// A view of bytes that another owner keeps.
class VX_API ROByteBuffer : public ROBuffer<AbstractByteBuffer, signed char> {
public:
    using ROBuffer::ROBuffer;
    ROByteBuffer() noexcept = default;
    ROByteBuffer(const ROByteBuffer& other) noexcept = default;
    ROByteBuffer& operator=(const ROByteBuffer& other) noexcept = default;
    ~ROByteBuffer() noexcept(false) override;
};

} // namespace vx::util
