#pragma once

#include "vx/util/detail/StoredBuffer.h"

namespace vx::util {

/// A view of text that another owner keeps alive as long as the buffer and its sharers live. Writing throws
/// ReadOnlyException; through the component view it gives RESULT_NOT_IMPLEMENTED. A copy copies pointer and length, not the
/// text. The third constructor argument, a capacity, is ignored.
class VX_API ROCharBuffer : public detail::ROBuffer<AbstractCharBuffer, char16_t> {
public:
    using ROBuffer::ROBuffer;
    ROCharBuffer() noexcept = default;
    ROCharBuffer(const ROCharBuffer& other) noexcept = default;
    ROCharBuffer& operator=(const ROCharBuffer& other) noexcept = default;
    ~ROCharBuffer() noexcept(false) override;
};

} // namespace vx::util
