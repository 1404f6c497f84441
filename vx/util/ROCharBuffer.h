#pragma once

#include "vx/util/ROBuffer.h"

namespace vx::util {

/// A view of text that another owner keeps.
class VX_API ROCharBuffer : public ROBuffer<AbstractCharBuffer, char16_t> {
public:
    using ROBuffer::ROBuffer;
    ROCharBuffer() noexcept = default;
    ROCharBuffer(const ROCharBuffer& other) noexcept = default;
    ROCharBuffer& operator=(const ROCharBuffer& other) noexcept = default;
    ~ROCharBuffer() noexcept(false) override;
};

} // namespace vx::util
