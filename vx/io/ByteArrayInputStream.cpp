#include "vx/io/ByteArrayInputStream.h"

#include "vx/io/detail/StreamChecks.h"

#include <algorithm>
#include <cstring>

namespace vx::io {

ByteArrayInputStream::ByteArrayInputStream(const signed char* bytes, std::int32_t length)
    : m_length(bytes != nullptr ? std::max(length, 0) : 0)
{
    m_data = vx::detail::makeRawArray<signed char>(m_length);
    if (m_length > 0)
        std::memcpy(m_data.get(), bytes, static_cast<std::size_t>(m_length));
}

std::int32_t ByteArrayInputStream::read(signed char* target, std::int32_t length)
{
    if (m_position >= m_length)
        return -1;
    length = std::min(length, m_length - m_position);
    if (length < 1)
        return 0;
    detail::requireUnits(target);

    std::memcpy(target, m_data.get() + m_position, static_cast<std::size_t>(length));
    m_position += length;
    return length;
}

} // namespace vx::io
