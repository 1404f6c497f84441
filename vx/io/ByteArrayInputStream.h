#pragma once

#include "vx/detail/RawArray.h"
#include "vx/io/InputStream.h"

namespace vx::io {

/// Reads a copy of the given bytes. It has no closed state and no mark.
class VX_API ByteArrayInputStream : public InputStream {
public:
    /// A null `bytes` or a negative `length` makes an empty stream.
    ByteArrayInputStream(const signed char* bytes, std::int32_t length);
    ByteArrayInputStream(const ByteArrayInputStream&) = delete;
    ByteArrayInputStream& operator=(const ByteArrayInputStream&) = delete;

    // InputStream
    using InputStream::read;
    /// A `length` below 1 gives 0, but -1 at the end.
    std::int32_t read(signed char* target, std::int32_t length) override;

private:
    vx::detail::RawArray<signed char> m_data;
    std::int32_t m_length;
    std::int32_t m_position = 0;
};

} // namespace vx::io
