#include "vx/io/ByteArrayOutputStream.h"

#include "vx/io/detail/StreamChecks.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

namespace vx::io {

namespace {

/// A quarter more than `needed`. The growth is defined in 32-bit arithmetic; if that wraps around, there is no valid
/// capacity.
std::int32_t grown(std::int64_t needed)
{
    constexpr std::int64_t LARGEST_BEFORE_WRAP = std::numeric_limits<std::uint32_t>::max() / 5;
    if (needed > LARGEST_BEFORE_WRAP)
        throw std::bad_alloc();
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(needed) * 5 / 4);
}

} // namespace

ByteArrayOutputStream::ByteArrayOutputStream(std::int32_t capacity)
    : m_buffer(vx::detail::makeRawArray<signed char>(std::max(capacity, 0)))
    , m_capacity(std::max(capacity, 0))
{
}

void ByteArrayOutputStream::write(const signed char* bytes, std::int32_t length)
{
    if (length < 1)
        return;
    detail::requireUnits(bytes);

    vx::detail::RawArray<signed char> old; // `bytes` may point into it
    const std::int64_t needed = std::int64_t {m_size} + length;
    if (m_capacity < needed)
        old = exchangeBuffer(grown(needed));
    std::memcpy(m_buffer.get() + m_size, bytes, static_cast<std::size_t>(length));
    m_size += length;
}

String ByteArrayOutputStream::toString() const
{
    return toString(nullptr);
}

String ByteArrayOutputStream::toString(const char16_t* encoding) const
{
    return String(m_buffer.get(), m_size, encoding, 0);
}

std::int32_t ByteArrayOutputStream::getBytes(signed char* target, std::int32_t length) const
{
    length = std::min(length, m_size);
    if (length < 1)
        return 0;
    detail::requireUnits(target);

    std::memcpy(target, m_buffer.get(), static_cast<std::size_t>(length));
    return length;
}

void ByteArrayOutputStream::reset()
{
    m_size = 0;
}

void ByteArrayOutputStream::writeTo(OutputStream* stream) const
{
    detail::requireOpen(stream != nullptr);
    stream->write(m_buffer.get(), m_size);
}

void ByteArrayOutputStream::ensureCapacity(std::int32_t capacity)
{
    if (m_capacity < capacity)
        reallocBuffer(grown(capacity));
}

void ByteArrayOutputStream::reallocBuffer(std::int32_t capacity)
{
    exchangeBuffer(capacity);
}

vx::detail::RawArray<signed char> ByteArrayOutputStream::exchangeBuffer(std::int32_t capacity)
{
    auto buffer = vx::detail::makeRawArray<signed char>(capacity);
    m_capacity = capacity;
    m_size = std::min(capacity, m_size);
    if (m_size > 0)
        std::memcpy(buffer.get(), m_buffer.get(), static_cast<std::size_t>(m_size));
    return std::exchange(m_buffer, std::move(buffer));
}

} // namespace vx::io
