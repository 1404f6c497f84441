#pragma once

#include "vx/util/detail/StoredBuffer.h"

namespace vx::util {

/// A view of bytes that another owner keeps alive as long as the buffer and its sharers live. Writing throws
/// ReadOnlyException; through the component view it gives RESULT_NOT_IMPLEMENTED. A copy copies pointer and length, not the
/// bytes. The third constructor argument, a capacity, is ignored.
class VX_API ROByteBuffer : public detail::ROBuffer<AbstractByteBuffer, signed char> {
public:
    using ROBuffer::ROBuffer;
    ROByteBuffer() noexcept = default;
    ROByteBuffer(const ROByteBuffer& other) noexcept = default;
    ROByteBuffer& operator=(const ROByteBuffer& other) noexcept = default;
    ~ROByteBuffer() noexcept(false) override;
};

} // namespace vx::util
