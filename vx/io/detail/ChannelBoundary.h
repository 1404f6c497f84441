#pragma once

#include "vx/Exceptions.h"
#include "vx/Reference.h"
#include "vx/Result.h"
#include "vx/io/ByteBuffer.h"
#include "vx/io/IChannel.h"
#include "vx/vorb/Boundary.h"

#include <cstdint>

namespace vx::io::detail {

/// Returns what a channel was made of. Throws UnsupportedOperationException if that is null.
template <class Part>
Part& usable(const Reference<Part>& part)
{
    if (part == nullptr)
        throw UnsupportedOperationException();
    return *part;
}

/// Implements `Read` or `Write` of a component by the class operation, which gets the bytes as a buffer.
template <class Byte, class Channel, class... Access>
std::int32_t throughBuffer(
    Channel& channel, int (Channel::*operation)(ByteBuffer&), Byte* bytes, std::int32_t* length, Access... readOnly)
{
    if (length == nullptr || (bytes == nullptr && *length != 0))
        return RESULT_POINTER;
    const std::int32_t room = *length;
    if (room < 0)
        return RESULT_INVALID_ARGUMENT;
    return vx::vorb::atBoundary(length, [&] {
        ByteBuffer buffer(bytes, static_cast<unsigned int>(room), VX_ENDIAN_LITTLE, readOnly...);
        return std::int32_t {(channel.*operation)(buffer)};
    });
}

inline std::int32_t readInto(IReadChannel& channel, signed char* bytes, std::int32_t* length)
{
    return throughBuffer(channel, &IReadChannel::read, bytes, length, false);
}

inline std::int32_t writeFrom(IWriteChannel& channel, const signed char* bytes, std::int32_t* length)
{
    return throughBuffer(channel, &IWriteChannel::write, bytes, length);
}

} // namespace vx::io::detail
